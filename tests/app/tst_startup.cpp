#include "LauncherInstallation.h"
#include "TestMain.h"

#include <QFile>
#include <QTest>

// The real launcher as processes: a second start hands over to the first and
// ends, also after the first one was killed without a chance to clean up.
class StartupTest : public QObject
{
    Q_OBJECT

private slots:
    void secondStartActivatesTheFirst()
    {
        LauncherInstallation installation;
        QVERIFY(installation.isReady());
        const auto first = installation.start();
        QVERIFY2(first->waitForOutput("start-up complete"), first->output().constData());

        const auto second = installation.start();
        QCOMPARE(second->waitForExitCode(), 0);
        QVERIFY2(!second->output().contains("start-up complete"), second->output().constData());
        QVERIFY2(first->waitForOutput("main window activated"), first->output().constData());
        QVERIFY(first->isRunning());
        QCOMPARE(installation.boxes(), QStringList());
    }

    void killedLauncherDoesNotBlockTheNextStart()
    {
        LauncherInstallation installation;
        QVERIFY(installation.isReady());
        const auto killed = installation.start();
        QVERIFY2(killed->waitForOutput("start-up complete"), killed->output().constData());
        QVERIFY(killed->kill());

        // The next start takes the register over as the primary instance,
        // and the one after it hands over to that one again.
        const auto next = installation.start();
        QVERIFY2(next->waitForOutput("start-up complete"), next->output().constData());
        const auto later = installation.start();
        QCOMPARE(later->waitForExitCode(), 0);
        QVERIFY2(next->waitForOutput("main window activated"), next->output().constData());

        // Interrupted, the primary instance leaves the register on its way out.
        QVERIFY(next->interrupt());
        const auto last = installation.start();
        QVERIFY2(last->waitForOutput("start-up complete"), last->output().constData());
        QCOMPARE(installation.boxes(), QStringList());
    }

    void childProgramsFindTheBundlesLibraries()
    {
        LauncherInstallation installation;
        QVERIFY(installation.isReady());
        // The update program of a check due at start reports what it inherited.
        const QString seen = installation.root() + QStringLiteral("/library-path");
        const QString updateProgram = QStringLiteral("Online Update.app/Contents/MacOS/Online Update");
        QVERIFY(installation.writeResource(updateProgram, "#!/bin/sh\nprintf %s \"$LD_LIBRARY_PATH\" > '"
                                                              + seen.toLocal8Bit() + "'\nexit 0\n"));
        QVERIFY(QFile::setPermissions(installation.resourcesDir() + updateProgram,
                                      QFile::ReadOwner | QFile::ExeOwner));
        QByteArray configuration = installation.readFile(installation.resourcesDir() + QStringLiteral("ORVKonf.ini"));
        configuration.replace("VersionCheckEvery=0", "VersionCheckEvery=1").replace("DYLD_PATH=", "DYLD_PATH=/a:/b");
        QVERIFY(installation.writeResource(QStringLiteral("ORVKonf.ini"), configuration));

        const QByteArray inherited = qgetenv("LD_LIBRARY_PATH");
        qputenv("LD_LIBRARY_PATH", "/inherited");
        const auto launcher = installation.start();
        if (inherited.isEmpty())
            qunsetenv("LD_LIBRARY_PATH");
        else
            qputenv("LD_LIBRARY_PATH", inherited);
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(seen), LauncherProcess::Timeout);
        QTRY_COMPARE(installation.readFile(seen),
                     "/inherited:" + installation.bundleDir().toLocal8Bit() + "/Contents/Frameworks:/a:/b");
    }

    void missingConfigurationIsRefused()
    {
        LauncherInstallation installation;
        QVERIFY(installation.isReady());
        QVERIFY(QFile::remove(installation.resourcesDir() + QStringLiteral("ORVKonf.ini")));
        const auto refused = installation.start();
        QCOMPARE(refused->waitForExitCode(), 0);
        QCOMPARE(installation.boxes(),
                 QStringList(QStringLiteral("Fehler|Konfiguration nicht gefunden.\\nDas Programm kann nicht gestartet werden.")));
    }
};

SC_TEST(StartupTest)
#include "tst_startup.moc"
