#include "editing/frmMain.h"
#include "platform/CDSource.h"
#include "shell/SubMain.h"
#include "shell/frmIntro.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QTimer>
#include <algorithm>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    // Without a CD drive, a disc image stands in for the first drive.
    QCommandLineParser options;
    const QCommandLineOption cdImage(QStringLiteral("cd-image"),
                                     QStringLiteral("Read CDs from this CUE sheet instead of the first drive."),
                                     QStringLiteral("cue"));
    options.addOption(cdImage);
    options.addHelpOption();
    options.process(app);
    SetCDImage(options.value(cdImage));
    UseMainForm();
    QTimer::singleShot(0, &app, [] {
        SubMain();
        // A road that opened no window leaves nothing to wait for.
        const QWidgetList windows = QApplication::topLevelWidgets();
        if (std::none_of(windows.begin(), windows.end(), [](QWidget* w) { return w->isVisible(); }))
            QCoreApplication::quit();
    });
    const int code = QApplication::exec();
    DropStartupWindows();
    DropMainForm();
    return code;
}
