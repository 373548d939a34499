#include "IniParseCache.h"

#include <ctime>

namespace {

// Installed configuration files are a few kilobytes; larger files are parsed
// on every read rather than held twice in memory.
constexpr off_t MaxCachedFileSize = 256 * 1024;
constexpr std::size_t MaxEntries = 32;
// Time stamps advance in steps of a few milliseconds: a file changed less
// than this long ago may still change without a visible trace.
constexpr time_t SettledSeconds = 2;

} // namespace

struct IniParseCache::Entry
{
    dev_t device;
    ino_t inode;
    off_t size;
    timespec modified;
    timespec changed;
    IniParseCache::Variant variant;
    cIniFile::SectionMap sections;

    bool describes(const struct stat& info, IniParseCache::Variant wanted) const
    {
        return device == info.st_dev && inode == info.st_ino && size == info.st_size
               && modified.tv_sec == info.st_mtim.tv_sec && modified.tv_nsec == info.st_mtim.tv_nsec
               && changed.tv_sec == info.st_ctim.tv_sec && changed.tv_nsec == info.st_ctim.tv_nsec
               && variant.caseSensitive == wanted.caseSensitive
               && variant.semicolonIsText == wanted.semicolonIsText;
    }
};

IniParseCache& IniParseCache::instance()
{
    static IniParseCache cache;
    return cache;
}

bool IniParseCache::lookup(const struct stat& info, Variant variant, cIniFile::SectionMap& sections) const
{
    if (!S_ISREG(info.st_mode))
        return false;
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const Entry& entry : m_entries) {
        if (entry.describes(info, variant)) {
            sections = entry.sections;
            return true;
        }
    }
    return false;
}

void IniParseCache::store(const struct stat& info, Variant variant, const cIniFile::SectionMap& sections)
{
    if (!S_ISREG(info.st_mode) || info.st_size > MaxCachedFileSize
        || info.st_mtim.tv_sec > std::time(nullptr) - SettledSeconds
        || info.st_ctim.tv_sec > std::time(nullptr) - SettledSeconds)
        return;
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (Entry& entry : m_entries) {
        if (entry.device == info.st_dev && entry.inode == info.st_ino
            && entry.variant.caseSensitive == variant.caseSensitive
            && entry.variant.semicolonIsText == variant.semicolonIsText) {
            entry = Entry{info.st_dev, info.st_ino, info.st_size, info.st_mtim, info.st_ctim, variant, sections};
            return;
        }
    }
    if (m_entries.size() == MaxEntries)
        m_entries.pop_front();
    m_entries.push_back(Entry{info.st_dev, info.st_ino, info.st_size, info.st_mtim, info.st_ctim, variant, sections});
}

void IniParseCache::clear()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_entries.clear();
}
