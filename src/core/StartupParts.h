#pragma once
// What the start-up and the intro need from windows and classes of other
// subsystems. Each subsystem registers its part once, before Sub Main runs
// (see src/app/main.cpp); the main window itself comes through
// seams().mainWindow. A part that is not registered is a part this build of
// the program does not have, and each place that calls one says what then
// happens.
#include <QString>
#include <functional>

// What a login leaves behind: CLoginManager's LoggedIn and DoSignup.
struct LoginResult {
    bool LoggedIn = false;
    bool DoSignup = false;
};

// How the confirmation of a pending sign-up ends.
enum class PendingSignUp {
    Confirmed,     // go on to the main window
    GivenUp,       // the program ends
    ValuesFailed,  // Sub Main returns with no window open
};

struct StartupParts {
    // Makes a CLoginManager, calls Login with the text and blocks until the
    // login window has gone. Absent: nobody can log in.
    std::function<LoginResult(const QString& text)> login;
    // The confirmation of a sign-up that waits for its SMS code ("t1nuc" set).
    // Absent: the stored values cannot be checked, as if they failed.
    std::function<PendingSignUp()> confirmPendingSignUp;
    // Shows frmCheckPhoneEnabled without blocking. Absent: the intro's sign-up
    // button does nothing.
    std::function<void()> showPhoneCheck;
    // Shows frmSearching4Music modally and unloads it; the search writes the
    // library. Absent: the library is written empty, as on a decline.
    std::function<void()> searchForMusic;
};

StartupParts& startupParts();
