#include "RecentFiles.h"

#include <QDateTime>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QSaveFile>
#include <QStandardPaths>
#include <QThread>
#include <QUrl>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int lockWaitMs = 1000;
constexpr int lockRetryMs = 10;
// A list nests a handful of elements deep; a deeper document is none we read
// (it is written back recursively).
constexpr std::size_t maxDepth = 64;

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

// The list as read: elements with their attributes and children, and the
// text, comments, processing instructions and document type between them,
// written back as they were. Only white space between elements is dropped;
// the writer indents afresh.
struct XmlNode
{
    explicit XmlNode(QXmlStreamReader::TokenType nodeType, QString nodeName = {}, QString nodeText = {})
        : type(nodeType)
        , name(std::move(nodeName))
        , text(std::move(nodeText))
    {
    }

    QXmlStreamReader::TokenType type;
    QString name;   // an element's qualified name, a processing instruction's target
    QXmlStreamAttributes attributes;
    QString text;   // characters, a comment, a processing instruction's data, the DTD
    bool cdata = false;
    std::vector<XmlNode> children;

    QString attribute(const QString& attributeName) const
    {
        return attributes.value(attributeName).toString();
    }

    void setAttribute(const QString& attributeName, const QString& value)
    {
        const auto found = std::find_if(attributes.begin(), attributes.end(), [&](const QXmlStreamAttribute& a) {
            return a.qualifiedName() == attributeName;
        });
        if (found != attributes.end())
            *found = QXmlStreamAttribute(attributeName, value);
        else
            attributes.append(attributeName, value);
    }

    XmlNode& append(QXmlStreamReader::TokenType nodeType, QString nodeName = {}, QString nodeText = {})
    {
        return children.emplace_back(nodeType, std::move(nodeName), std::move(nodeText));
    }

    // The first child element named tag (with attribute equal to value, when
    // an attribute is given), appended when there is none.
    XmlNode& child(const QString& tag, const QString& attributeName = {}, const QString& value = {})
    {
        for (XmlNode& node : children)
            if (node.type == QXmlStreamReader::StartElement && node.name == tag
                && (attributeName.isEmpty() || node.attribute(attributeName) == value))
                return node;
        XmlNode& created = append(QXmlStreamReader::StartElement, tag);
        if (!attributeName.isEmpty())
            created.setAttribute(attributeName, value);
        return created;
    }
};

// The document's top level (the root element among comments and the like),
// or nothing when the content is not well-formed XML. Namespaces are not
// processed: the prefixes are kept as written, with their declarations as
// ordinary attributes.
std::optional<XmlNode> parse(const QByteArray& content)
{
    XmlNode document(QXmlStreamReader::NoToken);
    std::vector<XmlNode*> open{&document};
    QXmlStreamReader reader(content);
    reader.setNamespaceProcessing(false);
    while (!reader.atEnd()) {
        XmlNode& parent = *open.back();
        switch (reader.readNext()) {
        case QXmlStreamReader::StartElement: {
            if (open.size() > maxDepth)
                return std::nullopt;
            XmlNode& element = parent.append(reader.tokenType(), reader.qualifiedName().toString());
            element.attributes = reader.attributes();
            open.push_back(&element);
            break;
        }
        case QXmlStreamReader::EndElement:
            open.pop_back();
            break;
        case QXmlStreamReader::Characters:
            if (!reader.isWhitespace())
                parent.append(reader.tokenType(), {}, reader.text().toString()).cdata = reader.isCDATA();
            break;
        case QXmlStreamReader::Comment:
        case QXmlStreamReader::DTD:
            parent.append(reader.tokenType(), {}, reader.text().toString());
            break;
        case QXmlStreamReader::ProcessingInstruction:
            parent.append(reader.tokenType(), reader.processingInstructionTarget().toString(),
                          reader.processingInstructionData().toString());
            break;
        default:
            break;
        }
    }
    if (reader.hasError())
        return std::nullopt;
    return document;
}

void write(QXmlStreamWriter& writer, const XmlNode& node)
{
    switch (node.type) {
    case QXmlStreamReader::StartElement:
        writer.writeStartElement(node.name);
        writer.writeAttributes(node.attributes);
        for (const XmlNode& child : node.children)
            write(writer, child);
        writer.writeEndElement();
        break;
    case QXmlStreamReader::Characters:
        if (node.cdata)
            writer.writeCDATA(node.text);
        else
            writer.writeCharacters(node.text);
        break;
    case QXmlStreamReader::Comment:
        writer.writeComment(node.text);
        break;
    case QXmlStreamReader::DTD:
        writer.writeDTD(node.text);
        break;
    case QXmlStreamReader::ProcessingInstruction:
        writer.writeProcessingInstruction(node.name, node.text);
        break;
    default:
        break;
    }
}

