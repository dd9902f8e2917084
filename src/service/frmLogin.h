#pragma once
// The login window: number, password, sign in, cancel, the two sign-up
// labels and the forgotten-password link. It decides nothing itself: it
// raises OKClicked, CancelClicked and DoSignup to its owner, CLoginManager.
// Esc ends the program at once; the window closes no other way.
#include <QDialog>
#include <QString>

class QLabel;
class QLineEdit;
class QPushButton;
class QTimer;

class frmLogin : public QDialog {
    Q_OBJECT
public:
    explicit frmLogin(QWidget* parent = nullptr);

    QLineEdit* txtMobileNumber;
    QLineEdit* txtPassword;
    QPushButton* imgSignIn;
    QPushButton* imgCancel;
    QLabel* lblSignUp1;
    QLabel* lblSignUp2;
    QLabel* lblURL;
    QLabel* imgTalkingToServer;
    QTimer* Timer1;

    // Shows the window modally; returns once it is hidden.
    void Show();

signals:
    void OKClicked();
    void CancelClicked();
    void DoSignup();

public slots:
    void reject() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void Timer1_Timer();
    void lblURL_Click();
    // Runs one event of the window; a test's end of the program closes it.
    template <class Handler>
    void Run(Handler&& handler);
};
