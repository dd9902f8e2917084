#pragma once
// The program's spine: Sub Main decides which window the user meets. The
// shell is the one part of the program that knows every window; everything
// below it reports up by return value, Tag or signal, which the shell wires.
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

// The windows that Sub Main and the intro lead to, one road each, so that
// tests can stand in for them. The login is the real CLoginManager over the
// main window. The other three have no window in this version yet: they are
// empty, and each place that takes one says what happens without it.
struct StartRoads {
    // Logs in with the number shown first; blocks until the login window has gone.
    std::function<LoginResult(const QString& text)> login;
    // The confirmation of a sign-up that waits for its SMS code ("t1nuc" set).
    // Empty: the stored values cannot be checked, as if they failed.
    std::function<PendingSignUp()> confirmPendingSignUp;
    // Shows frmCheckPhoneEnabled without blocking. Empty: the intro says sign-up is not there yet.
    std::function<void()> showPhoneCheck;
    // Shows frmSearching4Music modally; the search writes the library.
    // Empty: the library is written empty, as on a decline.
    std::function<void()> searchForMusic;
};

StartRoads& startRoads();
StartRoads DefaultStartRoads();

// Makes frmMain the program's main window (MainWindow()), loaded on first
// use, with its close, sign-out and minimise wired to the ways of ending.
void UseMainForm();

// The entry point, run once on the event loop. Returns when the user's
// windows are up (or were never to come); ends the program itself on the
// roads that end it.
void SubMain();

// True when another copy of the program runs for this user: the lock in the
// user's runtime folder is held by a live process. The first call that finds
// it free takes it for the rest of the run.
bool AnotherInstanceRuns();

// Asks for the music library when there is none.
void EnsureMusicLibrary();
