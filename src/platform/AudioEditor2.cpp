#include "platform/AudioEditor2.h"

#include "core/CError.h"
#include "platform/AudioDecoder.h"
#include "platform/AudioEncoder.h"
#include "platform/EditorPlayback.h"
#include "platform/SoundScan.h"
#include "platform/SoundLevel.h"
#include "platform/Transcode.h"
#include "platform/ZeroCrossing.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <tuple>
#include <vector>

namespace {
constexpr int kRulerHeight = 14;
constexpr int kSaveMp3BitRate = 64000;
constexpr int kSaveMp3MaxRate = 22050;
constexpr int kLoadingPaintMs = 250;

// Marks the editor busy for one reading of its file; a second one meanwhile,
// from a handler that pumped events, is refused.
class BusyScope {
public:
    explicit BusyScope(bool& busy) : mBusy(busy)
    {
        if (mBusy)
            throw CError(ErrNo::PathFileAccess, QStringLiteral("The editor is busy"), QStringLiteral("AudioEditor2"));
        mBusy = true;
    }
    ~BusyScope() { mBusy = false; }
    BusyScope(const BusyScope&) = delete;
    BusyScope& operator=(const BusyScope&) = delete;

private:
    bool& mBusy;
};
}  // namespace

AudioEditor2::AudioEditor2(QWidget* parent)
    : QWidget(parent), mSource(std::make_unique<AudioDecoder>()), mProbe(std::make_unique<AudioDecoder>())
{
    setObjectName(QStringLiteral("AudioEditor21"));
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    buildActions();
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(120, 60);
}

AudioEditor2::~AudioEditor2() = default;

void AudioEditor2::SetAppearance(const EditorAppearance& look)
{
    mLook = look;
    update();
}

void AudioEditor2::OpenFile(const QString& path)
{
    const BusyScope busy(mBusy);
    Stop();
    auto source = std::make_unique<AudioDecoder>();
    SongFeatures features;
    emit OnEditorProgress(0);
    source->Open(path);
    // The new sound is drawn as it decodes, over the length its header
    // tells; the old one, set aside, comes back when the new one turns out
    // to be no sound.
    PeakSummary old = std::move(mPeaks);
    const auto oldPlaces =
        std::tuple(mRate, mSelStart, mSelEnd, mViewStart, mViewEnd, mShowStart, mShowEnd, mPlayPosition);
    // The header's length is a guess, and may be a lie: a few percent over
    // it saves a doubling, and no more than the editor can hold is asked for.
    const double told = std::clamp(source->DurationSeconds() * source->SampleRate(), 0.0, double(INT32_MAX));
    mPeaks.Reset(source->Channels());
    mPeaks.Reserve(static_cast<int64_t>(std::min(told * 1.02, double(INT32_MAX))));
    mRate = source->SampleRate();
    mSelStart = mSelEnd = mViewStart = mViewEnd = mShowStart = mPlayPosition = 0;
    mShowEnd = static_cast<int32_t>(told);
    mLoading = true;
    auto probe = std::make_unique<AudioDecoder>();
    try {
        features.Reset(source->SampleRate(), source->Channels());
        int percent = 0;
        QElapsedTimer sincePaint;
        ScanSound(*source, path, mPeaks, features, [&](int now) {
            if (now != percent)
                emit OnEditorProgress(percent = now);
            // What is decoded shows at once and then a few times a second,
            // whether or not the progress handler lets events through.
            if (isVisible() && (!sincePaint.isValid() || sincePaint.elapsed() >= kLoadingPaintMs)) {
                if (mPeaks.Frames() > mShowEnd)  // the header told too little
                    mShowEnd = static_cast<int32_t>(std::min<int64_t>(mPeaks.Frames(), INT32_MAX));
                repaint();
                sincePaint.start();
            }
        });
        mPeaks.Finish();
        features.Finish();
        if (mPeaks.Frames() == 0)  // a sound stream with nothing in it that decodes
            throw CError(ErrNo::PathFileAccess, kFileEmptyOrDamaged, QStringLiteral("AudioEditor2"));
        if (mPeaks.Frames() > INT32_MAX)
            throw CError(ErrNo::PathFileAccess, kFormatNotSupported, QStringLiteral("AudioEditor2"));
        probe->Open(path);
        // The decoder learns where the file's time starts from its first
        // frame; a seek before any read would count from the place sought.
        int16_t first[2];
        probe->Read(first, 1);
    } catch (...) {
        mLoading = false;
        mPeaks = std::move(old);
        std::tie(mRate, mSelStart, mSelEnd, mViewStart, mViewEnd, mShowStart, mShowEnd, mPlayPosition) = oldPlaces;
        update();
        throw;
    }
    mLoading = false;
    mSource = std::move(source);
    mProbe = std::move(probe);
    mFeatures = std::move(features);
    mViewEnd = mShowEnd = TotalSamples();
    emit OnEditorProgress(100);
    update();
}

