#include "core/frmIntro.h"
#include "core/modKillProcess.h"
#include "core/modStartup.h"
#include "core/seams.h"
#include "editing/frmMain.h"
#include "service/CLoginManager.h"
#include "service/CSignUpManager.h"

#include <QApplication>
#include <QTimer>
#include <algorithm>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    seams().killProcess = KillProcess;
    seams().mainWindow = [] {
        frmMain& form = MainForm();
        form.Load();
        return static_cast<QWidget*>(&form);
    };
    RegisterLogin();
    RegisterSignUp();
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
