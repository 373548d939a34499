#include "CrossPlatformApi.h"
#include "TempInstallation.h"
#include "TestMain.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <cerrno>
#include <vector>

using Names = std::vector<std::string>;

class CrossPlatformApiTest : public QObject
{
    Q_OBJECT

private slots:
    void splitpathFollowsTheCLibraryContract()
    {
        char drive[4] = "x", dir[64], name[64], ext[16];
        QCOMPARE(CrossPlatformApi::splitpath_s("/a/b.c/ORVKonf.user.ini", drive, sizeof drive, dir,
                                               sizeof dir, name, sizeof name, ext, sizeof ext), 0);
        QCOMPARE(drive, "");
        QCOMPARE(dir, "/a/b.c/");
        QCOMPARE(name, "ORVKonf.user");
        QCOMPARE(ext, ".ini");

        CrossPlatformApi::splitpath_s("/folder/", nullptr, 0, dir, sizeof dir, name, sizeof name, ext, sizeof ext);
        QCOMPARE(dir, "/folder/");
        QCOMPARE(name, "");

        CrossPlatformApi::splitpath_s("C:\\x\\.profile", nullptr, 0, dir, sizeof dir, name, sizeof name, ext, sizeof ext);
        QCOMPARE(dir, "C:\\x\\");
        QCOMPARE(name, "");
        QCOMPARE(ext, ".profile");

        // Components longer than their buffers are cut, not overrun.
        char shortDir[5], shortExt[3];
        CrossPlatformApi::splitpath_s("/abcdef/name.config", nullptr, 0, shortDir, sizeof shortDir,
                                      nullptr, 0, shortExt, sizeof shortExt);
        QCOMPARE(shortDir, "/abc");
        QCOMPARE(shortExt, ".c");

        QCOMPARE(CrossPlatformApi::splitpath_s(nullptr, drive, sizeof drive, dir, sizeof dir,
                                               name, sizeof name, ext, sizeof ext), EINVAL);
    }

    void listsFoldersByPattern()
    {
        TempInstallation installation;
        const QString folder = installation.root() + QStringLiteral("/list");
        for (const char* file : {"a.ini", "B.INI", "readme", "x.ini.bak", ".hidden"})
            QVERIFY(installation.writeFile(QStringLiteral("list/") + QLatin1String(file), "1"));
        QVERIFY(QDir(folder).mkdir(QStringLiteral("sub")));
        const std::string path = folder.toStdString();

        QCOMPARE(CrossPlatformApi::getDirectoryEntries(path, "*.*"),
                 (Names{".hidden", "B.INI", "a.ini", "readme", "sub", "x.ini.bak"}));
        QCOMPARE(CrossPlatformApi::getDirectoryEntries(path + "/", "*.ini"), (Names{"B.INI", "a.ini"}));
        QCOMPARE(CrossPlatformApi::getDirectoryEntries(path, "?.ini*"),
                 (Names{"B.INI", "a.ini", "x.ini.bak"}));
        QCOMPARE(CrossPlatformApi::getDirectoryEntries(path, "readme.*"), Names{"readme"});
        QCOMPARE(CrossPlatformApi::getDirectoryEntries(path, "*.txt"), Names{});
        QCOMPARE(CrossPlatformApi::getDirectoryEntries(path + "/missing", "*.*"), Names{});

        QCOMPARE(CrossPlatformApi::getFileSize(path + "/a.ini"), 1LL);
        QCOMPARE(CrossPlatformApi::getFileSize(path + "/sub"), -1LL);
        QCOMPARE(CrossPlatformApi::getFileSize(path + "/missing"), -1LL);
        QVERIFY(!CrossPlatformApi::deleteDirectory(path));   // not empty
        QVERIFY(CrossPlatformApi::deleteDirectory(path + "/sub"));
        QVERIFY(CrossPlatformApi::deleteFile(path + "/readme"));
        QVERIFY(!CrossPlatformApi::deleteFile(path + "/readme"));
    }

    void convertsLatin1NamesForTheFileSystem()
    {
        TempInstallation installation;
        const std::string root = installation.root().toStdString();
        QCOMPARE(CrossPlatformApi::fileSystemEncoding("/x/Gr\xF6\xDF" "e"), std::string("/x/Gr\xC3\xB6\xC3\x9F" "e"));
        QCOMPARE(CrossPlatformApi::fromFileSystemEncoding("Gr\xC3\xB6\xC3\x9F" "e \xE2\x82\xAC"),
                 std::string("Gr\xF6\xDF" "e ?"));
        QCOMPARE(CrossPlatformApi::toQString("\xE4"), QStringLiteral("\u00E4"));

        QVERIFY(installation.writeFile(QStringLiteral("M\u00E4rz.txt"), "abc"));
        QCOMPARE(CrossPlatformApi::getDirectoryEntries(root, "M*"), Names{"M\xE4rz.txt"});
        QCOMPARE(CrossPlatformApi::getFileSize(root + "/M\xE4rz.txt"), 3LL);
        QVERIFY(CrossPlatformApi::deleteFile(root + "/M\xE4rz.txt"));
        QVERIFY(!QFile::exists(installation.root() + QStringLiteral("/M\u00E4rz.txt")));

        QVERIFY(CrossPlatformApi::strCmpNoCase("ORVKonf", "orvkONF") == 0);
        QVERIFY(CrossPlatformApi::strCmpNoCase("abc", "ABD") < 0);
        QVERIFY(CrossPlatformApi::strCmpNoCase("ab", "A") > 0);
    }

