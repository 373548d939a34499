// The INI parser on files of several megabytes: an input whose first byte
// is n stands for the rest of it repeated to (n % 4 + 1) MiB. Such a file
// takes a thousand times as long as a small one, so it has a target of its
// own instead of crowding out the small files of the INI target.

#include "IniFuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::string path = fuzz::privateFolder() + "/input.ini";
    if (size < 2)
        return 0;
    const std::size_t wanted = (std::size_t(data[0] % 4) + 1) << 20;
    std::string content;
    content.reserve(wanted + size);
    while (content.size() < wanted)
        content.append(reinterpret_cast<const char*>(data) + 1, size - 1);
    fuzz::writeFile(path, reinterpret_cast<const std::uint8_t*>(content.data()), content.size());
    fuzz::parseInBothModes(path);
    return 0;
}
