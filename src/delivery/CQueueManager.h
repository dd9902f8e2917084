#pragma once
// The one-tone queue in section "ToneData" of the settings store: the pending
// tone is the value of "CurrentTone". A caller makes one, asks and drops it.
class CQueueManager {
public:
    // True when a tone is still pending: "CurrentTone" is not empty.
    bool IsDataFilePending() const;
};
