#pragma once
// Messages whose wording is made at run time, in the skinned window
// frmGenericOKDialog. Two uses:
//   a modal message:  CDialog().Display(text, true, owner);   returns once closed
//   a notice:         dlg.Display(text, false, owner); dlg.Update(...); dlg.HideForm();
// Each caller holds its own CDialog; dropping it takes its window away.
#include <QPointer>
#include <QString>

class QWidget;
class frmGenericOKDialog;

class CDialog {
public:
    CDialog() = default;
    ~CDialog();
    CDialog(const CDialog&) = delete;
    CDialog& operator=(const CDialog&) = delete;

    void Display(const QString& Message, bool bModal, QWidget* frmOwner);
    void HideForm();
    void Update(const QString& Message);

    // The window on the screen now, if any.
    frmGenericOKDialog* Window() const { return mfrmDialog; }

private:
    QPointer<frmGenericOKDialog> mfrmDialog;
};
