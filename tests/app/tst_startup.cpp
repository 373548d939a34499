#include "LauncherInstallation.h"
#include "TestMain.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

namespace {

// Sets an environment variable for the launchers a test starts, until the
// end of the test.
class ScopedEnvironment
{
public:
    ScopedEnvironment(const char* name, const QByteArray& value) : m_name(name) { qputenv(name, value); }
    ~ScopedEnvironment() { qunsetenv(m_name); }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    const char* m_name;
};

bool createFile(const QString& path)
{
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly);
}

} // namespace

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

    // Files given at the first start and through a later one reach the
    // sample tax program in their mode; relative names count from the
    // folder the launcher was started in, not the one it works in.
    void caseFilesOnTheCommandLine()
    {
        LauncherInstallation installation;
        QVERIFY(installation.isReady());
        const QString log = installation.root() + QStringLiteral("/arguments.log");
        const ScopedEnvironment headless("ORV_DEMO_HEADLESS", "1");
        const ScopedEnvironment logged("ORV_DEMO_ARGS_LOG", QFile::encodeName(log));
        const QString folder = installation.root() + QStringLiteral("/Fälle/");
        QVERIFY(createFile(folder + QStringLiteral("Lea 2011.est11")) && createFile(folder + QStringLiteral("-GbR 2011.fes11"))
                && createFile(folder + QStringLiteral("notiz.txt")));
        const auto starts = [&] { return QString::fromUtf8(installation.readFile(log)).split(QLatin1Char('\n'), Qt::SkipEmptyParts); };

        const auto first = installation.start({QStringLiteral("Lea 2011.est11")}, folder);
        QTRY_COMPARE_WITH_TIMEOUT(starts().size(), 1, LauncherProcess::Timeout);
        QCOMPARE(starts().at(0), QStringLiteral("-mode=normal\t") + folder + QStringLiteral("Lea 2011.est11"));

        const auto second = installation.start({QStringLiteral("--"), QStringLiteral("-GbR 2011.fes11"),
                                                QStringLiteral("notiz.txt")}, folder);
        QCOMPARE(second->waitForExitCode(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(starts().size(), 2, LauncherProcess::Timeout);
        QCOMPARE(starts().at(1), QStringLiteral("-mode=fest\t") + folder + QStringLiteral("-GbR 2011.fes11"));
        QTRY_COMPARE_WITH_TIMEOUT(installation.boxes().size(), 1, LauncherProcess::Timeout);
        QCOMPARE(installation.boxes().at(0), QStringLiteral("Steuerfall öffnen|Die Datei »") + folder
                                                 + QStringLiteral("notiz.txt« ist kein Steuerfall, den das Start-Center öffnen kann."));
        QVERIFY(first->isRunning());
    }

    void terminatingLauncherEndsAfterOpeningAFile()
    {
        LauncherInstallation installation;
        QVERIFY(installation.isReady());
        QVERIFY(installation.writeFile(QStringLiteral("home/.config/Marvendo/ORV17/Start-Center/ORVKonf.user.ini"),
                                       "[Settings]\r\nSetDefaultSettings=0\r\n[StartCenter]\r\nOnORVStart=Terminate\r\n"));
        const QString log = installation.root() + QStringLiteral("/arguments.log");
        const ScopedEnvironment headless("ORV_DEMO_HEADLESS", "1");
        const ScopedEnvironment logged("ORV_DEMO_ARGS_LOG", QFile::encodeName(log));
        const QString file = installation.root() + QStringLiteral("/Prognose 2012.vor12");
        QVERIFY(createFile(file));

        QCOMPARE(installation.start({file})->waitForExitCode(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(installation.readFile(log), (QStringLiteral("-mode=vorweg\t") + file + QLatin1Char('\n')).toUtf8(),
                                  LauncherProcess::Timeout);
    }

    // Help, version and mistakes need no display and start no window.
    void optionsAreAnsweredWithoutADisplay()
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
        environment.remove(QStringLiteral("DISPLAY"));
        environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
        const auto run = [&](const QString& option, QByteArray& out, QByteArray& err) {
            QProcess launcher;
            launcher.setProcessEnvironment(environment);
            launcher.start(QStringLiteral(SC_LAUNCHER_PATH), {option});
            if (!launcher.waitForFinished(LauncherProcess::Timeout) || launcher.exitStatus() != QProcess::NormalExit)
                return -1;
            out = launcher.readAllStandardOutput();
            err = launcher.readAllStandardError();
            return launcher.exitCode();
        };
        QByteArray out, err;
        QCOMPARE(run(QStringLiteral("--help"), out, err), 0);
        QVERIFY2(out.startsWith("Aufruf: startcenter") && err.isEmpty(), out + err);
        QCOMPARE(run(QStringLiteral("--version"), out, err), 0);
        QVERIFY2(out.startsWith("Start-Center 2012 (Version ") && out.count('\n') == 1, out);
        QCOMPARE(run(QStringLiteral("--fenster=gross"), out, err), 2);
        QVERIFY2(out.isEmpty() && err.startsWith("startcenter: ") && err.count('\n') == 1, err);
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
        const auto launcher = installation.start({}, {}, [&runtime](QProcessEnvironment& environment) {
            environment.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("startcenter.startup.debug=true"));
            environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime);
        });
        QVERIFY2(launcher->waitForOutput("start-up complete\n"), launcher->output().constData());
        QTest::qWait(1500);   // the start sound comes once the window is idle
        QVERIFY(launcher->interrupt());
        QCOMPARE(launcher->waitForExitCode(), 1);
        QCOMPARE(launcher->output(), QByteArray("startcenter.startup: start-up complete\n"));

        const auto refused = installation.start({}, {}, [](QProcessEnvironment& environment) {
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
