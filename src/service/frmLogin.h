#pragma once
// The login window: number, password, sign in, cancel, the two sign-up
// labels and the forgotten-password link. It decides nothing itself: it
// raises OKClicked, CancelClicked and DoSignup to its owner, CLoginManager.
// Esc ends the program at once; the window closes no other way.
#include "skin/CSkinWindow.h"

class QLabel;
class QLineEdit;
class QTimer;

class frmLogin : public CSkinWindow {
    Q_OBJECT
public:
    frmLogin();

    // The controls the logic touches; made by Load.
    QLineEdit* txtMobileNumber = nullptr;
    QLineEdit* txtPassword = nullptr;
    CPictureButton* imgSignIn = nullptr;
    CPictureButton* imgCancel = nullptr;
    QLabel* lblSignUp1 = nullptr;
    QLabel* lblSignUp2 = nullptr;
    QLabel* lblURL = nullptr;
    QLabel* imgTalkingToServer = nullptr;
    QTimer* Timer1 = nullptr;

signals:
    void OKClicked();
    void CancelClicked();
    void DoSignup();

protected:
    void Form_Load() override;
    void Form_KeyDown(int key) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Timer1_Timer();
    void lblURL_Click();
};
