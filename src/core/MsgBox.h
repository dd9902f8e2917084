#pragma once
// The platform's plain message box: modal, one OK button. Its objectName is
// "MsgBox" so that tests can find and answer it.
#include <QMessageBox>
#include <QString>

void MsgBox(const QString& text, QMessageBox::Icon icon = QMessageBox::NoIcon, const QString& title = {});
