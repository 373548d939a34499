// The INI parser on arbitrary file contents, in both parsing modes, followed
// by every lookup a caller can make on what it found.

#include "FuzzSupport.h"
#include "IniFile.h"

namespace {

void readEverything(cIniFile& ini)
{
    for (const std::string& section : ini.GetSections()) {
        const cIniFile::KeyMap* keys = ini.FindSection(section);
        FUZZ_CHECK(keys != nullptr);
        for (const auto& [key, value] : *keys) {
            FUZZ_CHECK(ini.Contains(section.c_str(), key.c_str()) == (!section.empty() && !key.empty()));
            FUZZ_CHECK(ini.GetString(section.c_str(), key.c_str(), "") == value);
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::string path = fuzz::privateFolder() + "/input.ini";
    fuzz::writeFile(path, data, size);
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