void AudioEditor2::Clear()
{
    Stop();
    mSource->Close();
    mProbe->Close();
    mPeaks = PeakSummary();
    mFeatures = SongFeatures();
    mSelStart = mSelEnd = mViewStart = mViewEnd = mShowStart = mShowEnd = mPlayPosition = 0;
    update();
}

void AudioEditor2::Stop()
{
    mPlayback.reset();
}

void AudioEditor2::PreparePlay() { Stop(); }

bool AudioEditor2::IsPlaying() const { return mPlayback != nullptr; }

void AudioEditor2::Play(int /*mode*/)
{
    // The marked part; with nothing marked, the visible sound from the play
    // cursor (from its start when the cursor stands outside it) to its end.
    Stop();
    if (!mSource->IsOpen() || mBusy)
        return;
    int64_t start = std::min(mSelStart, mSelEnd);
    int64_t end = std::max(mSelStart, mSelEnd);
    if (end <= start) {
        const bool inside = mPlayPosition >= mViewStart && mPlayPosition < mViewEnd;
        start = inside ? mPlayPosition : mViewStart;
        end = mViewEnd;
    }
    if (end <= start)
        return;
    try {
        mPlayback = std::make_unique<EditorPlayback>(*mSource, start, end, mVolume / 32000.0);
    } catch (const CError&) {
        return;  // no sound output: like a control on a machine without a sound card, it stays silent
    }
    const EditorPlayback* playback = mPlayback.get();
    connect(playback, &EditorPlayback::Moved, this, &AudioEditor2::playbackMoved);
    // Queued, so the end may arrive after a newer Play; only its own playback ends.
    connect(
        playback, &EditorPlayback::Ended, this,
        [this, playback] {
            if (mPlayback.get() == playback)
                playbackEnded();
        },
        Qt::QueuedConnection);
    mPlayPosition = static_cast<int32_t>(start);
    emit OnEditorPositionChanged();
    update();
}

void AudioEditor2::playbackMoved(int64_t frame)
{
    mPlayPosition = clampSample(frame);
    emit OnEditorPositionChanged();
    update();
}

void AudioEditor2::playbackEnded()
{
    playbackMoved(mPlayback->FinalFrame());
    mPlayback.reset();
}

void AudioEditor2::ZoomToRange(int32_t start, int32_t end)
{
    start = clampSample(start);
    end = clampSample(end);
    if (end < start)
        std::swap(start, end);
    if (end == start)
        return;
    mViewStart = mShowStart = start;
    mViewEnd = mShowEnd = end;
    // The cursor stays within the sound on show, so positions read against
    // the range's start are never negative.
    if (mPlayPosition < mViewStart || mPlayPosition > mViewEnd)
        mPlayPosition = mViewStart;
    update();
}

void AudioEditor2::ZoomFull()
{
    mViewStart = mShowStart = 0;
    mViewEnd = mShowEnd = TotalSamples();
    update();
}

void AudioEditor2::SaveToFile(const QString& path, bool selectionOnly, int fileFormat)
{
    const BusyScope busy(mBusy);
    if (!mSource->IsOpen())
        throw CError(ErrNo::PathFileAccess, QStringLiteral("No sound is loaded"), QStringLiteral("AudioEditor2"));
    EncoderTarget target;
    target.sampleRate = mRate;
    target.channels = mSource->Channels();
    if (fileFormat == FormatMp3) {
        // The MP3 cut only feeds the conversion to a tone, and every tone
        // format is mono at 16 kHz or less: a mono cut at up to 22.05 kHz
        // loses nothing of it and takes a quarter of the work.
        target.codec = wire::Codec::Mp3;
        target.bitRate = kSaveMp3BitRate;
        target.sampleRate = std::min(mRate, kSaveMp3MaxRate);
        target.channels = 1;
    } else if (fileFormat != FormatWave) {
        throw CError(ErrNo::PathFileAccess, kFormatNotSupported, QStringLiteral("AudioEditor2"));
    }
    int64_t start = 0, end = TotalSamples();
    if (selectionOnly && mSelStart != mSelEnd) {
        start = std::min(mSelStart, mSelEnd);
        end = std::max(mSelStart, mSelEnd);
    }
    Stop();
    emit OnEditorProgress(0);
    AudioEncoder encoder;
    encoder.Create(path, target, mRate, mSource->Channels());
    mSource->Seek(start);
    int percent = 0;
    TranscodeSteps steps;
    steps.frames = end - start;
    steps.progress = [&](int64_t done) {
        const int now = static_cast<int>(done * 100 / (end - start));
        if (now != percent && now < 100)
            emit OnEditorProgress(percent = now);
    };
    if (Transcode(*mSource, encoder, steps) < end - start)
        throw CError(ErrNo::PathFileAccess, QStringLiteral("The sound file can no longer be read"),
                     QStringLiteral("AudioEditor2"));
    encoder.Finish();
    emit OnEditorProgress(100);
}

