#pragma once
// The offscreen platform warns once for every window mask and raise() it
// cannot carry out; skinned windows do both on every show. Those two notes
// are dropped so that a test's output shows what matters; everything else
// goes to Qt Test's own handler.
#include <QtGlobal>

inline void QuietOffscreenPlugin()
{
    static QtMessageHandler next = nullptr;
    next = qInstallMessageHandler([](QtMsgType type, const QMessageLogContext& context, const QString& message) {
        if (type == QtWarningMsg && message.startsWith(QLatin1String("This plugin does not support")))
            return;
        if (next)
            next(type, context, message);
    });
}
