#pragma once

// What the INI targets do with a file: parse it in both parsing modes and
// make the lookups a caller can make on what was found.

#include "FuzzSupport.h"
#include "IniFile.h"

#include <string>

namespace fuzz {

// Each lookup looks at the file's time on disk: a file of several
// megabytes has its first keys looked up, not all of them.
constexpr int MaxIniLookups = 2000;

inline void readEverything(cIniFile& ini)
{
    int lookups = 0;
    for (const std::string& section : ini.GetSections()) {
        const cIniFile::KeyMap* keys = ini.FindSection(section);
        FUZZ_CHECK(keys != nullptr);
        for (const auto& [key, value] : *keys) {
            if (++lookups > MaxIniLookups)
                return;
            const std::string name(key);
            FUZZ_CHECK(ini.Contains(section.c_str(), name.c_str()) == (!section.empty() && !key.empty()));
            FUZZ_CHECK(ini.GetString(section.c_str(), name.c_str(), "") == value);
        }
    }
}

// The two parsing modes the launcher uses: case-insensitive with ";"
// starting a comment, and case-sensitive with ";" as text.
inline void parseInMode(const std::string& path, bool strict)
{
    cIniFile ini(path, strict, strict);
    readEverything(ini);
}

inline void parseInBothModes(const std::string& path)
{
    parseInMode(path, false);
    parseInMode(path, true);
}

} // namespace fuzz
