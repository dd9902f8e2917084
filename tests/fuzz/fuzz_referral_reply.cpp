// The reply of "ReferFriends.asp?": the summary of its lines, or the number
// already signed up. ("LookupMobileNumber.asp?" is read by one comparison.)
#include "FuzzKit.h"
#include "service/frmFreeQuills.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString reply = TextOf(data, size);
    frmFreeQuills::ReferralSummary(reply);
    frmFreeQuills::AlreadySignedUpNumber(reply);
    return 0;
}
