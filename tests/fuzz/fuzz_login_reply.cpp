// The reply of "Login.asp?" into the session values.
#include "FuzzKit.h"
#include "core/globals.h"
#include "service/CLoginManager.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static CLoginManager manager;
    manager.ReadLoginReply(TextOf(data, size));
    // The send pipeline picks its format by this value: a reply never leaves it empty.
    if (gstrPreferredFormat.isEmpty())
        std::abort();
    return 0;
}
