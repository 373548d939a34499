#pragma once

#include "IniFile.h"

#include <deque>
#include <mutex>

#include <sys/stat.h>

// The parsed contents of the INI files read during this process, so that a
// file which several parts of the program open (the main configuration file
// is read by the folder table, the settings and the basic services alike) is
// read and parsed once. An entry is used only while the file on disk is
// exactly the one that was parsed: same file, size and change times.
//
// Only small files whose last change lies a moment back are kept. A file
// being written right now could change again within the resolution of its
// time stamps without its size changing, and its next read must see that.
class IniParseCache
{
public:
    // How a file was parsed: the same bytes give different sections with
    // other case or comment rules.
    struct Variant
    {
        bool caseSensitive;
        bool semicolonIsText;
    };

    static IniParseCache& instance();

    // Copies the sections parsed from the file described by info into
    // sections; false when there is no entry for exactly that file.
    bool lookup(const struct stat& info, Variant variant, cIniFile::SectionMap& sections) const;
    // Keeps the sections parsed from the file that info described before the parse.
    void store(const struct stat& info, Variant variant, const cIniFile::SectionMap& sections);

    void clear();

private:
    struct Entry;

    // The settings are read on the main thread, the update check's files on
    // its worker thread: the entries are shared.
    mutable std::mutex m_mutex;
    std::deque<Entry> m_entries;
};
