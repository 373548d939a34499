#include "LauncherInstallation.h"
#include "TestMain.h"

#include <QDir>
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

    // A missing file is named in its box: the image container only warns,
    // the configuration refuses the start.
    void missingFilesAreNamed()
    {
        {
            LauncherInstallation installation;
            QVERIFY(installation.isReady());
            const QString container = installation.resourcesDir() + QStringLiteral("media/images_mac.cnt");
            QVERIFY(QFile::remove(container));
            const auto launcher = installation.start();
            QVERIFY2(launcher->waitForOutput("start-up complete"), launcher->output().constData());
            QCOMPARE(installation.boxes(), QStringList(QStringLiteral("Fehler|Die Bilddatei wurde nicht gefunden:\\n")
                                                       + container
                                                       + QStringLiteral("\\nDas Start-Center zeigt ohne sie keine Symbole.")));
        }

        LauncherInstallation installation;
        QVERIFY(installation.isReady());
        QVERIFY(QFile::remove(installation.resourcesDir() + QStringLiteral("ORVKonf.ini")));
        const auto refused = installation.start();
        QCOMPARE(refused->waitForExitCode(), 0);
        QCOMPARE(installation.boxes(),
                 QStringList(QStringLiteral("Fehler|Konfiguration nicht gefunden.\\nDas Programm kann nicht gestartet werden."
                                            "\\nGesucht wurde: ")
                             + installation.resourcesDir() + QStringLiteral("ORVKonf.ini")));
    }

    // A normal start prints nothing but what was switched on; without a
    // display the launcher says so in one German line.
    void consoleOutput()
    {
        LauncherInstallation installation;
        QVERIFY(installation.isReady());
        // As in a desktop session, which has a private runtime folder.
        const QString runtime = installation.root() + QStringLiteral("/runtime");
        QVERIFY(QDir().mkpath(runtime));
        QVERIFY(QFile::setPermissions(runtime, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        const auto launcher = installation.start([&runtime](QProcessEnvironment& environment) {
            environment.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("startcenter.startup.debug=true"));
            environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime);
        });
        QVERIFY2(launcher->waitForOutput("start-up complete\n"), launcher->output().constData());
        QTest::qWait(1500);   // the start sound comes once the window is idle
        QVERIFY(launcher->interrupt());
        QCOMPARE(launcher->waitForExitCode(), 1);
        QCOMPARE(launcher->output(), QByteArray("startcenter.startup: start-up complete\n"));

        const auto refused = installation.start([](QProcessEnvironment& environment) {
            for (const char* name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"})
                environment.remove(QLatin1String(name));
        });
        QCOMPARE(refused->waitForExitCode(), 1);
        const QString output = QString::fromLocal8Bit(refused->output());
        QVERIFY2(output.startsWith(QLatin1String("Start-Center: Keine grafische Anzeige")) && output.count('\n') == 1,
                 qPrintable(output));
    }
};

SC_TEST(StartupTest)
#include "tst_startup.moc"
