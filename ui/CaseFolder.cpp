#include "CaseFolder.h"

#include "WildcardPattern.h"

#include <QFile>
#include <QStringDecoder>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// The patterns as QDir applies them: wildcards, anchored, case ignored.
class NameMatcher
{
public:
    explicit NameMatcher(const QStringList& patterns)
        : m_patterns(patterns.begin(), patterns.end())
    {
    }

    bool matches(const QString& name) const
    {
        if (m_patterns.empty())
            return true;
        return std::any_of(m_patterns.begin(), m_patterns.end(),
                           [&](const WildcardPattern& pattern) { return pattern.matches(name); });
    }

private:
    std::vector<WildcardPattern> m_patterns;
};

// An open folder whose entries are read with readdir() and looked at with
// fstatat() relative to it, so a rename of the folder during the read does
// not mix two folders.
class OpenFolder
{
public:
    explicit OpenFolder(const QString& folder)
        : m_dir(opendir(QFile::encodeName(folder.isEmpty() ? QStringLiteral(".") : folder).constData()))
    {
    }
    ~OpenFolder()
    {
        if (m_dir)
            closedir(m_dir);
    }
    OpenFolder(const OpenFolder&) = delete;
    OpenFolder& operator=(const OpenFolder&) = delete;

    bool isOpen() const { return m_dir != nullptr; }
    int fd() const { return dirfd(m_dir); }
    dirent* next() { return readdir(m_dir); }

private:
    DIR* m_dir;
};

// The name as the user sees it: decoded as UTF-8, or read as Latin-1 when
// the bytes are no valid UTF-8.
QString decodedName(const QByteArray& bytes, bool* latin1)
{
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString name = utf8(bytes);
    *latin1 = utf8.hasError();
    return *latin1 ? QString::fromLatin1(bytes) : name;
}

// Whether this user may read and write a file of that status, as access()
// would answer, without a second system call per file.
class Permissions
{
public:
    Permissions()
        : m_uid(geteuid())
        , m_gid(getegid())
    {
        const int count = getgroups(0, nullptr);
        if (count > 0) {
            m_groups.resize(std::size_t(count));
            m_groups.resize(std::size_t(std::max(0, getgroups(count, m_groups.data()))));
        }
    }

    bool mayReadAndWrite(const struct stat& status) const
    {
        if (m_uid == 0)
            return true;
        mode_t read = S_IROTH;
        mode_t write = S_IWOTH;
        if (status.st_uid == m_uid) {
            read = S_IRUSR;
            write = S_IWUSR;
        } else if (status.st_gid == m_gid
                   || std::find(m_groups.begin(), m_groups.end(), status.st_gid) != m_groups.end()) {
            read = S_IRGRP;
            write = S_IWGRP;
        }
        return (status.st_mode & read) && (status.st_mode & write);
    }

private:
    uid_t m_uid;
    gid_t m_gid;
    std::vector<gid_t> m_groups;
};

bool isHiddenOrDot(const char* name)
{
    return name[0] == '.';
}

struct Candidate
{
    QString sortKey;
    CaseFolder::Entry entry;
};

} // namespace

namespace CaseFolder {

QString Entry::completeBaseName() const
{
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? name : name.left(dot);
}

void read(const QString& folder, const QStringList& nameFilters, Access access, int firstBatch,
          int largestBatch, const Cancelled& cancelled, const std::function<void(QList<Entry>&&)>& deliver)
{
    OpenFolder dir(folder);
    if (!dir.isOpen())
        return;

    const NameMatcher matcher(nameFilters);
    std::vector<Candidate> candidates;
    while (const dirent* found = dir.next()) {
        if (isHiddenOrDot(found->d_name) || found->d_type == DT_DIR)
            continue;
        Candidate candidate;
        candidate.entry.localName = QByteArray(found->d_name);
        candidate.entry.name = decodedName(candidate.entry.localName, &candidate.entry.latin1Name);
        if (!matcher.matches(candidate.entry.name))
            continue;
        candidate.sortKey = candidate.entry.name.toLower();
        candidates.push_back(std::move(candidate));
        if (candidates.size() % 4096 == 0 && cancelled())
            return;
    }
    std::sort(candidates.begin(), candidates.end(), [](const Candidate& a, const Candidate& b) {
        const int order = a.sortKey.compare(b.sortKey);
        return order != 0 ? order < 0 : a.entry.localName < b.entry.localName;
    });

    tzset();   // follow a change of the time zone since the last listing
    const Permissions permissions;
    int batchSize = firstBatch;
    QList<Entry> batch;
    batch.reserve(batchSize);
    for (Candidate& candidate : candidates) {
        if (cancelled())
            return;
        struct stat status;
        if (fstatat(dir.fd(), candidate.entry.localName.constData(), &status, 0) != 0
            || !S_ISREG(status.st_mode)
            || (access == Access::ReadAndWrite && !permissions.mayReadAndWrite(status)))
            continue;
        candidate.entry.changeTime = status.st_mtime;
        batch.append(std::move(candidate.entry));
        if (batch.size() >= batchSize) {
            deliver(std::move(batch));
            batchSize = std::min(2 * batchSize, largestBatch);
            batch = QList<Entry>();
            batch.reserve(batchSize);
        }
    }
    if (!batch.isEmpty() && !cancelled())
        deliver(std::move(batch));
}

int count(const QString& folder, const QStringList& nameFilters, const Cancelled& cancelled)
{
    OpenFolder dir(folder);
    if (!dir.isOpen())
        return 0;
    const NameMatcher matcher(nameFilters);
    int files = 0;
    int seen = 0;
    while (const dirent* found = dir.next()) {
        if (++seen % 1024 == 0 && cancelled())
            return files;
        if (isHiddenOrDot(found->d_name) || found->d_type == DT_DIR)
            continue;
        bool latin1 = false;
        if (!matcher.matches(decodedName(QByteArray(found->d_name), &latin1)))
            continue;
        struct stat status;
        if (found->d_type == DT_REG
            || (fstatat(dir.fd(), found->d_name, &status, 0) == 0 && S_ISREG(status.st_mode)))
            ++files;
    }
    return files;
}

QString changeTimeText(std::time_t time)
{
    struct tm local;
    if (!localtime_r(&time, &local))
        return QString();
    QChar text[16];
    const auto twoDigits = [&text](int at, int value) {
        text[at] = QLatin1Char(char('0' + value / 10 % 10));
        text[at + 1] = QLatin1Char(char('0' + value % 10));
    };
    const int year = local.tm_year + 1900;
    twoDigits(0, local.tm_mday);
    text[2] = u'.';
    twoDigits(3, local.tm_mon + 1);
    text[5] = u'.';
    twoDigits(6, year / 100);
    twoDigits(8, year % 100);
    text[10] = u' ';
    twoDigits(11, local.tm_hour);
    text[13] = u':';
    twoDigits(14, local.tm_min);
    return QString(text, 16);
}

QString renameToLocalEncoding(const QString& folder, const Entry& entry)
{
    const QByteArray from = QFile::encodeName(folder) + entry.localName;
    const QByteArray to = QFile::encodeName(folder + entry.name);
    if (renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0)
        return folder + entry.name;
    // File systems without that flag: a new link fails when the name is
    // taken, so no file is ever replaced.
    if ((errno == EINVAL || errno == ENOSYS) && link(from.constData(), to.constData()) == 0) {
        unlink(from.constData());
        return folder + entry.name;
    }
    return QString();
}

} // namespace CaseFolder
