#pragma once
// FFmpeg's error codes as the system's errors.
#include "core/CError.h"

#include <QString>

QString AvErrorText(int code);
// Throws CError(number, what + ": " + FFmpeg's text) when code is negative.
int AvCheck(int code, const QString& what);
