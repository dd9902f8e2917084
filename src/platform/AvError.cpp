#include "platform/AvError.h"

extern "C" {
#include <libavutil/error.h>
}

QString AvErrorText(int code)
{
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return QString::fromUtf8(text);
}

int AvCheck(int code, const QString& what)
{
    if (code < 0)
        throw CError(code == AVERROR(ENOSPC) ? ErrNo::DiskFull : ErrNo::PathFileAccess,
                     what + ": " + AvErrorText(code), QStringLiteral("FFmpeg"));
    return code;
}
