#include "editing/frmMain.h"
#include "shell/SubMain.h"
#include "shell/frmIntro.h"

#include <QApplication>
#include <QTimer>
#include <algorithm>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
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
