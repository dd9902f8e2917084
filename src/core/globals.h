#pragma once
// The one shared block of session values, flags and paths. Login fills the
// session values; every other place only reads them.
#include <QString>
#include <QStringList>
#include <cstdint>

// Session values
extern QString gstrCustomerID;
extern QString gstrMobileNumber;
extern QString gstrPassword;  // enciphered with gstrMachineKey, never plain
extern QString gstrPreferredFormat;
extern int16_t gintFreeQuills;
extern QString gstrChargeText;

// Flags and paths
extern bool gbUseTunnel;
extern bool gbSignUpActive;
extern bool gbSearchRunning;
extern QString gstrMyMusicPath;
extern QString gstrMachineKey;
extern QStringList gstrProviders;

// Puts every value of the block back to its start-of-run state (tests).
void ResetGlobals();
