#pragma once
// The one-tone queue of the tunnel road: the tone's record in section
// "ToneData" of the settings store, for the outside helper named by
// "QuillAssistURL". On the direct road only the record's XML text is used.
#include <QString>

class CQueueManager {
public:
    CQueueManager();

    // Marks the pending tone for deletion; the helper acts on the mark.
    void DeleteQueuedTone();
    void IsDataFilePending(bool& Result) const;
    bool IsDataFilePending() const;
    // For a caller that has finished with a tone.
    void ClearToneData();
    // Builds the record and returns its XML text; stores it on the tunnel road.
    // A missing DataFileName raises "File not found" to the caller.
    QString SaveData(const QString& ContentType, const QString& DataFileName, const QString& MobileNumber,
                     const QString& MobileData);

private:
    QString mstrQueuePath;  // read when made, as the helper's setting; not used after
};
