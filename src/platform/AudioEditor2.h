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
#include "platform/PeakSummary.h"

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
    int32_t TotalSamples() const { return static_cast<int32_t>(mPeaks.Frames()); }
    int32_t PlayPosition() const { return mPlayPosition; }
    void SetPlayPosition(int32_t sample);
    int32_t SamplesToMilliseconds(int32_t samples) const;
    int32_t Volume() const { return mVolume; }
    // 32000 plays the sound as it is; 0 is silence, 64000 twice as loud.
    void SetVolume(int32_t volume);

    int SampleRate() const { return mRate; }
    const PeakSummary& Peaks() const { return mPeaks; }

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

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
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
    int32_t mPlayPosition = 0;
    int32_t mVolume = 32000;
    bool mShowSelection = true;
    bool mSelectionChangePosted = false;
    bool mBusy = false;  // inside OpenFile or SaveToFile, whose progress handlers pump events
    int32_t mAnchor = 0;
    int mPressX = -1;
    bool mDragging = false;
};
