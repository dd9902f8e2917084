// Decrypt of a stored value (the password, the pending sign-up's code).
#include "FuzzKit.h"
#include "core/modEncryption.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Decrypt(TextOf(data, size), QStringLiteral("fuzz"));
    return 0;
}
