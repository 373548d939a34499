#include "IniParseCache.h"

#include <ctime>

namespace {

// Installed configuration files are a few kilobytes; larger files are read
// on every open rather than held twice in memory.
constexpr off_t MaxCachedFileSize = 256 * 1024;
constexpr std::size_t MaxEntries = 32;
// Time stamps advance in steps of a few milliseconds: a file changed less
// than this long ago may still change without a visible trace.
constexpr time_t SettledSeconds = 2;

bool sameTime(const timespec& a, const timespec& b)
{
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

} // namespace

struct IniParseCache::Entry
{
    dev_t device;
    ino_t inode;
    off_t size;
    timespec modified;
    timespec changed;
    bool semicolonIsText;
    std::shared_ptr<const KeyLines> lines;

    bool sameFile(const struct stat& info, bool wantedSemicolonIsText) const
    {
        return device == info.st_dev && inode == info.st_ino && semicolonIsText == wantedSemicolonIsText;
    }
    bool describes(const struct stat& info, bool wantedSemicolonIsText) const
    {
        return sameFile(info, wantedSemicolonIsText) && size == info.st_size
               && sameTime(modified, info.st_mtim) && sameTime(changed, info.st_ctim);
    }
};

IniParseCache& IniParseCache::instance()
{
    static IniParseCache cache;
    return cache;
}

bool IniParseCache::worthKeeping(const struct stat& info)
{
    const time_t settled = std::time(nullptr) - SettledSeconds;
    return S_ISREG(info.st_mode) && info.st_size <= MaxCachedFileSize && info.st_mtim.tv_sec < settled
           && info.st_ctim.tv_sec < settled;
}

std::shared_ptr<const IniParseCache::KeyLines> IniParseCache::lookup(const struct stat& info,
                                                                     bool semicolonIsText) const
{
    if (!S_ISREG(info.st_mode))
        return nullptr;
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const Entry& entry : m_entries) {
        if (entry.describes(info, semicolonIsText))
            return entry.lines;
    }
    return nullptr;
}

void IniParseCache::store(const struct stat& info, bool semicolonIsText, KeyLines lines)
{
    if (!worthKeeping(info))
        return;
    Entry stored{info.st_dev, info.st_ino, info.st_size, info.st_mtim, info.st_ctim, semicolonIsText,
                 std::make_shared<const KeyLines>(std::move(lines))};
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (Entry& entry : m_entries) {
        if (entry.sameFile(info, semicolonIsText)) {
            entry = std::move(stored);
            return;
        }
    }
    if (m_entries.size() == MaxEntries)
        m_entries.pop_front();
    m_entries.push_back(std::move(stored));
}