// Marks set in code tell of their change through the event loop, once for
// all the sets of one handler: a caller that moves both marks is told of the
// selection it made, not of the half-way one between its two statements.
void AudioEditor2::postSelectionChanged()
{
    if (mSelectionChangePosted)
        return;
    mSelectionChangePosted = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            mSelectionChangePosted = false;
            emit OnEditorSelectionChanged();
        },
        Qt::QueuedConnection);
}

void AudioEditor2::SetSelectionStart(int32_t sample)
{
    mSelStart = clampSample(sample);
    postSelectionChanged();
    update();
}

void AudioEditor2::SetSelectionEnd(int32_t sample)
{
    mSelEnd = clampSample(sample);
    postSelectionChanged();
    update();
}

void AudioEditor2::SetShowSelection(bool show)
{
    mShowSelection = show;
    update();
}

void AudioEditor2::SetPlayPosition(int32_t sample)
{
    mPlayPosition = clampSample(sample);
    emit OnEditorPositionSet();
    update();
}

int32_t AudioEditor2::SamplesToMilliseconds(int32_t samples) const
{
    return MillisecondsOfFrames(samples, mRate);
}

void AudioEditor2::SetVolume(int32_t volume)
{
    mVolume = std::max(volume, 0);
    if (mPlayback)
        mPlayback->SetGain(mVolume / 32000.0);
}

int32_t AudioEditor2::SnappedToZero(int32_t sample)
{
    if (!mProbe->IsOpen() || mRate <= 0)
        return sample;
    // 5 ms either side, read apart from playback, one channel of their sum.
    const int reach = std::max(1, mRate / 200);
    const int64_t from = std::max<int64_t>(0, int64_t(sample) - reach);
    const int wanted = static_cast<int>(std::min<int64_t>(int64_t(sample) + reach + 1, TotalSamples()) - from);
    if (wanted <= 0)
        return sample;
    const int channels = mProbe->Channels();
    std::vector<int16_t> frames(static_cast<size_t>(wanted) * channels);
    mProbe->Seek(from);
    int got = 0;
    while (got < wanted) {
        const int n = mProbe->Read(frames.data() + static_cast<size_t>(got) * channels, wanted - got);
        if (n == 0)
            break;
        got += n;
    }
    std::vector<int32_t> mono(got);
    for (int f = 0; f < got; ++f) {
        for (int c = 0; c < channels; ++c)
            mono[f] += frames[static_cast<size_t>(f) * channels + c];
    }
    const int at = NearestZeroCrossing(mono, static_cast<int>(sample - from));
    return at < 0 ? sample : clampSample(from + at);
}

int32_t AudioEditor2::clampSample(int64_t sample) const
{
    return static_cast<int32_t>(std::clamp<int64_t>(sample, 0, TotalSamples()));
}

int32_t AudioEditor2::sampleAt(int x) const
{
    const int w = std::max(width(), 1);
    const int64_t span = static_cast<int64_t>(mShowEnd) - mShowStart;
    return clampSample(mShowStart + span * std::clamp(x, 0, w) / w);
}

int AudioEditor2::xOf(int64_t sample) const
{
    const int64_t span = std::max<int64_t>(1, static_cast<int64_t>(mShowEnd) - mShowStart);
    return static_cast<int>((sample - mShowStart) * width() / span);
}

