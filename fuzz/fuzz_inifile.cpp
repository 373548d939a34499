// The INI parser on arbitrary file contents, in both parsing modes, followed
// by the lookups a caller can make on what it found.

#include "IniFuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::string path = fuzz::privateFolder() + "/input.ini";
    fuzz::writeFile(path, data, size);
    fuzz::parseInBothModes(path);
    return 0;
}
