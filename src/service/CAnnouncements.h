#pragma once
// The messages the service leaves for a customer, shown one at a time at
// each login until the service has nothing more to say.
class CAnnouncements {
public:
    void CheckForAnnouncements();
};
