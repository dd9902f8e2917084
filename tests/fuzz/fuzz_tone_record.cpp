// The tone record, as the service reads it from an upload's "xmldata=".
#include "FuzzKit.h"
#include "ToneTransfer.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    ReadToneRecord(std::string(reinterpret_cast<const char*>(data), size));
    return 0;
}
