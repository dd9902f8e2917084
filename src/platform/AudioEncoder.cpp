#include "platform/AudioEncoder.h"

#include "core/CError.h"
#include "platform/AvError.h"

#include <QFile>
#include <QFileInfo>
#include <cstdlib>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/audio_fifo.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
}

namespace {
// LAME's speed against care (0 best, 9 fastest): 7 cuts a half minute in well
// under a tenth of a second, and a phone's speaker does not hear the rest.
constexpr int kLameQuality = 7;
// The most frames one resampling makes: a write is taken in slices that fit.
constexpr int kMaxSliceFrames = 65536;

struct Choice {
    const char* codec;
    const char* muxer;
};

// The rate asked for when the encoder takes it, else the nearest one it takes
// (MP3 stops at 48000 Hz; a 96 kHz recording is cut at 48 kHz).
int supportedRate(const AVCodec* encoder, int wanted)
{
    if (!encoder->supported_samplerates)
        return wanted;
    int best = 0;
    for (const int* r = encoder->supported_samplerates; *r; ++r) {
        if (*r == wanted)
            return wanted;
        if (best == 0 || std::abs(*r - wanted) < std::abs(best - wanted))
            best = *r;
    }
    return best;
}

Choice choiceFor(wire::Codec codec)
{
    switch (codec) {
    case wire::Codec::Mp3: return {"libmp3lame", "mp3"};
    case wire::Codec::AmrNarrowband: return {"libopencore_amrnb", "amr"};
    case wire::Codec::AmrWideband: return {"libvo_amrwbenc", "amr"};
    case wire::Codec::Wave: return {"pcm_s16le", "wav"};
    case wire::Codec::None: break;
    }
    throw CError(ErrNo::PathFileAccess, QStringLiteral("No encoder makes this format"), QStringLiteral("AudioEncoder"));
}
}  // namespace

struct AudioEncoder::Impl {
    QString finalPath;
    QString partPath;
    AVFormatContext* format = nullptr;
    AVCodecContext* codec = nullptr;
    SwrContext* swr = nullptr;
    AVAudioFifo* fifo = nullptr;
    AVFrame* frame = nullptr;
    AVPacket* packet = nullptr;
    int inputChannels = 0;
    int64_t pts = 0;
    bool headerWritten = false;

    ~Impl() { release(true); }

    void release(bool removePart)
    {
        if (format && format->pb)
            avio_closep(&format->pb);
        avformat_free_context(format);
        format = nullptr;
        avcodec_free_context(&codec);
        swr_free(&swr);
        if (fifo)
            av_audio_fifo_free(fifo);
        fifo = nullptr;
        av_frame_free(&frame);
        av_packet_free(&packet);
        if (removePart && !partPath.isEmpty())
            QFile::remove(partPath);
        partPath.clear();
    }

    void drainPackets()
    {
        for (;;) {
            const int got = avcodec_receive_packet(codec, packet);
            if (got == AVERROR(EAGAIN) || got == AVERROR_EOF)
                return;
            AvCheck(got, QStringLiteral("Encoding"));
            packet->stream_index = 0;
            av_packet_rescale_ts(packet, codec->time_base, format->streams[0]->time_base);
            AvCheck(av_interleaved_write_frame(format, packet), QStringLiteral("Writing"));
        }
    }

    // Encodes whole encoder frames from the fifo; with last, the short rest too.
    void encodeFifo(bool last)
    {
        const int size = codec->frame_size > 0 ? codec->frame_size : 1024;
        while (av_audio_fifo_size(fifo) >= size || (last && av_audio_fifo_size(fifo) > 0)) {
            int take = std::min(size, av_audio_fifo_size(fifo));
            const bool padded = take < size && codec->frame_size > 0 &&
                                !(codec->codec->capabilities & AV_CODEC_CAP_SMALL_LAST_FRAME);
            frame->nb_samples = padded ? size : take;
            frame->format = codec->sample_fmt;
            frame->sample_rate = codec->sample_rate;
            AvCheck(av_channel_layout_copy(&frame->ch_layout, &codec->ch_layout), QStringLiteral("Encoding"));
            AvCheck(av_frame_get_buffer(frame, 0), QStringLiteral("Encoding"));
            if (padded)
                av_samples_set_silence(frame->extended_data, 0, size, codec->ch_layout.nb_channels,
                                       codec->sample_fmt);
            av_audio_fifo_read(fifo, reinterpret_cast<void**>(frame->extended_data), take);
            frame->pts = pts;
            pts += frame->nb_samples;
            AvCheck(avcodec_send_frame(codec, frame), QStringLiteral("Encoding"));
            av_frame_unref(frame);
            drainPackets();
        }
    }

    void push(const uint8_t* const* in, int count)
    {
        const int capacity = swr_get_out_samples(swr, count);
        if (capacity <= 0)
            return;
        AvCheck(av_audio_fifo_realloc(fifo, av_audio_fifo_size(fifo) + capacity), QStringLiteral("Encoding"));
        uint8_t** planes = nullptr;
        int lineSize = 0;
        AvCheck(av_samples_alloc_array_and_samples(&planes, &lineSize, codec->ch_layout.nb_channels, capacity,
                                                   codec->sample_fmt, 0),
                QStringLiteral("Encoding"));
        const int made = swr_convert(swr, planes, capacity, const_cast<const uint8_t**>(in), count);
        if (made > 0)
            av_audio_fifo_write(fifo, reinterpret_cast<void**>(planes), made);
        av_freep(&planes[0]);
        av_freep(&planes);
        AvCheck(made, QStringLiteral("Resampling"));
    }
};

