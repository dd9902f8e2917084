#include "core/MsgBox.h"

void MsgBox(const QString& text, QMessageBox::Icon icon, const QString& title)
{
    QMessageBox box(icon, title, text, QMessageBox::Ok);
    box.setObjectName(QStringLiteral("MsgBox"));
    box.exec();
}
