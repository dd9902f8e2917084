#pragma once
// What every start of the program sets up first (Sub Main lives in the shell).
#include <QString>

// Program title, library path, cache folder, and the sweep of the scratch
// recordings. Safe to repeat: the main window's load and the send run it again.
void InitApplication();

// The one line of an empty library.
inline const QString kEmptyLibrary = QStringLiteral("<?xml version=\"1.0\" ?><Quillotone></Quillotone>");
