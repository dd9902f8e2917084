#pragma once
// A modal message with run-time wording and one OK button, for this
// subsystem's windows and calls. It stands in for the skinned message window
// until that lands, with the same names ("frmGenericOKDialog", "lblMessage",
// "picOK") so that callers and tests stay as they are.
#include <QString>

class QWidget;

void DisplayServiceMessage(const QString& Message, QWidget* frmOwner = nullptr);
