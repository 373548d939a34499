#include "SettingsFixture.h"
#include "TempInstallation.h"
#include "TestMain.h"

#include "ApplicationInfo.h"
#include "Exceptions.h"
#include "StringFunctions.h"

#include <QDir>
#include <QFileInfo>
#include <QMap>
#include <QScopeGuard>

#include <memory>

#include <pwd.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

// The layered settings against real files: ORVKonf.ini with two modes, their
// mode files, and the user's copies in a folder of their own.
class TestNvWinIni : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_install = std::make_unique<SettingsSandbox>();
        writeKonf(userDir().toLatin1());
        m_install->writeResource("normal.ini", "[Start]\nShared=fromNormal\nModeOnly=normal\nEmptyInMode=\n");
        m_install->writeResource("vorweg.ini", "[Start]\nShared=fromVorweg\n");
    }

    void cleanup() { m_install.reset(); }

    void layeredReadTreatsEmptyAsMissing()
    {
        m_install->writeFile("user/ORVKonf.user.ini", "[Start]\nGlobalOnly=fromUserGlobal\n");
        m_install->writeFile("user/normal.user.ini", "[Start]\nShared=\nModeOnly=fromUserModus\n");
        QVERIFY(!settings()->setGlobalIniName("Fehlt.ini"));
        QVERIFY(settings()->setGlobalIniName(cszNvWinIniName));
        settings()->enableCache(false);

        // Before a mode is chosen only the two global files count.
        QCOMPARE(get("Shared"), "fromGlobal");
        QCOMPARE(get("ModeOnly"), "x");

        QCOMPARE(settings()->setModus("normal"), "");
        QCOMPARE(get("Shared"), "fromNormal");
        QCOMPARE(get("ModeOnly"), "fromUserModus");
        QCOMPARE(settings()->GetString("start", "GLOBALONLY", "x"), "fromUserGlobal");
        QCOMPARE(get("EmptyInMode"), "fromGlobal");
        QCOMPARE(settings()->GetString("Start", "Missing", nullptr), "");
        QCOMPARE(settings()->GetInt("Start", "Letters", 7), 0);
    }

    void writeLandsInUserCopyOfDefiningFile()
    {
        QVERIFY(settings()->setGlobalIniName(cszNvWinIniName));
        settings()->setModus("normal");

        // Defined only by the main configuration file: its user copy, seen in
        // every mode. Defined by the mode file, even empty: the mode's user copy.
        // Defined nowhere: the current mode's user copy.
        QVERIFY(settings()->WriteString("Start", "GlobalOnly", "mine"));
        QVERIFY(settings()->WriteInt("Start", "EmptyInMode", 42));
        QVERIFY(settings()->WriteString("Start", "Unknown", "normalValue"));
        QVERIFY(settings()->IsInUserGlobalIni("Start", "GlobalOnly"));
        QVERIFY(m_install->readFile(userDir() + "ORVKonf.user.ini").contains("globalonly=mine\r\n"));
        QVERIFY(m_install->readFile(userDir() + "normal.user.ini").contains("unknown=normalValue\r\n"));

        QCOMPARE(settings()->setModus("vorweg"), "normal");
        QCOMPARE(settings()->getUserModusIniPath(), (userDir() + "vorweg.user.ini").toStdString());
        QCOMPARE(get("GlobalOnly"), "mine");
        QCOMPARE(get("EmptyInMode"), "fromGlobal");
        QCOMPARE(get("Unknown"), "x");

        // An unknown mode throws and leaves the current mode in place.
        try {
            settings()->setModus("bogus");
            QFAIL("no exception for an unknown mode");
        } catch (const xNvFatalExc& error) {
            QCOMPARE(QByteArray(error.what()), "Programmmodus <bogus> unbekannt.");
        }
        QCOMPARE(settings()->getModus(), "vorweg");

        settings()->setModus("normal");
        QCOMPARE(settings()->GetInt("Start", "EmptyInMode", 0), 42);
        QCOMPARE(get("Unknown"), "normalValue");
    }

    void cacheKeepsFirstResultUntilCleared()
    {
        QVERIFY(settings()->setGlobalIniName(cszNvWinIniName));
        settings()->setModus("normal");

        // The first call's default is cached for a missing key, GetInt shares the
        // entry, and the key is spelled as the caller spells it.
        QCOMPARE(settings()->GetString("Start", "Missing", "first"), "first");
        QCOMPARE(settings()->GetString("Start", "Missing", "second"), "first");
        QCOMPARE(settings()->GetInt("Start", "Missing", 5), 0);
        QCOMPARE(settings()->GetString("START", "Missing", "other"), "other");

        // A change on disk stays unseen while cached, also across setModus with
        // the current mode, and is seen once the cache is cleared.
        QCOMPARE(get("ModeOnly"), "normal");
        m_install->writeResource("normal.ini", "[Start]\nModeOnly=changed\n");
        QVERIFY(moveModificationTimeForward(m_install->resourcesDir() + "normal.ini"));
        settings()->setModus("normal");
        QCOMPARE(get("ModeOnly"), "normal");
        settings()->clearCache();
        QCOMPARE(get("ModeOnly"), "changed");

        settings()->WriteString("Start", "Missing", "written");
        QCOMPARE(get("Missing"), "written");
    }

    void configuredFolders_data()
    {
        QTest::addColumn<QByteArray>("userSettings");
        QTest::addColumn<QString>("expected");   // "@root", "@app" and "@private" (the private fallback) stand for those folders

        QTest::newRow("variable") << QByteArray("%SC_TEST_SETTINGS%/c") << QStringLiteral("@root/env/c/");
        QTest::newRow("unset variable") << QByteArray("/x/%SC_TEST_UNSET%/y") << QStringLiteral("@app/");
        QTest::newRow("empty") << QByteArray() << QStringLiteral("@app/");
        QTest::newRow("relative") << QByteArray("Eigene/Daten") << QStringLiteral("@app/Eigene/Daten/");
        QTest::newRow("uncreatable") << QByteArray("@root/blocker/sub") << QStringLiteral("@private/");
    }

    void configuredFolders()
    {
        QFETCH(QByteArray, userSettings);
        QFETCH(QString, expected);
        const auto resolve = [this](QString text) {
            return text.replace("@root", m_install->root())
                .replace("@app/", m_install->resourcesDir())
                .replace("@private", qEnvironmentVariable("XDG_CACHE_HOME") + "/startcenter");
        };
        qputenv("SC_TEST_SETTINGS", m_install->root().toLatin1() + "/env");
        m_install->writeFile("blocker", "a file, not a folder");
        writeKonf(resolve(userSettings).toLatin1());

        QVERIFY(settings()->setGlobalIniName(cszNvWinIniName));
        qunsetenv("SC_TEST_SETTINGS");
        QCOMPARE(fromLatin1(settings()->getUserSettingsPath()), resolve(expected));
        QVERIFY(QFileInfo(resolve(expected)).isDir());
        QCOMPARE(fromLatin1(cApplicationInfo::theInstance()->getFilenameInUserDir("ORVKonf.user.ini")),
                 fromLatin1(settings()->getUserGlobalIniPath()));

        const QStringList fallbackReport{
            resolve("Fehler|Der Konfigurationspfad <@root/blocker/sub/> konnte nicht gefunden werden.\n"
                    "Die eigenen Einstellungen werden gespeichert im Verzeichnis <@private/>.")};
        QCOMPARE(m_install->boxes.boxes, expected == "@private/" ? fallbackReport : QStringList());

        // The home data folder is made too (again when it has gone); its symbol
        // keeps the configured text.
        QVERIFY(QDir(m_install->root() + "/Daten").removeRecursively());
        QCOMPARE(fromLatin1(cApplicationInfo::theInstance()->getHomeDataPath()), m_install->root() + "/Daten/");
        QVERIFY(QFileInfo(m_install->root() + "/Daten").isDir());
        QCOMPARE(fromLatin1(DMFileName::getGlobalFileEnvironment().getSymbol("HomeDataDir")),
                 m_install->root() + "/Daten");
    }

    void defaultSettingsAreAppliedOnce()
    {
        writeKonf(userDir().toLatin1(), "SetDefaultSettings=1\n");
        m_install->writeResource("default.ini", "[Start]\nGlobalOnly=fromDefault\nFoo=bar\n");
        QVERIFY(settings()->setGlobalIniName(cszNvWinIniName));

        settings()->setModus("normal");
        QVERIFY(!settings()->defaultSettingsEnabled());
        QCOMPARE(get("Foo"), "bar");
        QCOMPARE(get("GlobalOnly"), "fromDefault");
        QVERIFY(m_install->readFile(userDir() + "ORVKonf.user.ini").contains("setdefaultsettings=0\r\n"));

        // Later mode switches do not apply them again.
        settings()->WriteString("Start", "Foo", "mine");
        settings()->setModus("vorweg");
        QCOMPARE(get("Foo"), "x");
        settings()->setModus("normal");
        QCOMPARE(get("Foo"), "mine");
    }

    // Applying a settings file in bulk leaves the user files as key-by-key
    // writes do, each written once.
    void bulkApplyWritesEachUserFileOnce()
    {
        m_install->writeResource("default.ini", "[Start]\nGlobalOnly=fromDefault\nShared=d\nNeu=1\n"
                                                "[Andere]\nx=y\nleer=\n");
        const std::string defaults = cApplicationInfo::theInstance()->getFilenameInAppDir("default.ini");
        QVERIFY(settings()->setGlobalIniName(cszNvWinIniName));
        settings()->setModus("normal");
        for (const std::string& section : CrossPlatformApi::getIniSections(defaults)) {
            for (const std::string& entry : CrossPlatformApi::getIniSectionEntries(section, defaults)) {
                std::string key;
                std::string value;
                QVERIFY(StringFunctions::split(entry, "=", key, value));
                settings()->WriteString(section.c_str(), key.c_str(), value.c_str());
            }
        }
        const QByteArray globalOneByOne = m_install->readFile(userDir() + "ORVKonf.user.ini");
        const QByteArray modeOneByOne = m_install->readFile(userDir() + "normal.user.ini");
        QVERIFY(globalOneByOne.contains("globalonly=fromDefault"));
        QVERIFY(modeOneByOne.contains("x=y"));
        QVERIFY(QFile::remove(userDir() + "ORVKonf.user.ini") && QFile::remove(userDir() + "normal.user.ini"));
        cNvWinIni::resetInstance();
        QVERIFY(settings()->setGlobalIniName(cszNvWinIniName));
        settings()->setModus("normal");

        const int events = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
        QVERIFY(events >= 0);
        QVERIFY(inotify_add_watch(events, QFile::encodeName(userDir()).constData(), IN_MOVED_TO | IN_CLOSE_WRITE) >= 0);
        QVERIFY(settings()->applyIniSettings(defaults));
        QMap<QString, int> writes;
        alignas(inotify_event) char buffer[8192];
        for (ssize_t size; (size = read(events, buffer, sizeof buffer)) > 0;) {
            for (char* at = buffer; at < buffer + size;) {
                const auto* event = reinterpret_cast<const inotify_event*>(at);
                ++writes[QFile::decodeName(event->name)];
                at += sizeof(inotify_event) + event->len;
            }
        }
        close(events);
        QCOMPARE(writes.value(QStringLiteral("ORVKonf.user.ini")), 1);
        QCOMPARE(writes.value(QStringLiteral("normal.user.ini")), 1);
        QCOMPARE(m_install->readFile(userDir() + "ORVKonf.user.ini"), globalOneByOne);
        QCOMPARE(m_install->readFile(userDir() + "normal.user.ini"), modeOneByOne);
    }

    void removeUserModusIniFilesDeletesUserCopies()
    {
        QVERIFY(settings()->setGlobalIniName(cszNvWinIniName));
        settings()->setModus("vorweg");
        settings()->WriteString("Start", "Shared", "userVorweg");
        settings()->setModus("normal");
        settings()->WriteString("Start", "Shared", "userNormal");
        settings()->WriteString("Start", "GlobalOnly", "userGlobal");
        QCOMPARE(QDir(userDir()).entryList(QDir::Files).size(), 3);

        QVERIFY(settings()->removeUserModusIniFiles());
        QCOMPARE(QDir(userDir()).entryList(QDir::Files), QStringList());
        QCOMPARE(get("Shared"), "fromNormal");
        QCOMPARE(get("GlobalOnly"), "global");
    }

    // The fallback for an uncreatable settings folder is used only while it
    // is a real folder of the user's own: another user's folder or a link
    // there is passed over for the next candidate, with none left the
    // settings live for the session only, and a fallback that turns into a
    // link later takes no more writes.
    void fallbackFolderMustStayPrivate()
    {
        const QByteArray savedRuntime = qgetenv("XDG_RUNTIME_DIR");
        const QString runtime = m_install->root() + "/runtime";
        const QString elsewhere = m_install->root() + "/elsewhere";
        QVERIFY(QDir().mkpath(runtime) && QDir().mkpath(elsewhere));
        QVERIFY(::chmod(runtime.toLocal8Bit().constData(), 0700) == 0);
        qputenv("XDG_RUNTIME_DIR", runtime.toLocal8Bit());
        const auto restore = qScopeGuard([&] { qputenv("XDG_RUNTIME_DIR", savedRuntime); });
        m_install->writeFile("blocker", "a file, not a folder");
        writeKonf(m_install->root().toLatin1() + "/blocker/sub");
        const QString cacheFallback = qEnvironmentVariable("XDG_CACHE_HOME") + "/startcenter";
        QVERIFY(QDir().mkpath(qEnvironmentVariable("XDG_CACHE_HOME")));
        // Pre-created by another user where that can be arranged, else a link.
        const passwd* nobody = ::geteuid() == 0 ? ::getpwnam("nobody") : nullptr;
        if (nobody) {
            QVERIFY(QDir().mkpath(cacheFallback));
            QVERIFY(::chown(cacheFallback.toLocal8Bit().constData(), nobody->pw_uid, nobody->pw_gid) == 0);
            QVERIFY(::chmod(cacheFallback.toLocal8Bit().constData(), 0700) == 0);
        } else {
            QVERIFY(QFile::link(elsewhere, cacheFallback));
        }

        QVERIFY(settings()->setGlobalIniName(cszNvWinIniName));
        QCOMPARE(fromLatin1(settings()->getUserSettingsPath()), runtime + "/startcenter/");
        QCOMPARE(QFileInfo(runtime + "/startcenter").permissions(),
                 QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadUser | QFile::WriteUser
                     | QFile::ExeUser);
        QVERIFY(m_install->boxes.boxes.value(0).endsWith("im Verzeichnis <" + runtime + "/startcenter/>."));

        // Swapped for a link after the start: the write is refused.
        QVERIFY(QDir(runtime + "/startcenter").removeRecursively());
        QVERIFY(QFile::link(elsewhere, runtime + "/startcenter"));
        QVERIFY(!settings()->WriteString("Start", "GlobalOnly", "mine"));

        // No private folder at all: values for this session only, on no disk.
        resetSettingsSingletons();
        m_install->boxes.boxes.clear();
        QVERIFY(settings()->setGlobalIniName(cszNvWinIniName));
        settings()->setModus("normal");
        QCOMPARE(m_install->boxes.boxes.value(0),
                 "Fehler|Der Konfigurationspfad <" + m_install->root()
                     + "/blocker/sub/> konnte nicht gefunden werden.\nDie eigenen Einstellungen werden nur "
                       "f\u00fcr diese Sitzung behalten und nicht gespeichert.");
        QVERIFY(settings()->WriteString("Start", "GlobalOnly", "mine"));
        QVERIFY(settings()->WriteString("Start", "Unknown", "session"));
        QCOMPARE(get("GlobalOnly"), "mine");
        QCOMPARE(get("Unknown"), "session");
        QCOMPARE(QDir(elsewhere).entryList(QDir::Files), QStringList());
        QCOMPARE(QDir(cacheFallback).entryList(QDir::Files), QStringList());
        QCOMPARE(QDir(m_install->resourcesDir()).entryList({"*.user.ini"}, QDir::Files), QStringList());
    }

private:
    void writeKonf(const QByteArray& userSettings, const QByteArray& extraSettings = {})
    {
        m_install->writeResource("ORVKonf.ini",
                                 "[Settings]\nUserSettings=" + userSettings + "\nHomeDataDir="
                                     + m_install->root().toLatin1() + "/Daten\n" + extraSettings
                                     + "[Modus]\nnormal=normal.ini\nvorweg=vorweg.ini\n"
                                       "[Modes]\nValidModes=normal,vorweg\n"
                                       "[Start]\nGlobalOnly=global\nShared=fromGlobal\nEmptyInMode=fromGlobal\n"
                                       "Letters=abc\n");
    }

    QString userDir() const { return m_install->root() + QStringLiteral("/user/"); }
    cNvWinIni* settings() const { return cNvWinIni::theInstance(); }
    std::string get(const char* key) { return settings()->GetString("Start", key, "x"); }

    std::unique_ptr<SettingsSandbox> m_install;
};

SC_TEST(TestNvWinIni)
#include "tst_nvwinini.moc"
