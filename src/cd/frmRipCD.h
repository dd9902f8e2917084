#pragma once
// The CD window: the disc's tracks with their lengths and names, listening to
// one, and the rip of the selected track. Shown modally by the main window;
// afterwards its Tag holds the ripped MP3's path or is empty, and
// SelectedTrackText() is the selected row's text, the sound's name.
#include "skin/CSkinWindow.h"

#include <cstdint>

class CDManager;
class QTimer;
class QTreeWidget;

class frmRipCD : public CSkinWindow {
    Q_OBJECT
public:
    frmRipCD();

    QString SelectedTrackText() const;

protected:
    void Form_Load() override;
    void Form_KeyDown(int) override {}
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void buildControls();
    void fillList();
    void Playing();
    void StopTrack();
    void ScrollOneStep(int direction);
    void Timer1_Timer() { ScrollOneStep(mintScrollDirection); }
    void cmdPrevNext(int direction);
    void cmdRipIt_Released();
    void Leave();
    void showFreeDBWrong();
    void mobjCDManager_CDTrackTimer(const QString& ElapsedTime);
    void setBold(int row, bool bold);

    CDManager* mobjCDManager = nullptr;
    int16_t mintRipTrackPlusOne = -1;
    bool mbPlaying = false;
    int16_t mintScrollDirection = 0;
    int16_t mintPlayingIndex = 0;
    QTreeWidget* lvwTracks = nullptr;
    QTimer* Timer1 = nullptr;
};

// The notice shown while the disc's names are looked up; one for the run.
void ShowCCDBWait();
void HideCCDBWait();
