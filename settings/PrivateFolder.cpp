#include "PrivateFolder.h"

#include <cerrno>
#include <cstdlib>

#include <sys/stat.h>
#include <unistd.h>

namespace PrivateFolder {

namespace {

constexpr const char* FallbackName = "startcenter";

// A parent folder another user cannot change: owned by this user (or by
// root, as the system's own folders are) and not writable by group or others.
bool isClosedParent(const std::string& nativePath)
{
    struct stat info;
    return ::stat(nativePath.c_str(), &info) == 0 && S_ISDIR(info.st_mode)
           && (info.st_uid == ::geteuid() || info.st_uid == 0) && (info.st_mode & 022) == 0;
}

std::string environment(const char* name)
{
    const char* value = std::getenv(name);
    return value && *value == '/' ? std::string(value) : std::string();
}

// The fallback below parent, made and checked; empty when it cannot be had.
std::string fallbackBelow(const std::string& parent, bool makeParent)
{
    if (parent.empty())
        return {};
    if (makeParent && ::mkdir(parent.c_str(), 0700) != 0 && errno != EEXIST)
        return {};
    if (!isClosedParent(parent))
        return {};
    const std::string folder = parent + '/' + FallbackName;
    return ensure(folder) ? folder + '/' : std::string();
}

} // namespace

bool ensure(const std::string& nativePath)
{
    if (::mkdir(nativePath.c_str(), 0700) != 0 && errno != EEXIST)
        return false;
    struct stat info;
    if (::lstat(nativePath.c_str(), &info) != 0 || !S_ISDIR(info.st_mode) || info.st_uid != ::geteuid())
        return false;
    if ((info.st_mode & 07777) != 0700 && ::chmod(nativePath.c_str(), 0700) != 0)
        return false;
    return isPrivate(nativePath);
}

bool isPrivate(const std::string& nativePath)
{
    struct stat info;
    return ::lstat(nativePath.c_str(), &info) == 0 && S_ISDIR(info.st_mode) && info.st_uid == ::geteuid()
           && (info.st_mode & 07777) == 0700;
}

std::string settingsFallback()
{
    std::string cache = environment("XDG_CACHE_HOME");
    if (cache.empty() && !environment("HOME").empty())
        cache = environment("HOME") + "/.cache";
    const std::string folder = fallbackBelow(cache, true);
    return folder.empty() ? fallbackBelow(environment("XDG_RUNTIME_DIR"), false) : folder;
}

} // namespace PrivateFolder
