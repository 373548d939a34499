#include "RecentFiles.h"

#include <QDateTime>
#include <QDeadlineTimer>
#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QSaveFile>
#include <QStandardPaths>
#include <QThread>
#include <QUrl>

#include <memory>
#include <optional>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int lockWaitMs = 1000;
constexpr int lockRetryMs = 10;

const QString bookmarkNamespace = QStringLiteral("http://www.freedesktop.org/standards/desktop-bookmarks");
const QString mimeNamespace = QStringLiteral("http://www.freedesktop.org/standards/shared-mime-info");
const QString metadataOwner = QStringLiteral("http://freedesktop.org");

// The list file, opened without following a link and locked; closes on
// destruction, which also releases the lock.
class LockedFile
{
public:
    explicit LockedFile(int fd) : m_fd(fd) {}
    ~LockedFile()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    LockedFile(const LockedFile&) = delete;
    LockedFile& operator=(const LockedFile&) = delete;
    int fd() const { return m_fd; }

    std::optional<QByteArray> readAll() const
    {
        QByteArray content;
        char buffer[65536];
        for (;;) {
            const ssize_t got = ::pread(m_fd, buffer, sizeof buffer, qint64(content.size()));
            if (got < 0 && errno == EINTR)
                continue;
            if (got < 0)
                return std::nullopt;
            if (got == 0)
                return content;
            content.append(buffer, qsizetype(got));
        }
    }

private:
    int m_fd;
};

bool sameFile(const struct stat& a, const struct stat& b)
{
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// Locks the existing list; Added means the caller may go on, with locked
// holding the file, or null when there is no list yet. Another writer may
// have replaced the file while we waited for its lock: then the lock of the
// new file is taken.
RecentFiles::Result lockList(const QByteArray& path, std::unique_ptr<LockedFile>& locked)
{
    const QDeadlineTimer deadline(lockWaitMs);
    for (;;) {
        auto file = std::make_unique<LockedFile>(::open(path.constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
        if (file->fd() < 0)
            return errno == ENOENT ? RecentFiles::Result::Added : RecentFiles::Result::NotWritten;
        struct stat opened {};
        if (::fstat(file->fd(), &opened) != 0 || !S_ISREG(opened.st_mode) || opened.st_uid != ::getuid())
            return RecentFiles::Result::NotWritten;
        const bool gotLock = ::flock(file->fd(), LOCK_EX | LOCK_NB) == 0;
        const int error = errno;
        if (gotLock) {
            struct stat current {};
            if (::lstat(path.constData(), &current) == 0 && sameFile(opened, current)) {
                locked = std::move(file);
                return RecentFiles::Result::Added;
            }
        } else if (error != EWOULDBLOCK) {
            return RecentFiles::Result::NotWritten;
        }
        if (deadline.hasExpired())
            return RecentFiles::Result::Locked;
        file.reset();
        QThread::msleep(lockRetryMs);
    }
}

QDomElement child(QDomElement parent, const QString& tag, const QString& attribute = {},
                  const QString& value = {})
{
    for (QDomElement element = parent.firstChildElement(tag); !element.isNull();
         element = element.nextSiblingElement(tag))
        if (attribute.isEmpty() || element.attribute(attribute) == value)
            return element;
    QDomElement created = parent.ownerDocument().createElement(tag);
    if (!attribute.isEmpty())
        created.setAttribute(attribute, value);
    parent.appendChild(created);
    return created;
}

QDomElement bookmarkOf(QDomElement root, const QUrl& url)
{
    for (QDomElement element = root.firstChildElement(QStringLiteral("bookmark")); !element.isNull();
         element = element.nextSiblingElement(QStringLiteral("bookmark")))
        if (QUrl(element.attribute(QStringLiteral("href"))) == url)
            return element;
    return {};
}

// Brings the file's entry up to date, or adds it. The document is read
// without namespace processing, so the prefixes "bookmark" and "mime" are
// the ones declared on the root element (added when missing).
void record(QDomDocument& document, const QString& file, const QString& application, const QString& exec)
{
    QDomElement root = document.documentElement();
    if (!root.hasAttribute(QStringLiteral("xmlns:bookmark")))
        root.setAttribute(QStringLiteral("xmlns:bookmark"), bookmarkNamespace);
    if (!root.hasAttribute(QStringLiteral("xmlns:mime")))
        root.setAttribute(QStringLiteral("xmlns:mime"), mimeNamespace);

    const QString now = QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs);
    const QUrl url = QUrl::fromLocalFile(file);
    QDomElement bookmark = bookmarkOf(root, url);
    if (bookmark.isNull()) {
        bookmark = document.createElement(QStringLiteral("bookmark"));
        bookmark.setAttribute(QStringLiteral("href"), QString::fromLatin1(url.toEncoded()));
        bookmark.setAttribute(QStringLiteral("added"), now);
        root.appendChild(bookmark);
    }
    bookmark.setAttribute(QStringLiteral("modified"), now);
    bookmark.setAttribute(QStringLiteral("visited"), now);

    QDomElement metadata = child(child(bookmark, QStringLiteral("info")), QStringLiteral("metadata"),
                                 QStringLiteral("owner"), metadataOwner);
    QDomElement mimeType = child(metadata, QStringLiteral("mime:mime-type"));
    if (!mimeType.hasAttribute(QStringLiteral("type")))
        mimeType.setAttribute(QStringLiteral("type"), QMimeDatabase().mimeTypeForFile(file).name());

    QDomElement entry = child(child(metadata, QStringLiteral("bookmark:applications")),
                              QStringLiteral("bookmark:application"), QStringLiteral("name"), application);
    entry.setAttribute(QStringLiteral("exec"), exec);
    entry.setAttribute(QStringLiteral("modified"), now);
    entry.setAttribute(QStringLiteral("count"), entry.attribute(QStringLiteral("count")).toInt() + 1);
}

} // namespace

namespace RecentFiles {

QString listPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)
           + QStringLiteral("/recently-used.xbel");
}

Result add(const QString& file, const QString& application, const QString& exec)
{
    const QString path = listPath();
    const QString folder = QFileInfo(path).path();
    if (!QFileInfo(folder).isDir()
        && !(QDir().mkpath(folder) && QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner)))
        return Result::NotWritten;

    std::unique_ptr<LockedFile> locked;
    const Result lock = lockList(QFile::encodeName(path), locked);
    if (lock != Result::Added)
        return lock;

    QDomDocument document;
    if (locked) {
        const std::optional<QByteArray> content = locked->readAll();
        if (!content)
            return Result::NotWritten;
        if (!document.setContent(*content, false)
            || document.documentElement().tagName() != QLatin1String("xbel"))
            return Result::Unreadable;
    } else {
        document.appendChild(document.createProcessingInstruction(QStringLiteral("xml"),
                                                                  QStringLiteral("version=\"1.0\" encoding=\"UTF-8\"")));
        QDomElement root = document.createElement(QStringLiteral("xbel"));
        root.setAttribute(QStringLiteral("version"), QStringLiteral("1.0"));
        document.appendChild(root);
    }
    record(document, file, application, exec);

    QSaveFile list(path);
    if (!list.open(QIODevice::WriteOnly) || list.write(document.toByteArray(2)) < 0
        || !list.setPermissions(QFile::ReadOwner | QFile::WriteOwner) || !list.commit())
        return Result::NotWritten;
    return Result::Added;
}

} // namespace RecentFiles
