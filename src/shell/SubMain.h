#pragma once
// The program's spine: Sub Main decides which window the user meets. The
// shell is the one part of the program that knows every window; everything
// below it reports up by return value, Tag or signal, which the shell wires.
#include "service/PendingSignUp.h"

#include <QString>
#include <functional>

// What a login leaves behind: CLoginManager's LoggedIn and DoSignup.
struct LoginResult {
    bool LoggedIn = false;
    bool DoSignup = false;
};


// The windows that Sub Main and the intro lead to, one road each, so that
// tests can stand in for them. The login is the real CLoginManager over the
// main window, the music search frmSearching4Music, the sign-up and its
// pending confirmation the real sign-up road.
struct StartRoads {
    // Logs in with the number shown first; blocks until the login window has gone.
    std::function<LoginResult(const QString& text)> login;
    // The confirmation of a sign-up that waits for its SMS code ("t1nuc" set).
    // Empty: the stored values cannot be checked, as if they failed.
    std::function<PendingSignUpOutcome()> confirmPendingSignUp;
    // Shows frmCheckPhoneEnabled without blocking. Empty: the intro's sign-up does nothing.
    std::function<void()> showPhoneCheck;
    // Shows frmSearching4Music modally; the search writes the library.
    std::function<void()> searchForMusic;
};

StartRoads& startRoads();
StartRoads DefaultStartRoads();

// Drops the sign-up windows (the end of a run, or of a test).
void DropSignUpRoad();

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
