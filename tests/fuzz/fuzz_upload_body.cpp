// The body of a tone upload to "SendT2.asp", read as it arrives.
#include "FuzzKit.h"
#include "ServiceGround.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string body(reinterpret_cast<const char*>(data), size);
    const std::string reply = Serve("POST /SendT2.asp HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: "
                                    "application/x-www-form-urlencoded\r\nContent-Length: " +
                                    std::to_string(size) + "\r\n\r\n" + body);
    // The program reads every answer of the upload from its fields: a status
    // line of 200 always, whatever the body held.
    if (reply.rfind("HTTP/1.1 200 ", 0) != 0)
        std::abort();
    return 0;
}
