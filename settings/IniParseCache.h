#pragma once

#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <sys/stat.h>

// The key lines of the INI files read during this process, so that a file
// which several parts of the program open (the main configuration file is
// read by the folder table, the settings and the basic services alike) is
// read and scanned once. The lines are kept as read, before names are folded
// to lower case, so that readers with and without case folding share them.
// An entry is used only while the file on disk is exactly the one that was
// read: same file, size and change times.
//
// Only small files whose last change lies a moment back are kept. A file
// being written right now could change again within the resolution of its
// time stamps without its size changing, and its next read must see that.
class IniParseCache
{
public:
    // One key line: its section, the text before the first "=" and the text after it.
    struct KeyLine
    {
        std::string section;
        std::string key;
        std::string value;
    };
    using KeyLines = std::vector<KeyLine>;

    static IniParseCache& instance();

    // Whether the lines of the file that info describes are worth keeping.
    static bool worthKeeping(const struct stat& info);
    // The lines read from exactly the file that info describes, with
    // comments cut as semicolonIsText says; null when there are none.
    std::shared_ptr<const KeyLines> lookup(const struct stat& info, bool semicolonIsText) const;
    // Keeps the lines read from the file that info described before the read.
    void store(const struct stat& info, bool semicolonIsText, KeyLines lines);

private:
    struct Entry;

    // The settings are read on the main thread, the update check's files on
    // its worker thread: the entries are shared.
    mutable std::mutex m_mutex;
    std::deque<Entry> m_entries;
};
