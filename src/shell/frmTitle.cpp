#include "shell/frmTitle.h"

#include "core/MainWindow.h"
#include "core/globals.h"
#include "core/seams.h"
#include "core/twips.h"
#include "skin/SkinStyle.h"

#include <QApplication>
#include <QCloseEvent>
#include <QPointer>
#include <QScreen>

namespace {
QPointer<frmTitle> gTitle;

// An intro, a sign-up or a disk search stands in for the main window.
bool standsAside()
{
    return gbSignUpActive || gbSearchRunning;
}
}  // namespace

frmTitle::frmTitle()
    : QWidget(nullptr, Qt::Window)
{
    setObjectName(QStringLiteral("frmTitle"));
    setWindowTitle(QStringLiteral("Quillotone"));
    setWindowIcon(skin::AppIcon());
    // Showing it must not take the keyboard from the main window.
    setAttribute(Qt::WA_ShowWithoutActivating);
    resize(120, 30);
}

void frmTitle::Form_Load()
{
    const QScreen* screen = QGuiApplication::primaryScreen();
    const int height = screen ? screen->geometry().height() : 0;
    move(x(), height + TwipsToPixelsY(1000, screen));
}

void frmTitle::Form_Activate()
{
    if (standsAside())
        return;
    QWidget* main = MainWindow();
    if (!main)
        return;
    if (windowState() & Qt::WindowMinimized) {
        main->hide();
    } else if (!(windowState() & Qt::WindowMaximized)) {
        main->show();
        main->raise();
        main->activateWindow();
    }
}

void frmTitle::Form_Resize()
{
    if (standsAside() || (windowState() & (Qt::WindowMinimized | Qt::WindowMaximized)))
        return;
    if (QWidget* main = MainWindow())
        main->show();
}

bool frmTitle::event(QEvent* event)
{
    if (event->type() == QEvent::WindowActivate)
        Form_Activate();
    return QWidget::event(event);
}

void frmTitle::changeEvent(QEvent* event)
{
    // Minimising or restoring from the taskbar changes the state first.
    if (event->type() == QEvent::WindowStateChange) {
        Form_Activate();
        Form_Resize();
    }
    QWidget::changeEvent(event);
}

void frmTitle::closeEvent(QCloseEvent* event)
{
    // The taskbar's close command ends the program at once; the program's own
    // unloads pass through.
    if (event->spontaneous())
        EndProgramNow(0);
    event->accept();
}

frmTitle& TitleWindow()
{
    if (!gTitle) {
        gTitle = new frmTitle;
        gTitle->Form_Load();
    }
    return *gTitle;
}

void MinimiseToTaskbar(QWidget* frmMain)
{
    // On the roads in from the intro the title window is never shown, so it
    // owns no taskbar entry to come back by: the main window minimises to an
    // entry of its own instead of hiding.
    if (!TitleWindow().isVisible()) {
        if (frmMain)
            frmMain->showMinimized();
        return;
    }
    if (frmMain)
        frmMain->hide();
    TitleWindow().setWindowState(TitleWindow().windowState() | Qt::WindowMinimized);
}

void DropTitleWindow()
{
    delete gTitle;
}
