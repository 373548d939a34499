#include "SettingsFixture.h"
#include "TempInstallation.h"
#include "TestMain.h"

#include <memory>

// The program's own locations, for an executable inside and outside a bundle.
class TestApplicationInfo : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_install = std::make_unique<SettingsSandbox>(); }
    void cleanup() { m_install.reset(); }

    void appDirFollowsExecutable_data()
    {
        QTest::addColumn<std::string>("executable");
        QTest::addColumn<std::string>("appDir");

        QTest::newRow("bundle") << std::string("/Applications/X.app/Contents/MacOS/x")
                                << std::string("/Applications/X.app/Contents/Resources/");
        QTest::newRow("plain folder") << std::string("/opt/tool/bin/x") << std::string("/opt/tool/bin/");
        QTest::newRow("bundle in bundle") << std::string("/A.app/Contents/MacOS/B.app/Contents/MacOS/b")
                                          << std::string("/A.app/Contents/MacOS/B.app/Contents/Resources/");
        QTest::newRow("no folder") << std::string("x") << std::string();
    }

    void appDirFollowsExecutable()
    {
        QFETCH(std::string, executable);
        QFETCH(std::string, appDir);

        CrossPlatformApi::overrideExecutablePath(executable);
        QCOMPARE(info()->getAppPath(), executable);
        QCOMPARE(info()->getAppDir(), appDir);
        QCOMPARE(info()->getFilenameInAppDir("ORVKonf.ini"), appDir + "ORVKonf.ini");

        // Computed once: a later change of the executable path is not seen.
        CrossPlatformApi::overrideExecutablePath("/elsewhere/y");
        QCOMPARE(info()->getAppDir(), appDir);
    }

    void tempDirIsReadOnEveryCall()
    {
        qunsetenv("TMPDIR");
        QCOMPARE(info()->getTempDir(), "/tmp");
        qputenv("TMPDIR", "/var/folders/xy/T/");
        QCOMPARE(info()->getTempDir(), "/var/folders/xy/T/");
    }

private:
    cApplicationInfo* info() const { return cApplicationInfo::theInstance(); }

    std::unique_ptr<SettingsSandbox> m_install;
};

SC_TEST(TestApplicationInfo)
#include "tst_applicationinfo.moc"
