#pragma once
// Login of one service account. Login() shows frmLogin modally and returns
// once the window is gone; then LoggedIn, DoSignup and Cancelled tell how it
// ended. A login fills the session values of the shared global block. What
// it means for the main window it says by signal; the caller connects them.
#include <QObject>
#include <QString>
#include <cstdint>
#include <memory>

class frmLogin;

class CLoginManager : public QObject {
    Q_OBJECT
public:
    CLoginManager();
    ~CLoginManager() override;

    void Login(const QString& DefaultNumber);

    bool LoggedIn() const { return mbLoggedIn; }
    bool DoSignup() const { return mbDoSignup; }
    bool Cancelled() const { return mbCancelled; }
    int16_t FailedAttempts() const { return mintFailedAttempts; }

    // The window while Login runs (tests drive it); empty otherwise.
    frmLogin* window() const { return mfrmLogin.get(); }

    // Takes a non-empty reply of "Login.asp?" into LoggedIn and the session
    // values; a field that is missing or does not convert leaves its value.
    void ReadLoginReply(const QString& reply);

signals:
    // The main window's backdrop behind the login window, of this size, centred.
    void BackdropWanted(int width, int height);
    // The backdrop goes; after a login it is also parked aside.
    void BackdropDone(bool parkAside);
    // The reply gave gintFreeQuills a new value.
    void FreeQuillsRead();
    // The user chose to sign up: the main window goes, the intro comes.
    void SignUpChosen();

private slots:
    void mfrmLogin_OKClicked();
    void mfrmLogin_CancelClicked();
    void mfrmLogin_DoSignup();

private:
    void NewWindow();

    std::unique_ptr<frmLogin> mfrmLogin;
    bool mbLoggedIn = false;
    bool mbDoSignup = false;
    bool mbCancelled = false;
    int16_t mintFailedAttempts = 0;
    QString mstrDefaultNumber;
};
