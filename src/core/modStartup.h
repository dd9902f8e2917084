#pragma once
// The program's spine: Sub Main decides which window the user meets.
#include <QString>

// The entry point, run once on the event loop. Returns when the user's
// windows are up (or were never to come); ends the program itself on the
// roads that end it.
void SubMain();

// Program title, library path, cache folder, and the sweep of the scratch
// recordings. Safe to repeat: the main window's load runs it again.
void InitApplication();

// True when another copy of the program runs for this user: the lock in the
// user's runtime folder is held by a live process. The first call that finds
// it free takes it for the rest of the run.
bool AnotherInstanceRuns();

// Asks for the music library when there is none.
void EnsureMusicLibrary();

// The one line of an empty library.
inline const QString kEmptyLibrary = QStringLiteral("<?xml version=\"1.0\" ?><Quillotone></Quillotone>");