    void systemFoldersFollowTheEnvironment()
    {
        TempInstallation installation;
        const std::string home = installation.home().toStdString();
        QCOMPARE(CrossPlatformApi::getSystemFolder(CrossPlatformApi::SysTemp), home + "/tmp");
        QCOMPARE(CrossPlatformApi::getSystemFolder(CrossPlatformApi::SysLocalAppData), home + "/.local/share");
        QCOMPARE(CrossPlatformApi::getSystemFolder(CrossPlatformApi::SysCommonAppData),
                 installation.root().toStdString() + "/shared");
        QCOMPARE(CrossPlatformApi::getSystemFolder(CrossPlatformApi::SysMyDocuments), home + "/Documents");
        QCOMPARE(CrossPlatformApi::getSystemFolder(CrossPlatformApi::SysProfile), home);

        qputenv("TMPDIR", "/var/x/");
        QCOMPARE(CrossPlatformApi::getSystemFolder(CrossPlatformApi::SysTemp), std::string("/var/x"));
        qunsetenv("TMPDIR");
        QCOMPARE(CrossPlatformApi::getSystemFolder(CrossPlatformApi::SysTemp), std::string("/tmp"));
        qputenv("XDG_DATA_HOME", "relative/ignored");
        QCOMPARE(CrossPlatformApi::getSystemFolder(CrossPlatformApi::SysLocalAppData), home + "/.local/share");
        qputenv("HOME", installation.home().toUtf8() + "/J\xC3\xBCrgen");
        QCOMPARE(CrossPlatformApi::getSystemFolder(CrossPlatformApi::SysProfile), home + "/J\xFCrgen");
        qunsetenv("SC_COMMON_APPDATA");
        QCOMPARE(CrossPlatformApi::getSystemFolder(CrossPlatformApi::SysCommonAppData), std::string("/var/tmp"));

        QCOMPARE(CrossPlatformApi::getDriveType(installation.root().toStdString()), 3);
        QCOMPARE(CrossPlatformApi::getDriveType(installation.root().toStdString() + "/missing"), 0);
    }

    void messageBoxesGoThroughTheHandler()
    {
        std::vector<MessageBoxRequest> shown;
        QMessageBox::StandardButton reply = QMessageBox::Ok;
        const auto recorder = [&](const MessageBoxRequest& request) {
            shown.push_back(request);
            return MessageBoxAnswer{reply, false};
        };
        const CrossPlatformApi::MessageBoxHandler real = CrossPlatformApi::setMessageBoxHandler(recorder);
        QVERIFY(real);

        QCOMPARE(CrossPlatformApi::messageBox("Verzeichnis konnte nicht angelegt werden:\n/\xE4", "Verzeichnis-Fehler", 0), 1);
        QCOMPARE(shown.size(), std::size_t(1));
        QCOMPARE(shown[0].text, QStringLiteral("Verzeichnis konnte nicht angelegt werden:\n/\u00E4"));
        QCOMPARE(shown[0].title, QStringLiteral("Verzeichnis-Fehler"));
        QCOMPARE(shown[0].buttons, QMessageBox::StandardButtons(QMessageBox::Ok));

        reply = QMessageBox::No;
        QCOMPARE(CrossPlatformApi::messageBox("Frage", "Titel", 0x24), 7);
        QCOMPARE(shown[1].buttons, QMessageBox::Yes | QMessageBox::No);
        QCOMPARE(shown[1].icon, QMessageBox::Question);

        // An empty handler brings back the real one; the recorder is handed back.
        const CrossPlatformApi::MessageBoxHandler previous =
            CrossPlatformApi::setMessageBoxHandler(CrossPlatformApi::MessageBoxHandler());
        previous(MessageBoxRequest());
        QCOMPARE(shown.size(), std::size_t(3));
        const CrossPlatformApi::MessageBoxHandler restored = CrossPlatformApi::setMessageBoxHandler(real);
        QVERIFY(restored);
        QCOMPARE(shown.size(), std::size_t(3));
    }
};

SC_TEST(CrossPlatformApiTest)
#include "tst_crossplatform.moc"
