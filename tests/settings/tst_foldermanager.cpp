#include "SettingsFixture.h"
#include "TempInstallation.h"
#include "TestMain.h"

#include <QFileInfo>

#include <memory>

// Folder symbols from the system and from the main configuration file.
class TestFolderManager : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_install = std::make_unique<SettingsSandbox>(); }
    void cleanup() { m_install.reset(); }

    void symbolsFromConfiguration()
    {
        const QByteArray root = m_install->root().toLatin1();
        m_install->writeResource("ORVKonf.ini",
                                 "[DirectorySymbols]\nCOMMONSETTINGS=" + root + "/symbols\nCommonSettings=" + root
                                     + "/mixed\nCOMPANY=Marvendo\nUSER_APPDATA=<SYS_PROFILE>/<COMPANY>\n"
                                       "[DirectoryDefs]\nCOMMONSETTINGS=<USER_APPDATA>/Settings\nSYS_TEMP="
                                     + root + "/mytemp\n");
        folders();   // the first use defines the system symbols
        QCOMPARE(compose("<SYS_PROFILE>"), m_install->home());
        QCOMPARE(compose("<SYS_TEMP>"), qEnvironmentVariable("TMPDIR"));

        const std::string konf = cApplicationInfo::theInstance()->getFilenameInAppDir("ORVKonf.ini");
        folders()->parseSection(konf, "DirectorySymbols");
        folders()->parseSection(konf, "DirectoryDefs");
        folders()->parseSection(konf, "Fehlt");
        folders()->parseSection(konf + ".fehlt", "DirectorySymbols");

        // DirectoryDefs wins over DirectorySymbols and over the system value;
        // names differ by case; values may hold symbols themselves.
        QCOMPARE(compose("<COMMONSETTINGS>/statistics.ini"), m_install->home() + "/Marvendo/Settings/statistics.ini");
        QCOMPARE(compose("<CommonSettings>"), root + "/mixed");
        QCOMPARE(compose("<SYS_TEMP>"), root + "/mytemp");
        QVERIFY(compose("<commonsettings>").size() < 2);
        // Relative paths are taken against the application folder.
        QCOMPARE(compose("sub/x.ini"), m_install->resourcesDir() + "sub/x.ini");
        QCOMPARE(m_install->boxes.boxes, QStringList());
    }

    void ensureFolderExists()
    {
        const std::string root = m_install->root().toStdString();
        m_install->writeFile("blocker", "a file");
        folders()->setSymbol("EXISTING", m_install->home().toStdString());
        folders()->setSymbol("NEW", root + "/neu/tief");
        folders()->setSymbol("BLOCKED", root + "/blocker/sub");

        const QDateTime homeModified = QFileInfo(m_install->home()).lastModified();
        QVERIFY(folders()->ensureFolderExists("<EXISTING>"));
        QCOMPARE(QFileInfo(m_install->home()).lastModified(), homeModified);
        QVERIFY(folders()->ensureFolderExists("<NEW>"));
        QVERIFY(QFileInfo(m_install->root() + "/neu/tief").isDir());
        QCOMPARE(m_install->boxes.boxes, QStringList());

        QVERIFY(!folders()->ensureFolderExists("<UNDEFINED>/x"));
        QVERIFY(!folders()->ensureFolderExists("<BLOCKED>"));
        QCOMPARE(m_install->boxes.boxes,
                 (QStringList{"Verzeichnis-Fehler|Verzeichnissymbol nicht definiert: <UNDEFINED>/x",
                              "Verzeichnis-Fehler|Verzeichnis konnte nicht angelegt werden:\n" + m_install->root()
                                  + "/blocker/sub"}));
    }

private:
    static QString compose(const char* path) { return fromLatin1(DMFileName(path).compose()); }
    FolderManager* folders() const { return FolderManager::theInstance(); }

    std::unique_ptr<SettingsSandbox> m_install;
};

SC_TEST(TestFolderManager)
#include "tst_foldermanager.moc"
