#pragma once
// What every start of the program sets up first (Sub Main lives in the shell).
#include <QString>

// Program title, library path, cache folder, and the sweep of the scratch
// recordings. Safe to repeat: the main window's load and the send run it again.
// Throws CError when the cache folder cannot be made.
void InitApplication();

