#pragma once
// The waveform editor: shows a sound file's wave from its peak summary, lets
// the user mark a part with the mouse, plays the marked part through the
// sound server and writes it to a file. Positions are signed 32-bit frame
// counts ("samples") of the whole file, also while the view is zoomed.
//
// Errors are CError; OpenFile's for a file that is no sound has the
// description kFormatNotSupported, for an empty one or one with nothing
// that decodes kFileEmptyOrDamaged. A file that fails to open leaves
// the sound already shown in place.
//
// Properties are a getter and a Set... setter: SelectionStart /
// SetSelectionStart, SelectionEnd / SetSelectionEnd, PlayPosition /
// SetPlayPosition, ShowSelection / SetShowSelection, Volume / SetVolume.
// Setting a mark raises OnEditorSelectionChanged, setting the play position
// OnEditorPositionSet; the moving play cursor raises OnEditorPositionChanged.
// OnEditorProgress comes during OpenFile and SaveToFile, whose handlers may
// pump events: meanwhile Play does nothing and a second OpenFile or
// SaveToFile fails with "The editor is busy".
//
// With the focus, keys work the editor (AudioEditor2Input.cpp): Space asks
// for play or stop, Left and Right move the nearer mark, Home and End the
// cursor, + and - zoom around the marks; the wheel zooms around the pointer,
// and a mark's edge drags on its own. Marks the user sets snap to the
// nearest zero crossing within 5 ms, unless Alt is held while dragging.
// Marks set in code stand where they are put.
#include "platform/PeakSummary.h"
#include "platform/SongFeatures.h"

#include <QColor>
#include <QList>
#include <QRect>
#include <QString>
#include <QWidget>
#include <cstdint>
#include <memory>

class AudioDecoder;
class EditorPlayback;

// Where each colour of the wave scheme goes.
struct EditorAppearance {
    QColor background = Qt::black;
    QColor wave{78, 181, 206};
    QColor selectedBackground{255, 204, 255};
    QColor selectedWave = Qt::black;
    QColor ruler = Qt::white;
    QColor playCursor = Qt::red;
    QColor selectionMarks = Qt::green;
    QString fontFamily = QStringLiteral("Arial");
};

class AudioEditor2 : public QWidget {
    Q_OBJECT
public:
    // File format codes of SaveToFile.
    enum FileFormat { FormatWave = 1, FormatMp3 = 2 };

    explicit AudioEditor2(QWidget* parent = nullptr);
    ~AudioEditor2() override;

    void SetAppearance(const EditorAppearance& look);
    const EditorAppearance& Appearance() const { return mLook; }

    void OpenFile(const QString& path);
    // No sound any more: nothing to show, play or save.
    void Clear();
    void Stop();
    void PreparePlay();
    // The marked part; with nothing marked, the visible part from the play
    // cursor on. The mode is ignored: there is one.
    void Play(int mode);
    bool IsPlaying() const;
    void ZoomToRange(int32_t start, int32_t end);
    void ZoomFull();
    void SaveToFile(const QString& path, bool selectionOnly, int fileFormat);

    int32_t SelectionStart() const { return mSelStart; }
    void SetSelectionStart(int32_t sample);
    int32_t SelectionEnd() const { return mSelEnd; }
    void SetSelectionEnd(int32_t sample);
    int32_t ViewStart() const { return mViewStart; }
    int32_t ViewEnd() const { return mViewEnd; }
    bool ShowSelection() const { return mShowSelection; }
    void SetShowSelection(bool show);
    // 0 while a file opens: what shows of it cannot be marked or played yet.
    int32_t TotalSamples() const { return mLoading ? 0 : static_cast<int32_t>(mPeaks.Frames()); }
    int32_t PlayPosition() const { return mPlayPosition; }
    void SetPlayPosition(int32_t sample);
    int32_t SamplesToMilliseconds(int32_t samples) const;
    int32_t Volume() const { return mVolume; }
    // 32000 plays the sound as it is; 0 is silence, 64000 twice as loud.
    void SetVolume(int32_t volume);

    int SampleRate() const { return mRate; }
    const PeakSummary& Peaks() const { return mPeaks; }
    // What the best part is found from, gathered while the file opened.
    const SongFeatures& Features() const { return mFeatures; }

    // Snapping of the marks the user sets; on unless switched off.
    void SetSnapToZero(bool on) { mSnap = on; }
    // Marks a part as the user would: snapped, shown, and told at once.
    void MarkPart(int32_t start, int32_t end);
    // The part on the screen narrows (factor below 1) or widens around a
    // sample, which keeps its place; never wider than the sound. ViewStart
    // and ViewEnd, the range of ZoomToRange, stay as they are.
    void ZoomAround(int64_t sample, double factor);
    int32_t ShownStart() const { return mShowStart; }
    int32_t ShownEnd() const { return mShowEnd; }

    // A time label of the ruler: its tick and the box its words fill.
    struct RulerMark {
        int tick;
        QRect text;
        QString label;
    };
    QList<RulerMark> RulerMarks() const;

signals:
    void OnEditorProgress(int percent);
    void OnEditorSelectionChanged();
    void OnEditorPositionChanged();
    void OnEditorPositionSet();
    void OnEditorMouseMove();
    // Space: the window plays the marked part, or stops.
    void PlayStopWanted();
    // The context menu's entries that belong to the window.
    void BestPartWanted();
    void HearAsPhoneWanted();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    bool event(QEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    enum class Grip { None, Start, End };
    // The nearest zero crossing within 5 ms of sample, or sample itself.
    int32_t SnappedToZero(int32_t sample);
    Grip gripAt(int x) const;
    int32_t& nearerMark();
    void nudgeMark(double seconds);
    void zoomAroundMarks(double factor);
    void buildActions();
    void setMarks(int32_t start, int32_t end, bool snap);

    int32_t clampSample(int64_t sample) const;
    int32_t sampleAt(int x) const;
    int xOf(int64_t sample) const;
    QFont rulerFont() const;
    void drawRuler(class QPainter& p, const QRect& area) const;
    void playbackMoved(int64_t frame);
    void playbackEnded();
    void postSelectionChanged();

    EditorAppearance mLook;
    PeakSummary mPeaks;
    std::unique_ptr<AudioDecoder> mSource;  // kept open: play and save read the file again
    std::unique_ptr<EditorPlayback> mPlayback;
    int mRate = 0;
    int32_t mSelStart = 0;
    int32_t mSelEnd = 0;
    int32_t mViewStart = 0;
    int32_t mViewEnd = 0;
    // What the wheel and the keys zoom: the part on the screen. The view
    // above is the range ZoomToRange set, what Play and a trimmed send read.
    int32_t mShowStart = 0;
    int32_t mShowEnd = 0;
    int32_t mPlayPosition = 0;
    int32_t mVolume = 32000;
    bool mShowSelection = true;
    bool mSelectionChangePosted = false;
    bool mBusy = false;  // inside OpenFile or SaveToFile, whose progress handlers pump events
    bool mLoading = false;  // OpenFile draws the sound it decodes, which is not whole yet
    int32_t mAnchor = 0;
    int mPressX = -1;
    bool mDragging = false;
    Grip mGrip = Grip::None;  // the mark whose edge the press took
    int mHoverX = -1;         // the pointer over the wave, -1 when away
    bool mSnap = true;
    std::unique_ptr<AudioDecoder> mProbe;  // reads around a mark to snap it, apart from playback
    SongFeatures mFeatures;
    class QMenu* mMenu = nullptr;
};
