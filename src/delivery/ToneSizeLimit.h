#pragma once
// The size limit "MaxToneSize": the words a user may choose, the bytes each
// allows, and the check of a converted tone against it.
#include <QList>
#include <QString>
#include <cstdint>
#include <optional>

struct ToneSizeWord {
    QString words;                 // as stored and as listed: "50 KB" ... "Unlimited"
    std::optional<int64_t> bytes;  // none for "Unlimited"
};

// In the order the settings window lists them.
const QList<ToneSizeWord>& ToneSizeWords();

// The limit in bytes for a "MaxToneSize" value; none for "Unlimited".
std::optional<int64_t> MaxToneSizeLimit(const QString& setting);

// True when the send may go on: the tone at path is within the limit, or the
// user agreed in frmToneTooBig to send it anyway.
void CheckToneSize(const QString& path, bool& result);
