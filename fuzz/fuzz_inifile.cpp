// The INI parser on arbitrary file contents, in both parsing modes, followed
// by the lookups a caller can make on what it found. An input that starts
// with the bytes 0xFF 0xFF and a count n stands for the rest of it repeated
// to (n % 4 + 1) MiB, so that files of several megabytes are parsed too; the
// two marker bytes keep such inputs, which take a thousand times longer, to
// the few that descend from the seed that has them.

#include "FuzzSupport.h"
#include "IniFile.h"

namespace {

// Each lookup looks at the file's time on disk: a file of several
// megabytes has its first keys looked up, not all of them.
constexpr int MaxLookups = 2000;

void readEverything(cIniFile& ini)
{
    int lookups = 0;
    for (const std::string& section : ini.GetSections()) {
        const cIniFile::KeyMap* keys = ini.FindSection(section);
        FUZZ_CHECK(keys != nullptr);
        for (const auto& [key, value] : *keys) {
            if (++lookups > MaxLookups)
                return;
            const std::string name(key);
            FUZZ_CHECK(ini.Contains(section.c_str(), name.c_str()) == (!section.empty() && !key.empty()));
            FUZZ_CHECK(ini.GetString(section.c_str(), name.c_str(), "") == value);
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::string path = fuzz::privateFolder() + "/input.ini";
    if (size > 3 && data[0] == 0xFF && data[1] == 0xFF) {
        const std::size_t wanted = (std::size_t(data[2] % 4) + 1) << 20;
        std::string content;
        content.reserve(wanted + size);
        while (content.size() < wanted)
            content.append(reinterpret_cast<const char*>(data) + 3, size - 3);
        fuzz::writeFile(path, reinterpret_cast<const std::uint8_t*>(content.data()), content.size());
    } else {
        fuzz::writeFile(path, data, size);
    }
    {
        cIniFile ini(path, false, false);
        readEverything(ini);
    }
    {
        cIniFile ini(path, true, true);
        readEverything(ini);
    }
    return 0;
}