void AudioEditor2::paintEvent(QPaintEvent*)
{
    QPainter p(this);
    p.fillRect(rect(), mLook.background);
    const QRect ruler(0, 0, width(), kRulerHeight);
    const QRect wave(0, kRulerHeight, width(), height() - kRulerHeight);
    drawRuler(p, ruler);
    const int channels = mPeaks.Channels();
    if (channels == 0 || mShowEnd <= mShowStart)
        return;

    const int32_t selLow = std::min(mSelStart, mSelEnd), selHigh = std::max(mSelStart, mSelEnd);
    const bool marked = mShowSelection && selHigh > selLow;
    if (marked) {
        const int x0 = std::max(0, xOf(selLow)), x1 = std::min(width(), xOf(selHigh));
        p.fillRect(QRect(x0, wave.top(), std::max(1, x1 - x0), wave.height()), mLook.selectedBackground);
    }
    const int w = width();
    const int64_t span = static_cast<int64_t>(mShowEnd) - mShowStart;
    const int lane = wave.height() / channels;
    for (int c = 0; c < channels; ++c) {
        const int mid = wave.top() + lane * c + lane / 2;
        const double scale = (lane / 2 - 1) / 32768.0;
        for (int x = 0; x < w; ++x) {
            const int64_t from = mShowStart + span * x / w;
            if (from >= mPeaks.Frames())  // not decoded yet
                break;
            const int64_t to = std::max(from + 1, mShowStart + span * (x + 1) / w);
            const PeakSummary::Span s = mPeaks.Range(c, from, to);
            const bool inside = marked && from < selHigh && to > selLow;
            p.setPen(inside ? mLook.selectedWave : mLook.wave);
            p.drawLine(x, mid - static_cast<int>(s.high * scale), x, mid - static_cast<int>(s.low * scale));
        }
    }
    if (marked) {
        p.setPen(mLook.selectionMarks);
        p.drawLine(xOf(selLow), wave.top(), xOf(selLow), wave.bottom());
        p.drawLine(xOf(selHigh), wave.top(), xOf(selHigh), wave.bottom());
    }
    p.setPen(mLook.playCursor);
    p.drawLine(xOf(mPlayPosition), wave.top(), xOf(mPlayPosition), wave.bottom());
    if (hasFocus()) {  // the keys work here
        p.setPen(QPen(mLook.ruler, 1, Qt::DotLine));
        p.drawRect(rect().adjusted(0, 0, -1, -1));
    }
}

QFont AudioEditor2::rulerFont() const
{
    QFont font(mLook.fontFamily);
    font.setPixelSize(9);
    return font;
}

QList<AudioEditor2::RulerMark> AudioEditor2::RulerMarks() const
{
    QList<RulerMark> marks;
    if (mRate <= 0 || mShowEnd <= mShowStart)
        return marks;
    const QFontMetrics metrics(rulerFont());
    // A label step of 1, 2 or 5 times a power of ten seconds, about 70 pixels apart.
    const double seconds = static_cast<double>(mShowEnd - mShowStart) / mRate;
    const double wanted = seconds * 70.0 / std::max(width(), 1);
    double step = std::pow(10.0, std::floor(std::log10(std::max(wanted, 1e-3))));
    for (const double m : {1.0, 2.0, 5.0, 10.0}) {
        if (step * m >= wanted) {
            step *= m;
            break;
        }
    }
    const double first = std::ceil(static_cast<double>(mShowStart) / mRate / step) * step;
    for (double t = first; t * mRate <= mShowEnd; t += step) {
        const int x = xOf(static_cast<int64_t>(std::llround(t * mRate)));
        const int whole = static_cast<int>(t);
        const QString label = step >= 1.0 ? QStringLiteral("%1:%2").arg(whole / 60).arg(whole % 60, 2, 10, QChar('0'))
                                          : QString::number(t, 'f', step >= 0.1 ? 1 : 2);
        const int w = metrics.horizontalAdvance(label);
        // Right of its tick, or left of it where the editor ends.
        const int left = x + 2 + w <= width() ? x + 2 : x - 2 - w;
        marks.append({x, QRect(left, 0, w, kRulerHeight - 3), label});
    }
    return marks;
}

void AudioEditor2::drawRuler(QPainter& p, const QRect& area) const
{
    p.setPen(mLook.ruler);
    p.drawLine(area.bottomLeft(), area.bottomRight());
    p.setFont(rulerFont());
    for (const RulerMark& mark : RulerMarks()) {
        p.drawLine(mark.tick, area.bottom() - 3, mark.tick, area.bottom());
        p.drawText(mark.text.left(), area.bottom() - 3, mark.label);
    }
}
