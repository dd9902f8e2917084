// quillotone-icons <folder> <size>...: writes the program's badge as
// <folder>/<size>x<size>/apps/quillotone.png for the desktop's icon theme.
// Run at build time, so the installed icons are the skin's own drawing.
#include "skin/SkinStyle.h"

#include <QDir>
#include <QGuiApplication>
#include <cstdio>

int main(int argc, char** argv)
{
    QGuiApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() < 3) {
        std::fprintf(stderr, "usage: quillotone-icons <folder> <size>...\n");
        return 2;
    }
    for (qsizetype i = 2; i < args.size(); ++i) {
        const int size = args[i].toInt();
        const QString folder = QStringLiteral("%1/%2x%2/apps").arg(args[1]).arg(size);
        if (size <= 0 || !QDir().mkpath(folder) ||
            !skin::AppIconImage(size).save(folder + QStringLiteral("/quillotone.png"))) {
            std::fprintf(stderr, "quillotone-icons: cannot write the %s icon in %s\n", qPrintable(args[i]),
                         qPrintable(folder));
            return 1;
        }
    }
    return 0;
}
