#pragma once
// The sign-up road of a new user: the phone question (frmCheckPhoneEnabled),
// the phone details (frmSignup2) and the personal details (frmSignup1), which
// creates the customer, confirms the number and logs in. The manager owns
// the three windows for the run, so that each can reach the others; it
// reports how the road ends, and the program's start-up picks what follows.
#include <QObject>
#include <QString>
#include <functional>
#include <memory>

class frmCheckPhoneEnabled;
class frmSignup1;
class frmSignup2;

class CSignUpManager : public QObject {
    Q_OBJECT
public:
    // How the new customer's first login runs: it shows the login window with
    // the number, blocks until it has gone and says whether it logged in.
    using LogIn = std::function<bool(const QString& DefaultNumber)>;
    explicit CSignUpManager(LogIn logIn);
    ~CSignUpManager() override;

    // The intro's sign-up: shows frmCheckPhoneEnabled without blocking. The
    // intro itself, where a wish to sign up begins, is the start-up's window.
    void ShowPhoneCheck();

    frmCheckPhoneEnabled& PhoneCheck();
    frmSignup2& PhoneDetails();
    frmSignup1& PersonalDetails();

    // The phone details went forward: a fresh frmSignup1, filled from the settings.
    void ShowPersonalDetails();
    // The first login of the new customer; true if it logged in.
    bool FirstLogin(const QString& DefaultNumber) { return mLogIn(DefaultNumber); }
    // The close mark of a sign-up window: asks, and ends the program unless the user stays.
    void LeaveIfConfirmed();

signals:
    // The new customer is confirmed and logged in: the main window is next.
    void SignedUp();

private:
    LogIn mLogIn;
    std::unique_ptr<frmCheckPhoneEnabled> mfrmCheckPhoneEnabled;
    std::unique_ptr<frmSignup2> mfrmSignup2;
    std::unique_ptr<frmSignup1> mfrmSignup1;
};
