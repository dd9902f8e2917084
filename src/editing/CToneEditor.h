#pragma once
// The sound in an editing window: the waveform editor and its volume slider,
// the measures under it (lblSongLength, lblToneLength, lblToneSize,
// lblCurrentPosition, which the window's face lays out), the one load of a
// file with its hourglass picture imgLoading, and trim, reset, play and stop.
// The main window and the zoom window each hold one; the window keeps its
// buttons and decides when they may act.
#include "delivery/SendTone.h"

#include <QObject>
#include <QPoint>
#include <QRect>
#include <QString>
#include <cstdint>

class AudioEditor2;
class CSkinWindow;
class NCTSliderB2;
class QLabel;
class QTimer;

// Where the window puts the parts this makes.
struct ToneEditorPlaces {
    QWidget* editorParent;
    QRect editor;
    QRect slider;
    QPoint loading;  // top left of imgLoading, in twips
};

class CToneEditor : public QObject {
    Q_OBJECT
public:
    // Whose failure to open a file is told how: a file the user chose may be
    // said to be empty; a take that holds nothing is the ordinary failure.
    enum class Source { Chosen, Take };

    CToneEditor(CSkinWindow* window, const ToneEditorPlaces& places);

    // Stops, shows the hourglass and the loading words, opens the file and
    // shows its measures. On failure the user is told, the Tag of
    // lblToneLength holds "err" until a load succeeds, and no sound is left.
    bool LoadFile(const QString& path, Source source);
    bool HasSound() const;
    // No sound: the editor and the measures are empty, mbTrimmed is false.
    void Forget();

    // Trim: frmToneNotTrimmed when nothing is marked, else the view closes
    // on the selection and times count from its start.
    void Trim();
    // Reset undoes a trim and the marks; the measures take their reset forms.
    void Reset();
    void Play();
    void Stop();

    // What the user sees marked: the selection, or with none a trimmed view.
    ToneMarks Marks() const;
    // Send's part: a trimmed view becomes the selection.
    ToneMarks MarkTrimmedPart();
    // The cut for Send; its progress shows in the preparing words.
    void WriteCut(const QString& path, bool selectionOnly);
    // Shows these marks over the whole sound, with the measures another editor gave.
    void TakeMarks(const ToneMarks& marks, const QString& toneLength, const QString& toneSize);

    QString mstrCurrentFile;    // the file of the sound, kept after a failed load
    int32_t mintLoadStage = 0;  // 1 "Loading. Please wait (", 2 "Preparing ringtone ("
    bool mbPlaying = false;     // nothing reads it to decide
    bool mbBusy = false;        // a load or a cut is under way
    float msngTrimOffset = 0;
    bool mbResetting = false;
    float msngFileLength = 0;
    bool mbTrimmed = false;
    int16_t mintVolumeDirection = 0;

    AudioEditor2* AudioEditor21 = nullptr;
    NCTSliderB2* NCTSliderB21 = nullptr;

signals:
    // The loading and preparing words, for a window that shows them.
    void StatusText(const QString& text);

private:
    void AudioEditor21_OnEditorProgress(int percent);
    void SelectionChanged();
    void PositionChanged();
    bool SelectionMarked() const;
    void showLoading(bool shown);
    void failed(const QString& description, Source source);

    CSkinWindow* mWindow;
    QLabel* lblSongLength;
    QLabel* lblToneLength;
    QLabel* lblToneSize;
    QLabel* lblCurrentPosition;
    QLabel* imgLoading;
    QTimer* tmrVolume;
};
