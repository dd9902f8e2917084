// The reply of the upload to "SendT2.asp", which decides whether the upload loop ends.
#include "FuzzKit.h"
#include "delivery/ToneUpload.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    UploadReplyEndsLoop(TextOf(data, size));
    return 0;
}
