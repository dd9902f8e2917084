#include "core/globals.h"

QString gstrCustomerID;
QString gstrMobileNumber;
QString gstrPassword;
QString gstrPreferredFormat;
int16_t gintFreeQuills = 0;
QString gstrChargeText;

bool gbUseTunnel = false;
bool gbSignUpActive = false;
bool gbSearchRunning = false;
QString gstrMyMusicPath;
QString gstrMachineKey;
QStringList gstrProviders;

void ResetGlobals()
{
    gstrCustomerID.clear();
    gstrMobileNumber.clear();
    gstrPassword.clear();
    gstrPreferredFormat.clear();
    gintFreeQuills = 0;
    gstrChargeText.clear();
    gbUseTunnel = false;
    gbSignUpActive = false;
    gbSearchRunning = false;
    gstrMyMusicPath.clear();
    gstrMachineKey.clear();
    gstrProviders.clear();
}
