#pragma once
// What the user reads about the tone: its length, its estimated size and the
// play position. The main window and the zoom editor show the same captions
// from the same rules.
#include <QString>
#include <cstdint>

// Label forms that differ on purpose: keep each as it is.
inline const QString kSongLengthEmpty = QStringLiteral("00m 00s");
inline const QString kToneLengthCleared = QStringLiteral("0s");
inline const QString kToneLengthReset = QStringLiteral("0m 0s");
inline const QString kToneSizeCleared = QStringLiteral("0 Kb");
inline const QString kToneSizeReset = QStringLiteral("0Kb");
inline const QString kPositionEmpty = QStringLiteral("00m 00s");

// Seconds held as a 32-bit float, as the measures are computed.
float MillisecondsToSeconds(int32_t milliseconds);

// "Xm Ys", unpadded: the song and the tone length.
QString LengthCaption(float seconds);
// "~NKb": 1600 bytes for each second of tone, in units of 1024.
QString ToneSizeCaption(float seconds);
// "MMm SSs": the play position, seconds counted from the trimmed part's start.
QString PositionCaption(int32_t positionSeconds, float trimOffset);
