#pragma once
// The window in which the user types the four-digit code that the service
// sent to the new account's phone. Its answer is its Tag: "Q" for Cancel,
// empty for OK; the code typed stays in txtCode.
#include "skin/CSkinWindow.h"

class QLabel;
class QLineEdit;

class frmSMSConfirmation : public CSkinWindow {
    Q_OBJECT
public:
    frmSMSConfirmation();

    QLabel* lblPhoneNumber = nullptr;
    QLineEdit* txtCode = nullptr;
    CPictureButton* imgOK = nullptr;
    CPictureButton* imgCancel = nullptr;
    QLabel* lblURL = nullptr;

protected:
    void Form_Load() override;

private:
    void imgCancel_Released();
};
