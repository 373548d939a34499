#include "IniFile.h"

#include "CrossPlatformApi.h"
#include "Exceptions.h"
#include "File.h"
#include "IniParseCache.h"
#include "NvAssert.h"
#include "RegularFile.h"
#include "StringFunctions.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <sstream>

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

const char cszIniFileNotFound[] = "Inidatei \"%0\" nicht gefunden.";

namespace {

// Lines are read into a buffer of this size: a line of this length or more
// ends the parse, and the rest of the file is not read.
constexpr std::size_t LineBufferSize = 4096;
constexpr std::size_t ReadChunkSize = 64 * 1024;
// A file of nothing but blank lines has no long line to stop at: no real
// INI file comes near this size, and reading stops here.
constexpr std::size_t MaxReadBytes = 64 * 1024 * 1024;

std::string orEmpty(const char* text)
{
    return text ? std::string(text) : std::string();
}

// The white space skipped before every line, as the C locale's isspace.
bool isWhiteSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

std::string_view stripSpaces(std::string_view text)
{
    const auto first = text.find_first_not_of(' ');
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

// A value as stored: without the carriage returns of a CR LF line end and
// without surrounding blanks.
std::string_view valueText(std::string_view value)
{
    const auto lastNonReturn = value.find_last_not_of('\r');
    return stripSpaces(value.substr(0, lastNonReturn == std::string_view::npos ? 0 : lastNonReturn + 1));
}

bool writeAll(int fd, const std::string& content)
{
    const char* data = content.data();
    std::size_t left = content.size();
    while (left > 0) {
        const ssize_t n = ::write(fd, data, left);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        data += n;
        left -= std::size_t(n);
    }
    return true;
}

// The file a write replaces: the name itself, or, where the name is a
// symbolic link, the link's target, but only when the link and the target
// both belong to this user. Empty when the write must not go ahead: a link
// of someone else's, a target of someone else's, a dangling link, or a name
// that is no regular file (a FIFO, a device, a folder).
std::string writeTarget(const std::string& nativePath)
{
    const uid_t user = ::geteuid();
    struct stat info;
    if (::lstat(nativePath.c_str(), &info) != 0)
        return errno == ENOENT ? nativePath : std::string();
    if (!S_ISLNK(info.st_mode))
        return S_ISREG(info.st_mode) && info.st_uid == user ? nativePath : std::string();
    if (info.st_uid != user)
        return {};
    char resolved[PATH_MAX];
    if (!::realpath(nativePath.c_str(), resolved))
        return {};
    if (::lstat(resolved, &info) != 0 || !S_ISREG(info.st_mode) || info.st_uid != user)
        return {};
    return resolved;
}

// The temporary file of a write: "<target>.<pid>.<n>.tmp".
std::string temporaryPath(const std::string& target, pid_t pid, unsigned number)
{
    return target + '.' + std::to_string(pid) + '.' + std::to_string(number) + ".tmp";
}

// Removes the temporary files that writers killed before their rename left
// beside the target. Only files of processes that no longer exist go, so a
// write under way in another program of the suite is never disturbed.
void removeStaleTemporaries(const std::string& target)
{
    const std::string::size_type slash = target.rfind('/');
    const std::string folder = slash == std::string::npos ? std::string(".") : target.substr(0, slash + 1);
    const std::string prefix = target.substr(slash == std::string::npos ? 0 : slash + 1) + '.';
    DIR* directory = ::opendir(folder.c_str());
    if (!directory)
        return;
    while (const dirent* entry = ::readdir(directory)) {
        const std::string name = entry->d_name;
        unsigned long pid = 0;
        unsigned number = 0;
        if (name.compare(0, prefix.size(), prefix) != 0
            || std::sscanf(name.c_str() + prefix.size(), "%lu.%u", &pid, &number) != 2 || pid == 0
            || pid > INT_MAX)
            continue;
        // Exactly the name a write of that process would have used.
        const std::string path = slash == std::string::npos ? name : folder + name;
        struct stat info;
        if (path == temporaryPath(target, pid_t(pid), number) && ::kill(pid_t(pid), 0) == -1 && errno == ESRCH
            && ::lstat(path.c_str(), &info) == 0 && info.st_uid == ::geteuid())
            ::unlink(path.c_str());
    }
    ::closedir(directory);
}

// Writes the content to a new file beside the target and renames it over the
// target, so that a failed write (full disk, unwritable folder) leaves the old
// file as it was instead of truncated. The target keeps its permissions; a
// new file is private to the user, as settings may name the user's cases.
bool replaceFileContent(const std::string& path, const std::string& content)
{
    const std::string target = writeTarget(CrossPlatformApi::fileSystemEncoding(path));
    if (target.empty())
        return false;
    struct stat info;
    const bool existed = ::lstat(target.c_str(), &info) == 0;

    static std::atomic<unsigned> counter{0};
    std::string tempPath;
    int fd = -1;
    for (int attempt = 0; attempt < 100 && fd < 0; ++attempt) {
        tempPath = temporaryPath(target, ::getpid(), counter++);
        fd = ::open(tempPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
        if (fd < 0 && errno != EEXIST)
            return false;
    }
    if (fd < 0)
        return false;

    bool ok = writeAll(fd, content) && (!existed || ::fchmod(fd, info.st_mode & 07777) == 0)
              && ::fsync(fd) == 0;
    ok = ::close(fd) == 0 && ok;
    ok = ok && ::rename(tempPath.c_str(), target.c_str()) == 0;
    if (!ok)
        ::unlink(tempPath.c_str());
    else
        removeStaleTemporaries(target);
    return ok;
}

template<class Number>
bool readNumber(const std::string& text, Number& value)
{
    std::istringstream in(text);
    in >> value;
    return !in.fail();
}

} // namespace

// The section that keys of the line being parsed go to; its key map is looked
// up when the first key arrives, since a header alone creates no section.
struct cIniFile::ParseState
{
    std::string section;
    // The index of the section in memory, or none before its first key.
    std::optional<std::size_t> index;
    // Where the key lines go as read, for other readers of the same file.
    IniParseCache::KeyLines* keyLines = nullptr;
};

cIniFile::cIniFile() = default;

cIniFile::cIniFile(const std::string& path, bool caseSensitive, bool semicolonIsText)
    : m_caseSensitive(caseSensitive)
    , m_semicolonIsText(semicolonIsText)
{
    SetPath(path);
}

cIniFile::cIniFile(const cIniFile& other)
    : m_path(other.m_path)
    , m_sections(other.m_sections)
    , m_caseSensitive(other.m_caseSensitive)
    , m_semicolonIsText(other.m_semicolonIsText)
{
}

cIniFile& cIniFile::operator=(const cIniFile& other)
{
    m_path = other.m_path;
    m_sections = other.m_sections;
    m_caseSensitive = other.m_caseSensitive;
    m_semicolonIsText = other.m_semicolonIsText;
    return *this;
}

cIniFile::~cIniFile()
{
    Flush();
}

void cIniFile::requireExisting(const std::string& path)
{
    if (!cFile(path).Exists())
        throw xNvMessageExc(cRef<cUserMessage>(new cStringMessage(cszIniFileNotFound))) << path;
}

std::string cIniFile::GetPath() const
{
    return m_path;
}

void cIniFile::SetPath(const std::string& path)
{
    Flush();
    m_path = path;
    m_sections.clear();
    m_timestamp = 0;
    ParseIni();
}

void cIniFile::MaybeParseIni()
{
    const cFile file(m_path);
    if (m_timestamp == 0) {
        if (!file.Exists())
            return;
    } else {
        // One stat settles the common case, an unchanged file. A newer time is
        // confirmed by opening the file: 0 means it is gone or unreadable,
        // and what is in memory stays.
        struct stat info;
        if (::stat(CrossPlatformApi::fileSystemEncoding(m_path).c_str(), &info) != 0
            || static_cast<std::int32_t>(info.st_mtime) <= m_timestamp)
            return;
        const int modified = file.GetModificationTimestamp();
        if (modified == 0 || modified <= m_timestamp)
            return;
    }
    SetPath(m_path);
}

std::string cIniFile::GetString(const char* section, const char* key, const char* defaultValue)
{
    MaybeParseIni();
    const std::optional<std::string_view> value = FindKey(orEmpty(section), orEmpty(key));
    if (value && !value->empty())
        return std::string(*value);
    return orEmpty(defaultValue);
}

int cIniFile::GetInt(const char* section, const char* key, int defaultValue)
{
    const std::string text = GetString(section, key, "");
    if (text.empty())
        return defaultValue;
    int value = 0;
    if (!readNumber(text, value))
        NV_ASSERT_AT(!"Kein Int Wert", "cIniFile", 106);
    return value;
}

unsigned int cIniFile::GetUnsignedInt(const char* section, const char* key, unsigned int defaultValue)
{
    const std::string text = GetString(section, key, "");
    if (text.empty())
        return defaultValue;
    unsigned int value = 0;
    if (!readNumber(text, value))
        NV_ASSERT_AT(!"Kein unsigned Int Wert", "cIniFile", 128);
    return value;
}

bool cIniFile::WriteString(const char* section, const char* key, const char* value)
{
    if (key)
        AddToMap(orEmpty(section), key, orEmpty(value));
    else
        m_sections.clearSection(FoldedName(orEmpty(section)));
    m_modified = true;
    if (m_writeHolds == 0)
        Flush();
    return true;
}

bool cIniFile::WriteInt(const char* section, const char* key, int value)
{
    return WriteString(section, key, StringFunctions::intToString(value).c_str());
}

bool cIniFile::Contains(const char* section, const char* key) const
{
    if (!section || !*section || !key || !*key)
        return false;
    return FindKey(section, key).has_value();
}

std::vector<std::string> cIniFile::GetSections() const
{
    return m_sections.names();
}

const cIniFile::KeyMap* cIniFile::FindSection(const std::string& name) const
{
    return m_sections.find(name);
}

std::optional<std::string_view> cIniFile::FindKey(const std::string& section, const std::string& key) const
{
    return m_sections.find(FoldedName(section), FoldedName(key));
}

void cIniFile::Flush()
{
    if (!m_modified)
        return;
    replaceFileContent(m_path, Serialize());
    m_modified = false;
}

void cIniFile::HoldWrites()
{
    ++m_writeHolds;
}

void cIniFile::ReleaseWrites()
{
    if (m_writeHolds > 0 && --m_writeHolds == 0)
        Flush();
}

void cIniFile::SaveAs(const std::string& path)
{
    m_path = path;
    m_modified = true;
    Flush();
}

void cIniFile::ParseIni()
{
    const std::string nativePath = CrossPlatformApi::fileSystemEncoding(m_path);
    IniParseCache& cache = IniParseCache::instance();
    struct stat info;
    if (::stat(nativePath.c_str(), &info) == 0) {
        if (const auto lines = cache.lookup(info, m_semicolonIsText)) {
            StoreKeyLines(*lines);
            m_sections.finishReading();
            m_timestamp = static_cast<std::int32_t>(info.st_mtime);
            return;
        }
    }
    const int fd = RegularFile::openForReading(nativePath);
    if (fd < 0)
        return;
    if (::fstat(fd, &info) == 0) {
        IniParseCache::KeyLines lines;
        const bool keep = IniParseCache::worthKeeping(info);
        ParseStream(fd, keep ? &lines : nullptr);
        m_sections.finishReading();
        m_timestamp = static_cast<std::int32_t>(info.st_mtime);
        if (keep)
            cache.store(info, m_semicolonIsText, std::move(lines));
    }
    ::close(fd);
}

void cIniFile::StoreKeyLines(const IniParseCache::KeyLines& lines)
{
    const std::string* section = nullptr;
    std::size_t index = 0;
    for (const IniParseCache::KeyLine& line : lines) {
        if (!section || *section != line.section) {
            section = &line.section;
            index = m_sections.beginSection(FoldedName(line.section));
        }
        m_sections.append(index, KeyName(line.key), valueText(line.value));
    }
}

// The file is read in chunks and scanned line by line: white space before a
// line is skipped, a line ends at a line feed, and a line that does not fit
// the line buffer ends the parse without anything after it being read. So
// memory stays at one chunk whatever the file's size.
void cIniFile::ParseStream(int fd, IniParseCache::KeyLines* keyLines)
{
    ParseState state;
    state.keyLines = keyLines;
    // On the stack: a heap block of this size would make the allocator tidy
    // up all small blocks freed so far, on every parse.
    char data[ReadChunkSize];
    std::size_t begin = 0;
    std::size_t end = 0;
    std::size_t totalRead = 0;
    bool atEnd = false;
    bool mayHoldZeroBytes = false;

    // Moves the unfinished line to the front and reads behind it.
    const auto readMore = [&] {
        std::memmove(data, data + begin, end - begin);
        end -= begin;
        begin = 0;
        const std::size_t wanted = std::min(ReadChunkSize - end, MaxReadBytes - totalRead);
        const long n = wanted > 0 ? RegularFile::readFully(fd, data + end, wanted) : 0;
        if (n <= 0 || std::size_t(n) < wanted)
            atEnd = true;
        if (n > 0) {
            mayHoldZeroBytes = mayHoldZeroBytes || std::memchr(data + end, '\0', std::size_t(n));
            end += std::size_t(n);
            totalRead += std::size_t(n);
        }
    };

    for (;;) {
        while (begin < end && isWhiteSpace(data[begin]))
            ++begin;
        if (begin == end) {
            if (atEnd)
                return;
            readMore();
            continue;
        }
        const auto* lineFeed = static_cast<const char*>(std::memchr(data + begin, '\n', end - begin));
        if (!lineFeed && !atEnd) {
            if (end - begin >= LineBufferSize)
                return;
            readMore();
            continue;
        }
        const std::size_t length = (lineFeed ? std::size_t(lineFeed - data) : end) - begin;
        if (length >= LineBufferSize)
            return;
        ParseLine(std::string_view(data + begin, length), state, mayHoldZeroBytes);
        begin = std::min(end, begin + length + 1);
    }
}

void cIniFile::ParseLine(std::string_view line, ParseState& state, bool mayHoldZeroBytes)
{
    // The line buffer is a C string: a zero byte ends its text.
    if (mayHoldZeroBytes)
        line = line.substr(0, line.find('\0'));
    line = RemoveCommentAndTrailingWhiteSpaces(line);
    if (line.empty())
        return;
    if (!ParseSection(line, state))
        ParseKey(line, state);
}

std::string_view cIniFile::RemoveCommentAndTrailingWhiteSpaces(std::string_view line) const
{
    if (!m_semicolonIsText)
        line = line.substr(0, line.find(';'));
    const auto last = line.find_last_not_of(" \t");
    return last == std::string_view::npos ? std::string_view() : line.substr(0, last + 1);
}

bool cIniFile::ParseSection(std::string_view line, ParseState& state)
{
    if (line.front() != '[')
        return false;
    const auto close = line.find(']');
    if (close == std::string_view::npos)
        return false;
    state.section.assign(line.substr(1, close - 1));
    state.index.reset();
    return true;
}

void cIniFile::ParseKey(std::string_view line, ParseState& state)
{
    const auto equals = line.find('=');
    if (equals == std::string_view::npos || equals == 0)
        return;
    if (!state.index)
        state.index = m_sections.beginSection(FoldedName(state.section));
    const std::string_view key = line.substr(0, equals);
    const std::string_view value = line.substr(equals + 1);
    m_sections.append(*state.index, KeyName(key), valueText(value));
    if (state.keyLines)
        state.keyLines->push_back({state.section, std::string(key), std::string(value)});
}

void cIniFile::AddToMap(const std::string& section, std::string_view key, std::string_view value)
{
    m_sections.assign(FoldedName(section), KeyName(key), valueText(value));
}

std::string cIniFile::FoldedName(std::string_view name) const
{
    std::string folded(name);
    if (!m_caseSensitive)
        StringFunctions::toLower(folded);
    return folded;
}

std::string cIniFile::KeyName(std::string_view key) const
{
    return FoldedName(stripSpaces(key));
}

std::string cIniFile::Serialize() const
{
    std::string out;
    for (const std::string& section : m_sections.names()) {
        out += '[';
        out += section;
        out += "]\r\n";
        for (const auto& [key, value] : *m_sections.find(section)) {
            out += key;
            out += '=';
            out += value;
            out += "\r\n";
        }
        out += "\r\n";
    }
    return out;
}
