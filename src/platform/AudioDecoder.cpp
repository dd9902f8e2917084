#include "platform/AudioDecoder.h"

#include "core/CError.h"

#include <QFileInfo>
#include <algorithm>
#include <cstring>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
}

namespace {
constexpr int kMaxChannels = 2;
// Undecodable packets in a row after which the rest of the file counts as gone.
constexpr int kMaxBadPackets = 200;
// Rates sound cards play; a header outside them is damage, not sound.
constexpr int kLowestRate = 4000;
constexpr int kHighestRate = 384000;
// Fewer bytes a second than the leanest codec a song or tone is kept in
// (AMR at 4.75 kbit/s, about 600) needs: a header claiming a longer sound,
// or garbage that decodes as one, is not believed past this.
constexpr int64_t kLeanestBytesPerSecond = 400;
}  // namespace

double PlausibleSeconds(int64_t fileBytes)
{
    return static_cast<double>(std::max<int64_t>(fileBytes, 0)) / kLeanestBytesPerSecond;
}

struct AudioDecoder::Impl {
    AVFormatContext* format = nullptr;
    AVCodecContext* codec = nullptr;
    SwrContext* swr = nullptr;
    AVChannelLayout swrLayout{};   // what swr takes in: a stream may change it part-way
    int swrRate = 0;
    int swrFormat = -1;
    AVPacket* packet = nullptr;
    AVFrame* frame = nullptr;
    QString path;
    int stream = -1;
    int rate = 0;
    int channels = 0;
    int64_t fileBytes = 0;
    int64_t bytesRead = 0;
    int64_t plausibleFrames = 0;   // the most a file of its size can hold

    std::vector<int16_t> pending;  // converted frames not yet handed out
    size_t pendingAt = 0;          // in values
    int64_t position = 0;          // frame of the next value handed out
    int64_t basePts = AV_NOPTS_VALUE;  // timestamp of frame 0
    int64_t firstPacketPts = AV_NOPTS_VALUE;
    int64_t firstPacketDuration = 0;
    int64_t seekTarget = -1;       // after a seek: frames before it are dropped
    bool fromStart = true;         // decoding began at the file's start: count, do not trust timestamps
    bool demuxDone = false;
    bool decodeDone = false;
    int badPackets = 0;

    ~Impl() { close(); }

    // Opens path afresh, to read from its first frame.
    void open()
    {
        bytesRead = 0;
        const QByteArray local = QFile::encodeName(path);
        try {
            if (avformat_open_input(&format, local.constData(), nullptr, nullptr) < 0 ||
                avformat_find_stream_info(format, nullptr) < 0)
                throw CError(ErrNo::PathFileAccess, kFormatNotSupported, QStringLiteral("AudioDecoder"));
            const AVCodec* decoder = nullptr;
            stream = av_find_best_stream(format, AVMEDIA_TYPE_AUDIO, -1, -1, &decoder, 0);
            if (stream < 0 || !decoder)
                throw CError(ErrNo::PathFileAccess, kFormatNotSupported, QStringLiteral("AudioDecoder"));
            AVStream* st = format->streams[stream];
            codec = avcodec_alloc_context3(decoder);
            if (!codec || avcodec_parameters_to_context(codec, st->codecpar) < 0 ||
                avcodec_open2(codec, decoder, nullptr) < 0 || codec->sample_rate < kLowestRate ||
                codec->sample_rate > kHighestRate || codec->ch_layout.nb_channels <= 0)
                throw CError(ErrNo::PathFileAccess, kFormatNotSupported, QStringLiteral("AudioDecoder"));
            rate = codec->sample_rate;
            channels = std::min(codec->ch_layout.nb_channels, kMaxChannels);
            packet = av_packet_alloc();
            frame = av_frame_alloc();
            position = 0;
            basePts = AV_NOPTS_VALUE;
            firstPacketPts = AV_NOPTS_VALUE;
            seekTarget = -1;
            fromStart = true;
            demuxDone = decodeDone = false;
            badPackets = 0;
        } catch (...) {
            close();
            throw;
        }
    }

    void close()
    {
        swr_free(&swr);
        av_channel_layout_uninit(&swrLayout);
        swrRate = 0;
        swrFormat = -1;
        avcodec_free_context(&codec);
        avformat_close_input(&format);
        av_packet_free(&packet);
        av_frame_free(&frame);
        stream = -1;
        pending.clear();
        pendingAt = 0;
    }

    int64_t framesOfPts(int64_t pts) const
    {
        return av_rescale_q(pts - basePts, format->streams[stream]->time_base, AVRational{1, rate});
    }

