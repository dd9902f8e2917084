#include "service/ServiceMessage.h"

#include "core/modCommon.h"

#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

void DisplayServiceMessage(const QString& Message, QWidget*)
{
    QDialog window;
    window.setObjectName(QStringLiteral("frmGenericOKDialog"));
    window.setWindowTitle(QStringLiteral("Quillotone"));
    auto* layout = new QVBoxLayout(&window);
    auto* text = new QLabel(Message, &window);
    text->setObjectName(QStringLiteral("lblMessage"));
    text->setWordWrap(true);
    auto* ok = new QPushButton(QStringLiteral("OK"), &window);
    ok->setObjectName(QStringLiteral("picOK"));
    ok->setDefault(true);
    layout->addWidget(text);
    layout->addWidget(ok);
    QObject::connect(ok, &QPushButton::clicked, &window, &QDialog::accept);
    // The message is about the whole program, so it sits over the main window
    // whatever its owner; the pointer is normal while it is up.
    window.adjustSize();
    CenterOnMainWindow(&window);
    const int pointer = MousePointer();
    SetMousePointer(vbDefault);
    window.exec();
    SetMousePointer(pointer);
}
