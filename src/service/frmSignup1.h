#pragma once
// The personal details of sign-up. imgSend checks the form, makes sure the
// number is free, keeps the fields in the settings and runs CreateSubmit:
// the picture code, the new customer, the SMS confirmation of the number,
// the activation and the first login.
#include "skin/CSkinWindow.h"

#include <QString>

// The form's word on a password the login could not carry.
inline const QString kPasswordCharacters = QStringLiteral(
    "Your password can't have spaces or any of & = % + # ? ' in it. Please use letters, numbers and other "
    "symbols.");

class CClickLabel;
class CSignUpManager;
class QLabel;
class QLineEdit;

class frmSignup1 : public CSkinWindow {
    Q_OBJECT
public:
    explicit frmSignup1(CSignUpManager& road);

    QLineEdit* txtFirstName = nullptr;
    QLineEdit* txtLastName = nullptr;
    QLineEdit* txtMobileNumber = nullptr;
    QLineEdit* txtAge = nullptr;
    QLineEdit* txtPassword = nullptr;
    QLineEdit* txtConfirmPassword = nullptr;
    QLineEdit* txtEmailAddress = nullptr;
    CClickLabel* lblGuy = nullptr;
    CClickLabel* lblGal = nullptr;
    CClickLabel* lblUpToDate = nullptr;
    CClickLabel* imgGuyChecked = nullptr;
    CClickLabel* imgGalChecked = nullptr;
    CClickLabel* imgUpToDateChecked = nullptr;
    CPictureButton* imgSend = nullptr;
    CPictureButton* imgBack = nullptr;
    QLabel* picTalkingToServer = nullptr;

    // Trims every box, then checks the form in order; the first failure is
    // told and takes the focus where the form keeps it. True if all pass.
    bool ValidateForm();
    void SaveFormFields();
    void CreateSubmit();

protected:
    void Form_Load() override;

private:
    void imgSend_Released();
    void lblClose_Click();
    // The SMS code typed matches, or the program has ended.
    void ConfirmMobileNumber(const QString& code, const QString& customerId);
    void SaveConfirmationState(const QString& code, const QString& customerId);
    void StopTalking();

    CSignUpManager& mRoad;
};
