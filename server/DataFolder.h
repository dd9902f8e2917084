#pragma once
// The data folder belongs to the service's user alone: the database, the
// tones and the key are readable by nobody else.
#include <string>

class Store;

// Before anything is stored: makes the folder, and its tone folder, private;
// what the service creates from now on is private too.
void MakeDataFolderPrivate(const std::string& folder);

// At start: removes tones half written when the service last stopped and
// tones with no record (written, but never acknowledged).
void TidyTones(const std::string& toneFolder, Store& store);
