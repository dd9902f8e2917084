// Whatever a client sends: the service's transport and the page its path names.
#include "FuzzKit.h"
#include "ServiceGround.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Serve(std::string(reinterpret_cast<const char*>(data), size));
    return 0;
}