AudioEncoder::AudioEncoder() : d(std::make_unique<Impl>()) {}
AudioEncoder::~AudioEncoder() = default;

void AudioEncoder::Create(const QString& path, const EncoderTarget& target, int inputRate, int inputChannels)
{
    Abandon();
    const Choice choice = choiceFor(target.codec);
    d->finalPath = path;
    d->partPath = path + QStringLiteral(".part");
    d->inputChannels = inputChannels;
    d->pts = 0;
    d->headerWritten = false;
    try {
        const AVCodec* encoder = avcodec_find_encoder_by_name(choice.codec);
        if (!encoder)
            throw CError(ErrNo::PathFileAccess, QStringLiteral("The encoder %1 is missing").arg(choice.codec),
                         QStringLiteral("AudioEncoder"));
        if (inputRate <= 0 || inputChannels <= 0)
            throw CError(ErrNo::PathFileAccess, QStringLiteral("The source holds no audio"),
                         QStringLiteral("AudioEncoder"));
        AvCheck(avformat_alloc_output_context2(&d->format, nullptr, choice.muxer, nullptr),
                QStringLiteral("Output"));
        AVStream* st = avformat_new_stream(d->format, nullptr);
        d->codec = avcodec_alloc_context3(encoder);
        if (!st || !d->codec)
            throw CError(ErrNo::PathFileAccess, QStringLiteral("Out of memory"), QStringLiteral("AudioEncoder"));
        d->codec->sample_rate = supportedRate(encoder, target.sampleRate);
        av_channel_layout_default(&d->codec->ch_layout, target.channels);
        d->codec->sample_fmt = encoder->sample_fmts ? encoder->sample_fmts[0] : AV_SAMPLE_FMT_S16;
        for (const AVSampleFormat* f = encoder->sample_fmts; f && *f != AV_SAMPLE_FMT_NONE; ++f) {
            if (*f == AV_SAMPLE_FMT_S16 || *f == AV_SAMPLE_FMT_S16P)
                d->codec->sample_fmt = *f;  // no conversion of sample width when we can help it
        }
        d->codec->bit_rate = target.bitRate;
        if (target.codec == wire::Codec::Mp3)
            d->codec->compression_level = kLameQuality;
        d->codec->time_base = AVRational{1, d->codec->sample_rate};
        if (d->format->oformat->flags & AVFMT_GLOBALHEADER)
            d->codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
        AvCheck(avcodec_open2(d->codec, encoder, nullptr), QStringLiteral("Encoder"));
        AvCheck(avcodec_parameters_from_context(st->codecpar, d->codec), QStringLiteral("Encoder"));
        st->time_base = d->codec->time_base;

        AVChannelLayout inLayout;
        av_channel_layout_default(&inLayout, inputChannels);
        AvCheck(swr_alloc_set_opts2(&d->swr, &d->codec->ch_layout, d->codec->sample_fmt, d->codec->sample_rate,
                                    &inLayout, AV_SAMPLE_FMT_S16, inputRate, 0, nullptr),
                QStringLiteral("Resampling"));
        AvCheck(swr_init(d->swr), QStringLiteral("Resampling"));
        d->fifo = av_audio_fifo_alloc(d->codec->sample_fmt, d->codec->ch_layout.nb_channels, 4096);
        d->frame = av_frame_alloc();
        d->packet = av_packet_alloc();
        if (!d->fifo || !d->frame || !d->packet)
            throw CError(ErrNo::PathFileAccess, QStringLiteral("Out of memory"), QStringLiteral("AudioEncoder"));

        QFile::remove(d->partPath);
        const QByteArray local = QFile::encodeName(d->partPath);
        if (avio_open(&d->format->pb, local.constData(), AVIO_FLAG_WRITE) < 0)
            throw CError(ErrNo::PathFileAccess, QStringLiteral("Path/File access error"),
                         QStringLiteral("AudioEncoder"));
        AvCheck(avformat_write_header(d->format, nullptr), QStringLiteral("Writing"));
        d->headerWritten = true;
    } catch (...) {
        d->release(true);
        throw;
    }
}

void AudioEncoder::Write(const int16_t* frames, int count)
{
    if (!d->format || count <= 0)
        return;
    try {
        // However far apart the two rates are, no slice needs a larger buffer.
        for (int done = 0; done < count;) {
            int slice = count - done;
            while (slice > 1 && swr_get_out_samples(d->swr, slice) > kMaxSliceFrames)
                slice /= 2;
            const uint8_t* in[1] = {reinterpret_cast<const uint8_t*>(frames + ptrdiff_t{done} * d->inputChannels)};
            d->push(in, slice);
            d->encodeFifo(false);
            done += slice;
        }
    } catch (...) {
        d->release(true);
        throw;
    }
}

void AudioEncoder::Finish()
{
    if (!d->format)
        return;
    try {
        d->push(nullptr, 0);  // what the resampler still holds
        d->encodeFifo(true);
        AvCheck(avcodec_send_frame(d->codec, nullptr), QStringLiteral("Encoding"));
        d->drainPackets();
        AvCheck(av_write_trailer(d->format), QStringLiteral("Writing"));
        AvCheck(avio_closep(&d->format->pb), QStringLiteral("Writing"));
        QFile::remove(d->finalPath);
        if (!QFile::rename(d->partPath, d->finalPath))
            throw CError(ErrNo::PathFileAccess, QStringLiteral("Path/File access error"),
                         QStringLiteral("AudioEncoder"));
        d->partPath.clear();
        d->release(false);
    } catch (...) {
        d->release(true);
        throw;
    }
}

void AudioEncoder::Abandon() { d->release(true); }
