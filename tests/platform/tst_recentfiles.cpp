#include "RecentFiles.h"
#include "TempInstallation.h"
#include "TestMain.h"

#include <QDomDocument>
#include <QFile>
#include <QTest>
#include <QUrl>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace {

// A list as another program left it: an entry of its own with a title, groups
// and a private element, a comment, and the namespaces declared on the root.
const QByteArray foreignList =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<xbel version=\"1.0\" xmlns:bookmark=\"http://www.freedesktop.org/standards/desktop-bookmarks\"\n"
    "      xmlns:mime=\"http://www.freedesktop.org/standards/shared-mime-info\">\n"
    "  <!-- kept as written -->\n"
    "  <bookmark href=\"file:///home/u/Brief%20an%20Amt.odt\" added=\"2026-01-02T10:00:00Z\""
    " modified=\"2026-01-02T10:00:00Z\" visited=\"2026-01-02T10:00:00Z\">\n"
    "    <title>Brief &amp; &lt;Amt&gt;</title>\n"
    "    <info><metadata owner=\"http://freedesktop.org\">\n"
    "      <mime:mime-type type=\"application/vnd.oasis.opendocument.text\"/>\n"
    "      <bookmark:groups><bookmark:group>Office</bookmark:group></bookmark:groups>\n"
    "      <bookmark:applications><bookmark:application name=\"Writer\" exec=\"&apos;writer %u&apos;\""
    " modified=\"2026-01-02T10:00:00Z\" count=\"3\"/></bookmark:applications>\n"
    "      <bookmark:private/>\n"
    "    </metadata></info>\n"
    "  </bookmark>\n"
    "</xbel>\n";

QDomDocument readList(const QString& path)
{
    QFile file(path);
    QDomDocument document;
    if (file.open(QIODevice::ReadOnly))
        document.setContent(file.readAll(), false);
    return document;
}

QDomElement bookmarkOf(const QDomDocument& list, const QString& file)
{
    for (QDomElement bookmark = list.documentElement().firstChildElement(QStringLiteral("bookmark"));
         !bookmark.isNull(); bookmark = bookmark.nextSiblingElement(QStringLiteral("bookmark")))
        if (QUrl(bookmark.attribute(QStringLiteral("href"))) == QUrl::fromLocalFile(file))
            return bookmark;
    return {};
}

} // namespace

class RecentFilesTest : public QObject
{
    Q_OBJECT

private slots:
    void entriesOfOtherProgramsStay()
    {
        TempInstallation installation;
        const QString list = RecentFiles::listPath();
        QVERIFY(list.startsWith(installation.home()));
        const QString caseFile = installation.home() + QStringLiteral("/Documents/Müller & \"Söhne\" 2011.est11");

        // No list yet: a new one, private to the user.
        QCOMPARE(RecentFiles::add(caseFile, QStringLiteral("Start-Center"), QStringLiteral("startcenter %f")),
                 RecentFiles::Result::Added);
        QCOMPARE(QFile(list).permissions() & 0x0077, QFile::Permissions());
        QVERIFY(!bookmarkOf(readList(list), caseFile).isNull());

        QVERIFY(installation.writeFile(QStringLiteral("home/.local/share/recently-used.xbel"), foreignList));
        for (int i = 0; i < 2; ++i)
            QCOMPARE(RecentFiles::add(caseFile, QStringLiteral("Start-Center"), QStringLiteral("startcenter %f")),
                     RecentFiles::Result::Added);

        const QDomDocument document = readList(list);
        QCOMPARE(document.documentElement().elementsByTagName(QStringLiteral("bookmark")).size(), 2);
        const QDomElement foreign = bookmarkOf(document, QStringLiteral("/home/u/Brief an Amt.odt"));
        QCOMPARE(foreign.attribute(QStringLiteral("modified")), QStringLiteral("2026-01-02T10:00:00Z"));
        QCOMPARE(foreign.firstChildElement(QStringLiteral("title")).text(), QStringLiteral("Brief & <Amt>"));
        QCOMPARE(document.documentElement().firstChild().toComment().data(), QStringLiteral(" kept as written "));
        QCOMPARE(foreign.elementsByTagName(QStringLiteral("bookmark:group")).item(0).toElement().text(),
                 QStringLiteral("Office"));
        QCOMPARE(foreign.elementsByTagName(QStringLiteral("bookmark:private")).size(), 1);
        QCOMPARE(foreign.elementsByTagName(QStringLiteral("bookmark:application")).item(0).toElement().attribute(
                     QStringLiteral("count")),
                 QStringLiteral("3"));

        // Ours: one entry, counted twice, with the times and the type the format asks for.
        const QDomElement ours = bookmarkOf(document, caseFile);
        for (const char* time : {"added", "modified", "visited"})
            QVERIFY(QDateTime::fromString(ours.attribute(QLatin1String(time)), Qt::ISODateWithMs).isValid());
        const QDomElement application = ours.elementsByTagName(QStringLiteral("bookmark:application")).item(0).toElement();
        QCOMPARE(application.attribute(QStringLiteral("name")), QStringLiteral("Start-Center"));
        QCOMPARE(application.attribute(QStringLiteral("count")), QStringLiteral("2"));
        QVERIFY(!ours.elementsByTagName(QStringLiteral("mime:mime-type")).item(0).toElement()
                     .attribute(QStringLiteral("type")).isEmpty());
    }

    void brokenLockedOrForeignListsAreLeftAlone()
    {
        TempInstallation installation;
        const QString list = RecentFiles::listPath();
        const QString caseFile = installation.home() + QStringLiteral("/Fall 2011.est11");
        const auto add = [&] {
            return RecentFiles::add(caseFile, QStringLiteral("Start-Center"), QStringLiteral("startcenter %f"));
        };

        const QByteArray broken = foreignList.left(foreignList.size() / 2);
        QVERIFY(installation.writeFile(QStringLiteral("home/.local/share/recently-used.xbel"), broken));
        QCOMPARE(add(), RecentFiles::Result::Unreadable);
        QCOMPARE(installation.readFile(list), broken);

        // Well-formed, but nested deeper than any list of recent files.
        const QByteArray deep = "<xbel>" + QByteArray("<a>").repeated(100000) + QByteArray("</a>").repeated(100000)
            + "</xbel>";
        QVERIFY(installation.writeFile(QStringLiteral("home/.local/share/recently-used.xbel"), deep));
        QCOMPARE(add(), RecentFiles::Result::Unreadable);
        QCOMPARE(installation.readFile(list), deep);

        // Another program holds the list's lock past our patience.
        QVERIFY(installation.writeFile(QStringLiteral("home/.local/share/recently-used.xbel"), foreignList));
        const int holder = ::open(QFile::encodeName(list).constData(), O_RDONLY);
        QVERIFY(holder >= 0 && ::flock(holder, LOCK_EX) == 0);
        QCOMPARE(add(), RecentFiles::Result::Locked);
        ::close(holder);
        QCOMPARE(installation.readFile(list), foreignList);

        // A link is not followed into another file.
        const QString target = installation.root() + QStringLiteral("/elsewhere.xbel");
        QVERIFY(QFile::rename(list, target));
        QVERIFY(QFile::link(target, list));
        QCOMPARE(add(), RecentFiles::Result::NotWritten);
        QCOMPARE(installation.readFile(target), foreignList);
    }
};

SC_TEST(RecentFilesTest)
#include "tst_recentfiles.moc"
