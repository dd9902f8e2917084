#pragma once
// The My Music browser: the library's folders as a tree beside the songs of
// the chosen folder with their lengths. The user listens to a song and hands
// one back; the window's Tag then holds its path. "Q" means cancelled, an
// empty Tag that the close box was used. The window can be resized by its
// grip, down to 1000 by 1500 twips, and the splitter between tree and list moves.
#include "platform/AudioFileInfo.h"
#include "skin/CSkinWindow.h"

#include <QImage>
#include <QPointer>
#include <QSplitter>
#include <QTreeWidget>
#include <cstdint>
#include <memory>

class CAudioPlayer;
class QTreeWidgetItem;

class frmMyMusic2 : public CSkinWindow {
    Q_OBJECT
public:
    frmMyMusic2();
    ~frmMyMusic2() override;

    void BuildTree();
    void PlaySelected();
    void StopSelected();
    bool Playing() const { return mbPlaying; }
    int16_t PlayingIndex() const { return mintPlayingIndex; }

    // A node's and a row's key: the folder's or the file's full path.
    static QString Key(const QTreeWidgetItem* item);

protected:
    void Form_Load() override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    CAudioPlayer& player();
    void layOut();
    int selectedRow() const;
    void selectRow(int row);
    void RunLengthPass();

    void tvwFolders_NodeClick(QTreeWidgetItem* node);
    void lvwTracks_DblClick();
    void cmdNext_Released();
    void cmdPrev_Released();
    void imgGrab_Released();
    void imgCancel_Released();
    void runSearch();
    void imgSearch_Released();
    void lblClose_Click();
    void imgTime_Click(bool longTime);

    std::unique_ptr<CAudioPlayer> mobjPlayer;
    AudioInfo mobjAudioInfo;
    bool mbPlaying = false;
    int16_t mintPlayingIndex = 0;
    // Each click on a node starts a new listing; an older one still running
    // under it (the passes let events run) stops on seeing a newer one.
    int mListing = 0;

    // Guarded: the passes let events run, and a close box in them unloads the window.
    QPointer<QTreeWidget> tvwFolders;
    QPointer<QTreeWidget> lvwTracks;
    QPointer<QSplitter> mSplitter;
    // What the event filter watches, as plain objects.
    QObject* mTracksObject = nullptr;
    QList<QObject*> mViewports;
    QImage mFace;
    bool mLayingOut = false;
    QPoint mGripFrom;
    QSize mSizeFrom;
};
