#pragma once
// The sign-up road of a new user: the phone question (frmCheckPhoneEnabled),
// the phone details (frmSignup2) and the personal details (frmSignup1), which
// creates the customer, confirms the number and logs in. The manager owns
// the three windows for the run, so that each can reach the others; it
// reports how the road ends, and the program's start-up picks what follows.
#include <QObject>
#include <memory>

class frmCheckPhoneEnabled;

// Makes the intro's sign-up and Sub Main's pending confirmation this road's.
void RegisterSignUp();
class frmSignup1;
class frmSignup2;

class CSignUpManager : public QObject {
    Q_OBJECT
public:
    CSignUpManager();
    ~CSignUpManager() override;

    // Shows frmCheckPhoneEnabled without blocking.
    void BeginSignUp();

    frmCheckPhoneEnabled& PhoneCheck();
    frmSignup2& PhoneDetails();
    frmSignup1& PersonalDetails();

    // The phone details went forward: a fresh frmSignup1, filled from the settings.
    void ShowPersonalDetails();

signals:
    // The new customer is confirmed and logged in: the main window is next.
    void SignedUp();

private:
    std::unique_ptr<frmCheckPhoneEnabled> mfrmCheckPhoneEnabled;
    std::unique_ptr<frmSignup2> mfrmSignup2;
    std::unique_ptr<frmSignup1> mfrmSignup1;
};
