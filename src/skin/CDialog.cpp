#include "skin/CDialog.h"

#include "core/modCommon.h"
#include "skin/frmGenericOKDialog.h"

#include <QCoreApplication>
#include <QLabel>
#include <QThread>
#include <QTimer>

CDialog::~CDialog()
{
    delete mfrmDialog;
}

void CDialog::Display(const QString& Message, bool bModal, QWidget* frmOwner)
{
    delete mfrmDialog;
    mfrmDialog = new frmGenericOKDialog;
    mfrmDialog->Load();
    // On the main window, whatever the owner is.
    CenterOnMainWindow(mfrmDialog);
    mfrmDialog->Label(QStringLiteral("lblMessage"))->setText(Message);
    const int pointer = MousePointer();

    if (bModal) {
        SetMousePointer(vbDefault);
        mfrmDialog->Show(true);
        delete mfrmDialog;
    } else {
        // A notice: no button and no hover, above its owner.
        mfrmDialog->findChild<QTimer*>(QStringLiteral("Timer1"))->stop();
        mfrmDialog->Label(QStringLiteral("picOK"))->hide();
        QLabel* text = mfrmDialog->Label(QStringLiteral("lblMessage"));
        text->setGeometry(text->geometry().adjusted(0, 0, 0, 40));
        if (frmOwner) {
            const QPoint at = mfrmDialog->pos();
            mfrmDialog->setParent(frmOwner, mfrmDialog->windowFlags());
            mfrmDialog->move(at);
        }
        mfrmDialog->Show(false);
        // Painted before the caller goes on with its blocking work.
        for (int i = 0; i < 3; ++i)
            QCoreApplication::processEvents();
        QThread::msleep(10);
    }
    SetMousePointer(pointer);
}

void CDialog::HideForm()
{
    if (mfrmDialog)
        mfrmDialog->Hide();
    delete mfrmDialog;
}

void CDialog::Update(const QString& Message)
{
    mfrmDialog->Label(QStringLiteral("lblMessage"))->setText(Message);
    QCoreApplication::processEvents();
}
