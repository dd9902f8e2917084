#pragma once
// The ways of ending that pass through a confirmation.
#include <QString>

class QWidget;

// Shows frmConfirmExit; true when the user wants to leave.
bool ConfirmExit();

// The quit balloon file, written when a tone is still pending.
QString QuitBalloonPath();
void WriteQuitBalloon();

// lblClose of the main window: confirm, balloon, hide, log, and end every
// process of the program, this one included. Returns only if the user stays.
void QuitFromMainWindow(QWidget* frmMain);

// cmdSignOut of the main window: confirm and end at once; signing out is
// leaving, nothing stored is wiped. Returns only if the user stays.
void SignOutAndLeave();
