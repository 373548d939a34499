// These basic services read INI files through cIniFile, so that the program has one INI parser.
#include "CrossPlatformApi.h"

#include "IniFile.h"
#include "StringFunctions.h"

std::vector<std::string> CrossPlatformApi::getIniSections(const std::string& path)
{
    return cIniFile(path, false, false).GetSections();
}

std::vector<std::string> CrossPlatformApi::getIniSectionEntries(const std::string& section,
                                                                const std::string& path)
{
    const cIniFile ini(path, false, false);
    std::string name = section;
    StringFunctions::toLower(name);
    std::vector<std::string> entries;
    if (const cIniFile::KeyMap* keys = ini.FindSection(name)) {
        entries.reserve(keys->size());
        for (const auto& [key, value] : *keys)
            entries.push_back(std::string(key).append(1, '=').append(value));
    }
    return entries;
}

std::string CrossPlatformApi::getIniString(const std::string& section, const std::string& key,
                                           const std::string& defaultValue, const std::string& path)
{
    return cIniFile(path, false, false).GetString(section.c_str(), key.c_str(), defaultValue.c_str());
}