    // Sends the next packet of our stream to the decoder; false when none is left.
    void feed()
    {
        while (!demuxDone) {
            const int got = av_read_frame(format, packet);
            if (got < 0) {
                demuxDone = true;  // the end, or a file cut short: both end the sound here
                avcodec_send_packet(codec, nullptr);
                return;
            }
            if (packet->pos > 0)
                bytesRead = std::max(bytesRead, packet->pos);
            if (packet->stream_index != stream) {
                av_packet_unref(packet);
                continue;
            }
            if (firstPacketPts == AV_NOPTS_VALUE) {
                firstPacketPts = packet->pts;
                firstPacketDuration = packet->duration;
            }
            const int sent = avcodec_send_packet(codec, packet);
            av_packet_unref(packet);
            if (sent < 0 && sent != AVERROR(EAGAIN)) {
                if (++badPackets > kMaxBadPackets)
                    throw CError(ErrNo::PathFileAccess, kFileEmptyOrDamaged, QStringLiteral("AudioDecoder"));
                continue;  // a damaged frame is skipped, as players do
            }
            badPackets = 0;
            return;
        }
    }

    // Converts one decoded frame into pending; false at the very end.
    bool decodeMore()
    {
        while (!decodeDone) {
            const int got = avcodec_receive_frame(codec, frame);
            if (got == AVERROR(EAGAIN)) {
                feed();
                continue;
            }
            if (got == AVERROR_EOF) {
                decodeDone = true;
                break;
            }
            if (got < 0) {
                if (++badPackets > kMaxBadPackets)
                    throw CError(ErrNo::PathFileAccess, kFileEmptyOrDamaged, QStringLiteral("AudioDecoder"));
                continue;
            }
            convert();
            return true;
        }
        return false;
    }

    // Sets the resampler up for what this frame holds, whenever that differs
    // from the frame before (a stereo stream may go on in mono, or at another rate).
    void fitResampler()
    {
        const AVChannelLayout& in = frame->ch_layout.nb_channels > 0 ? frame->ch_layout : codec->ch_layout;
        const int inRate = frame->sample_rate > 0 ? frame->sample_rate : rate;
        if (swr && swrRate == inRate && swrFormat == frame->format && !av_channel_layout_compare(&swrLayout, &in))
            return;
        swr_free(&swr);
        av_channel_layout_uninit(&swrLayout);
        swrRate = 0;
        AVChannelLayout outLayout;
        av_channel_layout_default(&outLayout, channels);
        if (swr_alloc_set_opts2(&swr, &outLayout, AV_SAMPLE_FMT_S16, rate, const_cast<AVChannelLayout*>(&in),
                                static_cast<AVSampleFormat>(frame->format), inRate, 0, nullptr) < 0 ||
            swr_init(swr) < 0 || av_channel_layout_copy(&swrLayout, &in) < 0) {
            swr_free(&swr);
            throw CError(ErrNo::PathFileAccess, kFormatNotSupported, QStringLiteral("AudioDecoder"));
        }
        swrRate = inRate;
        swrFormat = frame->format;
    }

    void convert()
    {
        const int64_t pts = frame->best_effort_timestamp;
        if (basePts == AV_NOPTS_VALUE && pts != AV_NOPTS_VALUE) {
            basePts = pts;
            // The decoder drops the encoder's delay from the first frame; when
            // it could not move that frame's timestamp, we do, so that the
            // timestamps after a seek count from the first audible sample too.
            const AVRational tb = format->streams[stream]->time_base;
            const int64_t whole = av_rescale_q(firstPacketDuration, tb, AVRational{1, rate});
            if (pts == firstPacketPts && whole > frame->nb_samples)
                basePts += av_rescale_q(whole - frame->nb_samples, AVRational{1, rate}, tb);
        }
        if (seekTarget >= 0 && !fromStart && pts != AV_NOPTS_VALUE) {
            position = framesOfPts(pts);
            // Timestamps coarser than a sample (WMA counts milliseconds) only
            // say which frame this is; with frames of one size, as such
            // codecs have, the frame's number fixes the sample.
            const AVRational tb = format->streams[stream]->time_base;
            const int size = frame->nb_samples;
            if (av_cmp_q(tb, AVRational{1, rate}) > 0 && size > 0)
                position = (position + size / 2) / size * size;
        }
        fitResampler();
        const int capacity = swr_get_out_samples(swr, frame->nb_samples);
        pending.resize(static_cast<size_t>(std::max(capacity, 0)) * channels);
        uint8_t* out = reinterpret_cast<uint8_t*>(pending.data());
        const int made = swr_convert(swr, &out, capacity, const_cast<const uint8_t**>(frame->extended_data),
                                     frame->nb_samples);
        av_frame_unref(frame);
        pending.resize(static_cast<size_t>(std::max(made, 0)) * channels);
        pendingAt = 0;
        if (seekTarget >= 0) {
            const int64_t drop = std::clamp<int64_t>(seekTarget - position, 0, std::max(made, 0));
            pendingAt = static_cast<size_t>(drop) * channels;
            position += drop;
            if (pendingAt < pending.size())
                seekTarget = -1;
        }
    }
};

