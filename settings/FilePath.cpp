#include "FilePath.h"

#include "CrossPlatformApi.h"
#include "StringFunctions.h"

#include <algorithm>
#include <climits>

#include <sys/stat.h>
#include <unistd.h>

namespace {

std::string withSlashes(std::string path)
{
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

std::string withoutTrailingSlashes(std::string path)
{
    while (!path.empty() && path.back() == '/')
        path.pop_back();
    return path;
}

std::string native(const std::string& path)
{
    return CrossPlatformApi::fileSystemEncoding(path);
}

// Split results are cut to their buffer instead of raising an error.
void assignCut(ValidatedBuffer& buffer, const std::string& text)
{
    buffer = text.substr(0, buffer.getSize() - 1).c_str();
}

// A folder itself, not a link to one: removing a tree never follows links.
bool isRealDirectory(const std::string& path)
{
    struct stat info;
    return ::lstat(native(path).c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

} // namespace

FilePath::FilePath() = default;

FilePath::FilePath(const char* path)
    : m_path(withSlashes(path ? path : ""))
{
}

FilePath::FilePath(const std::string& path)
    : m_path(withSlashes(path))
{
}

FilePath::FilePath(const FilePath& other)
    : m_path(other.m_path)
{
}

FilePath& FilePath::operator=(const char* path)
{
    m_path = withSlashes(path ? path : "");
    return *this;
}

FilePath& FilePath::operator=(const std::string& path)
{
    m_path = withSlashes(path);
    return *this;
}

FilePath& FilePath::operator=(const FilePath& other)
{
    m_path = other.m_path;
    return *this;
}

FilePath::~FilePath() = default;

std::string FilePath::asString() const
{
    return m_path;
}

std::string FilePath::normalizedString() const
{
    return m_path;
}

std::string FilePath::getShortPath() const
{
    return m_path;
}

const char* FilePath::c_str() const
{
    return m_path.c_str();
}

bool FilePath::empty() const
{
    return m_path.empty();
}

bool FilePath::isAbsolute() const
{
    return !m_path.empty() && m_path.front() == '/';
}

bool FilePath::isUNC() const
{
    return false;
}

std::string FilePath::getDisplayString(unsigned int maxLen) const
{
    if (m_path.size() <= maxLen)
        return m_path;
    std::string start;
    if (const char drive = getDrive()) {
        start += drive;
        start += ":/";
    }
    start += "...";
    const std::size_t keep = maxLen > start.size() ? maxLen - start.size() : 0;
    return start + m_path.substr(m_path.size() - keep);
}

bool FilePath::operator==(const FilePath& other) const
{
    return StringFunctions::compareNoCase(m_path, other.m_path) == 0;
}

char FilePath::getDrive() const
{
    splitPath();
    return m_drive[0];
}

std::string FilePath::getDirectory() const
{
    splitPath();
    return std::string(m_directory);
}

std::string FilePath::getPath() const
{
    splitPath();
    return std::string(m_drive) + std::string(m_directory);
}

std::string FilePath::getPrefix() const
{
    splitPath();
    return std::string(m_prefix);
}

std::string FilePath::getSuffix() const
{
    splitPath();
    const std::string suffix(m_suffix);
    return !suffix.empty() && suffix.front() == '.' ? suffix.substr(1) : suffix;
}

std::string FilePath::getName() const
{
    splitPath();
    return std::string(m_prefix) + std::string(m_suffix);
}

FilePath FilePath::getParentPath() const
{
    const std::string folder = withoutTrailingSlashes(getPath());
    const std::size_t slash = folder.rfind('/');
    if (slash != std::string::npos && slash > 3)
        return FilePath(folder.substr(0, slash + 1));
    return FilePath();
}

void FilePath::setDrive(char drive)
{
    splitPath();
    const char text[2] = {drive, 0};
    m_drive = text;
    buildPath();
}

void FilePath::setDirectory(const char* directory)
{
    splitPath();
    m_directory = directory ? directory : "";
    buildPath();
}

void FilePath::setPrefix(const char* prefix)
{
    splitPath();
    m_prefix = prefix ? prefix : "";
    buildPath();
}

void FilePath::setPrefix(const std::string& prefix)
{
    setPrefix(prefix.c_str());
}

void FilePath::setSuffix(const char* suffix)
{
    splitPath();
    m_suffix = suffix ? suffix : "";
    buildPath();
}

void FilePath::setName(const char* name)
{
    if (!name)
        return;
    splitPath();
    const std::string text(name);
    const std::size_t dot = text.rfind('.');
    m_prefix = text.substr(0, dot).c_str();
    m_suffix = dot == std::string::npos ? "" : text.substr(dot + 1).c_str();
    buildPath();
}

void FilePath::addPath(const char* path)
{
    if (!path)
        return;
    splitPath();
    const std::string sub(path[0] == '/' ? path + 1 : path);
    m_directory = (std::string(m_directory) + sub).c_str();
    buildPath();
}

bool FilePath::exists() const
{
    if (m_path.empty())
        return false;
    std::string path = m_path;
    if (path.back() == '/' || path.back() == '\\')
        path.pop_back();
    return ::access(native(path).c_str(), F_OK) == 0;
}

bool FilePath::isDirectory() const
{
    const std::string path = withoutTrailingSlashes(m_path);
    if (path.find('*') != std::string::npos)
        return false;
    // A look at the entry, not an open: the file is not touched, and a named
    // pipe at the path cannot stall the question.
    struct stat info;
    return ::stat(native(path).c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool FilePath::makeDir() const
{
    const std::string folder = withoutTrailingSlashes(getPath());
    if (folder.size() <= 2 || FilePath(folder).isDirectory())
        return true;
    if (!getParentPath().makeDir())
        return false;
    // The launcher's folders hold settings and tax data: private to the user.
    return ::mkdir(native(folder).c_str(), 0700) == 0;
}

bool FilePath::makeRelativeTo(const FilePath& base)
{
    if (isAbsolute()) {
        if (const char drive = base.getDrive())
            setDrive(drive);
    } else {
        m_path = base.getPath() + m_path;
    }
    return true;
}

FilePath FilePath::getUnique() const
{
    if (!exists())
        return *this;
    const std::string prefix = getPrefix();
    FilePath candidate(*this);
    for (int n = 1; n <= 31999; ++n) {
        candidate.setPrefix(prefix + '_' + StringFunctions::intToString(n));
        if (!candidate.exists())
            return candidate;
    }
    return FilePath();
}

bool FilePath::makeUniqueDir(const char* prefix, std::string& name)
{
    name = std::string(prefix ? prefix : "") + CrossPlatformApi::getUUID();
    const FilePath folder(getPath() + name + '/');
    if (!folder.makeDir())
        return false;
    *this = folder;
    return true;
}

bool FilePath::deleteTree() const
{
    const std::string folder = getPath();
    if (folder.size() <= 3)
        return false;
    for (const std::string& entry : CrossPlatformApi::getDirectoryEntries(folder, "*.*")) {
        const std::string path = folder + entry;
        if (isRealDirectory(path))
            FilePath(path + '/').deleteTree();
        else
            CrossPlatformApi::deleteFile(path);
    }
    return CrossPlatformApi::deleteDirectory(folder);
}

void FilePath::getCWD()
{
    char buffer[PATH_MAX];
    if (!::getcwd(buffer, sizeof buffer))
        return;
    std::string folder = CrossPlatformApi::fromFileSystemEncoding(buffer);
    if (folder.back() != '/')
        folder += '/';
    *this = folder;
}

bool FilePath::setCWD() const
{
    return ::chdir(native(getPath()).c_str()) == 0;
}

void FilePath::splitPath() const
{
    CrossPlatformApi::splitpath_s(m_path.c_str(), m_drive.get(), m_drive.getSize(), m_directory.get(),
                                  m_directory.getSize(), m_prefix.get(), m_prefix.getSize(),
                                  m_suffix.get(), m_suffix.getSize());
    if (isDirectory()) {
        assignCut(m_directory, std::string(m_directory) + std::string(m_prefix) + std::string(m_suffix));
        m_prefix = "";
        m_suffix = "";
    }
    const std::string directory(m_directory);
    if (!directory.empty() && directory.back() != '/')
        assignCut(m_directory, directory + '/');
}

void FilePath::buildPath()
{
    std::string drive(m_drive);
    if (!drive.empty() && (drive.size() < 2 || drive[1] != ':'))
        drive += ':';
    std::string directory(m_directory);
    if (!directory.empty() && directory.back() != '/')
        directory += '/';
    const std::string prefix(m_prefix);
    const std::string suffix(m_suffix);
    m_path = drive + directory + prefix;
    if (!prefix.empty() && !suffix.empty() && suffix.front() != '.')
        m_path += '.';
    m_path += suffix;
}
