// The list pages of sign-up: the make, model and country lists ("id,name,"
// pairs) and a country's networks (five fields a network).
#include "FuzzKit.h"
#include "core/CError.h"
#include "service/frmSignup2.h"

#include <QComboBox>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString reply = TextOf(data, size);
    QComboBox list;
    try {
        AddPairs(&list, reply, QStringLiteral("Australia"));
    } catch (const CError&) {
    }
    try {
        AddProviderGroups(&list, reply.split(QLatin1Char(',')));
    } catch (const CError&) {
    }
    return 0;
}
