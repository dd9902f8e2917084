#pragma once
// A small plain window that is never seen on the desktop, parked below the
// screen, but owns the program's taskbar entry, which the borderless main
// window lacks. Minimising it hides the main window, restoring or activating
// it shows the main window again, unless an intro, sign-up or disk search
// stands in for the main window. Closing it from the taskbar ends the program.
#include <QWidget>

class frmTitle : public QWidget {
    Q_OBJECT
public:
    frmTitle();

    void Form_Load();
    void Form_Activate();
    void Form_Resize();

protected:
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
};

// The program's one title window, made and loaded on first use.
frmTitle& TitleWindow();

// lblMinimize of the main window: hide it and minimise the title window; on
// the roads where the title window is never shown, minimise the main window.
void MinimiseToTaskbar(QWidget* frmMain);

void DropTitleWindow();