QByteArray serialize(const XmlNode& document)
{
    QByteArray content;
    QXmlStreamWriter writer(&content);
    writer.setAutoFormatting(true);
    writer.setAutoFormattingIndent(2);
    writer.writeStartDocument(QStringLiteral("1.0"));
    for (const XmlNode& node : document.children)
        write(writer, node);
    writer.writeEndDocument();
    return content;
}

XmlNode* rootOf(XmlNode& document)
{
    const auto root = std::find_if(document.children.begin(), document.children.end(),
                                   [](const XmlNode& node) { return node.type == QXmlStreamReader::StartElement; });
    return root != document.children.end() && root->name == QLatin1String("xbel") ? &*root : nullptr;
}

XmlNode* bookmarkOf(XmlNode& root, const QUrl& url)
{
    for (XmlNode& node : root.children)
        if (node.type == QXmlStreamReader::StartElement && node.name == QLatin1String("bookmark")
            && QUrl(node.attribute(QStringLiteral("href"))) == url)
            return &node;
    return nullptr;
}

// Brings the file's entry up to date, or adds it. The prefixes "bookmark"
// and "mime" are the ones declared on the root element (added when missing).
void record(XmlNode& root, const QString& file, const QString& application, const QString& exec)
{
    if (!root.attributes.hasAttribute(QStringLiteral("xmlns:bookmark")))
        root.setAttribute(QStringLiteral("xmlns:bookmark"), bookmarkNamespace);
    if (!root.attributes.hasAttribute(QStringLiteral("xmlns:mime")))
        root.setAttribute(QStringLiteral("xmlns:mime"), mimeNamespace);

    const QString now = QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs);
    const QUrl url = QUrl::fromLocalFile(file);
    XmlNode* bookmark = bookmarkOf(root, url);
    if (!bookmark) {
        bookmark = &root.append(QXmlStreamReader::StartElement, QStringLiteral("bookmark"));
        bookmark->setAttribute(QStringLiteral("href"), QString::fromLatin1(url.toEncoded()));
        bookmark->setAttribute(QStringLiteral("added"), now);
    }
    bookmark->setAttribute(QStringLiteral("modified"), now);
    bookmark->setAttribute(QStringLiteral("visited"), now);

    XmlNode& metadata = bookmark->child(QStringLiteral("info")).child(QStringLiteral("metadata"), QStringLiteral("owner"),
                                                                      metadataOwner);
    XmlNode& mimeType = metadata.child(QStringLiteral("mime:mime-type"));
    if (!mimeType.attributes.hasAttribute(QStringLiteral("type")))
        mimeType.setAttribute(QStringLiteral("type"), QMimeDatabase().mimeTypeForFile(file).name());

    XmlNode& entry = metadata.child(QStringLiteral("bookmark:applications"))
                         .child(QStringLiteral("bookmark:application"), QStringLiteral("name"), application);
    entry.setAttribute(QStringLiteral("exec"), exec);
    entry.setAttribute(QStringLiteral("modified"), now);
    entry.setAttribute(QStringLiteral("count"), QString::number(entry.attribute(QStringLiteral("count")).toInt() + 1));
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

    std::optional<XmlNode> document;
    if (locked) {
        const std::optional<QByteArray> content = locked->readAll();
        if (!content)
            return Result::NotWritten;
        document = parse(*content);
    } else {
        document.emplace(QXmlStreamReader::NoToken);
        document->append(QXmlStreamReader::StartElement, QStringLiteral("xbel"))
            .setAttribute(QStringLiteral("version"), QStringLiteral("1.0"));
    }
    XmlNode* root = document ? rootOf(*document) : nullptr;
    if (!root)
        return Result::Unreadable;
    record(*root, file, application, exec);

    QSaveFile list(path);
    if (!list.open(QIODevice::WriteOnly) || list.write(serialize(*document)) < 0
        || !list.setPermissions(QFile::ReadOwner | QFile::WriteOwner) || !list.commit())
        return Result::NotWritten;
    return Result::Added;
}

} // namespace RecentFiles
