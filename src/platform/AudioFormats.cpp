#include "platform/AudioFormats.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace {
// Sound files people keep, with the demuxer and the usual codec of each;
// a row counts when this build of FFmpeg has both.
struct Kind {
    const char* extension;
    const char* demuxer;
    AVCodecID codec;
};
constexpr Kind kKinds[] = {
    {"mp3", "mp3", AV_CODEC_ID_MP3},       {"wav", "wav", AV_CODEC_ID_PCM_S16LE},
    {"wma", "asf", AV_CODEC_ID_WMAV2},     {"flac", "flac", AV_CODEC_ID_FLAC},
    {"ogg", "ogg", AV_CODEC_ID_VORBIS},    {"oga", "ogg", AV_CODEC_ID_VORBIS},
    {"opus", "ogg", AV_CODEC_ID_OPUS},     {"aac", "aac", AV_CODEC_ID_AAC},
    {"m4a", "mov", AV_CODEC_ID_AAC},       {"m4b", "mov", AV_CODEC_ID_AAC},
    {"aif", "aiff", AV_CODEC_ID_PCM_S16BE},
    {"aiff", "aiff", AV_CODEC_ID_PCM_S16BE}, {"ape", "ape", AV_CODEC_ID_APE},
    {"wv", "wv", AV_CODEC_ID_WAVPACK},     {"mpc", "mpc8", AV_CODEC_ID_MUSEPACK8},
    {"ac3", "ac3", AV_CODEC_ID_AC3},       {"amr", "amr", AV_CODEC_ID_AMR_NB},
    {"au", "au", AV_CODEC_ID_PCM_S16BE},   {"mka", "matroska", AV_CODEC_ID_VORBIS},
    {"caf", "caf", AV_CODEC_ID_PCM_S16LE}, {"tta", "tta", AV_CODEC_ID_TTA},
    {"spx", "ogg", AV_CODEC_ID_SPEEX},     {"mp2", "mp3", AV_CODEC_ID_MP2},
};
}  // namespace

QStringList DecodableAudioExtensions()
{
    QStringList extensions;
    for (const Kind& kind : kKinds) {
        if (av_find_input_format(kind.demuxer) && avcodec_find_decoder(kind.codec))
            extensions << QString::fromLatin1(kind.extension);
    }
    extensions.sort();
    return extensions;
}
