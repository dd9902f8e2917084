// The library file "MyMusic.xml" as My Music and the search read it.
#include "FuzzKit.h"
#include "library/LibraryFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    ReadLibrary(ScratchFile(data, size, QStringLiteral("MyMusic.xml")));
    return 0;
}
