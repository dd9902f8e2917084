#pragma once
// The data folder belongs to the service's user alone: the database, the
// tones and the key are readable by nobody else.
#include <string>

class Store;

// Before anything is stored: makes the tone folder private, and what the
// service creates from now on (the certificate is made readable on purpose).
void MakeDataFolderPrivate(const std::string& folder);

// At start: removes tones half written when the service last stopped and
// tones with no record (written, but never acknowledged).
void TidyTones(const std::string& toneFolder, Store& store);
