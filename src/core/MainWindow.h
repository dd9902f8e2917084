#pragma once
// The program's main window as the ground sees it: a plain window to centre
// dialogs on. The start-up shell, which knows the real one, installs how to
// reach it; until then there is none.
#include <functional>

class QWidget;

// The main window, loaded on first use; nullptr when none is installed.
QWidget* MainWindow();

// How MainWindow() reaches the window; empty removes it.
void SetMainWindow(std::function<QWidget*()> lookup);
