#pragma once
// The body of the upload to "SendT2.asp" and the reading of its reply.
#include "wire/ToneUpload.h"

#include <QString>

inline constexpr qsizetype kToneDataChars = static_cast<qsizetype>(wire::kToneFieldChars);

// "tonedata1=...&tonedata2=..." with no "&" behind the last; an empty tone
// gives one empty "tonedata1=".
QString ToneDataFields(const QString& hex);

// The account, the record and the tone, joined by "&".
QString BuildUploadBody(const QString& recordXml, const QString& toneHex);

// True when the upload loop is left: a third field that begins with "http", or
// fewer than three fields at all (an empty reply of a failed request included).
bool UploadReplyEndsLoop(const QString& reply);