AudioDecoder::AudioDecoder() : d(std::make_unique<Impl>())
{
    // FFmpeg's notes about damaged frames go nowhere a user looks; errors reach
    // callers as CError.
    av_log_set_level(AV_LOG_FATAL);
}
AudioDecoder::~AudioDecoder() = default;

void AudioDecoder::Open(const QString& path)
{
    Close();
    const QFileInfo info(path);
    if (!info.isFile())
        throw CError(ErrNo::FileNotFound, QStringLiteral("File not found"), QStringLiteral("AudioDecoder"));
    if (info.size() == 0)
        throw CError(ErrNo::PathFileAccess, kFileEmptyOrDamaged, QStringLiteral("AudioDecoder"));
    d->path = path;
    d->fileBytes = info.size();
    d->open();
    d->plausibleFrames = static_cast<int64_t>(PlausibleSeconds(d->fileBytes) * d->rate);
}

void AudioDecoder::Close() { d->close(); }
bool AudioDecoder::IsOpen() const { return d->stream >= 0; }
int AudioDecoder::SampleRate() const { return d->rate; }
int AudioDecoder::Channels() const { return d->channels; }
int64_t AudioDecoder::Position() const { return d->seekTarget >= 0 ? d->seekTarget : d->position; }

double AudioDecoder::DurationSeconds() const
{
    if (!IsOpen())
        return 0;
    const AVStream* st = d->format->streams[d->stream];
    double seconds = 0;
    if (st->duration != AV_NOPTS_VALUE && st->duration > 0)
        seconds = static_cast<double>(st->duration) * av_q2d(st->time_base);
    else if (d->format->duration > 0)
        seconds = static_cast<double>(d->format->duration) / AV_TIME_BASE;
    return std::min(seconds, PlausibleSeconds(d->fileBytes));
}

int AudioDecoder::ProgressPercent() const
{
    if (!IsOpen() || d->fileBytes <= 0 || d->demuxDone)
        return 100;
    return static_cast<int>(std::clamp<int64_t>(d->bytesRead * 100 / d->fileBytes, 0, 99));
}

int AudioDecoder::Read(int16_t* out, int maxFrames)
{
    if (!IsOpen())
        return 0;
    // Past what the file can plausibly hold, the sound has ended.
    maxFrames = static_cast<int>(std::clamp<int64_t>(d->plausibleFrames - Position(), 0, maxFrames));
    int done = 0;
    while (done < maxFrames) {
        if (d->pendingAt >= d->pending.size() && !d->decodeMore())
            break;
        if (d->seekTarget >= 0)
            continue;  // still before the frame asked for
        const int have = static_cast<int>((d->pending.size() - d->pendingAt) / d->channels);
        const int take = std::min(have, maxFrames - done);
        std::memcpy(out + static_cast<ptrdiff_t>(done) * d->channels, d->pending.data() + d->pendingAt,
                    sizeof(int16_t) * static_cast<size_t>(take) * d->channels);
        d->pendingAt += static_cast<size_t>(take) * d->channels;
        d->position += take;
        done += take;
    }
    return done;
}

void AudioDecoder::Seek(int64_t frame)
{
    if (!IsOpen())
        return;
    frame = std::max<int64_t>(frame, 0);
    AVStream* st = d->format->streams[d->stream];
    const int64_t base = d->basePts == AV_NOPTS_VALUE ? 0 : d->basePts;
    // Start a second early: an MP3 frame needs the frames before it to sound right.
    int64_t lead = std::max<int64_t>(0, frame - d->rate);
    const int64_t ts = base + av_rescale_q(lead, AVRational{1, d->rate}, st->time_base);
    if (av_seek_frame(d->format, d->stream, ts, AVSEEK_FLAG_BACKWARD) < 0 &&
        av_seek_frame(d->format, d->stream, base, AVSEEK_FLAG_BACKWARD | AVSEEK_FLAG_ANY) < 0) {
        // Some damaged files play but cannot seek: read them again from the start.
        d->close();
        d->open();
        lead = 0;
    }
    avcodec_flush_buffers(d->codec);
    swr_free(&d->swr);  // the next frame sets it up afresh, with nothing held back
    d->pending.clear();
    d->pendingAt = 0;
    d->demuxDone = d->decodeDone = false;
    // From the start the decoder drops the encoder's delay again, exactly as
    // when the file was opened; later on the frames' timestamps tell where we are.
    d->seekTarget = frame;
    d->fromStart = lead == 0;
    d->position = lead;
}
