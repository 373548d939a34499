#include "../ui/UiSettings.h"
#include "TestMain.h"
#include "Uninstall.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QTest>

#include <memory>

#include <unistd.h>

namespace {
const QStringList xdgBases{".local/share", ".cache", ".config", ".local/state"};
const QString failureBox = "Deinstallation|Die Deinstallation konnte nicht gestartet werden!";
const QString confirmBox = "Deinstallation|Die Deinstallation wird gestartet.\nDas Start-Center wird dazu beendet.";
} // namespace

// Removing the installation from the sample installation under a temporary
// home; the removal runs for real. dpkg-query and pkexec are stand-ins.
class TestUninstall : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_install = std::make_unique<TempInstallation>();
        m_programs = 0;
        m_boxes.clear();
        m_details.clear();
        m_confirmation = QMessageBox::Ok;
        m_previousBoxHandler = CrossPlatformApi::setMessageBoxHandler([this](const MessageBoxRequest& request) {
            m_boxes << request.title + '|' + request.text;
            m_details << request.informativeText;
            const bool question = request.buttons == (QMessageBox::Ok | QMessageBox::Cancel);
            return MessageBoxAnswer{question ? m_confirmation : QMessageBox::Ok, false};
        });
        QVERIFY(m_install->addStandInProgram("dpkg-query", "exit 1"));   // installed by hand

        QVERIFY(m_install->copyDemoResources());
        QVERIFY(m_install->writeFile("Start-Center.app/Contents/Info.plist",
                                     "<plist><dict><key>CFBundleIdentifier</key><string>de.marvendo.startcenter</string>"
                                     "</dict></plist>"));
        QVERIFY(openInstalledSettings());
        QVERIFY(FolderManager::theInstance()->ensureFolderExists("<COMMONSETTINGS>"));
        QVERIFY(FolderManager::theInstance()->ensureFolderExists("<COMMONLOGFILES>"));
        for (const QString& base : xdgBases) {
            QVERIFY(m_install->writeFile(userFolder(base, "de.marvendo.startcenter") + "/data", "x"));
            QVERIFY(m_install->writeFile("home/" + base + "/keep", "x"));
        }
        addProgram("de.marvendo.orv", true);
    }

    void cleanup()
    {
        QFile::setPermissions(m_install->bundleDir(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        CrossPlatformApi::setMessageBoxHandler(m_previousBoxHandler);
        resetSettingsSingletons();
        m_install.reset();
    }

    void ownFoldersFollowTheSettingsAndSpareCaseFiles()
    {
        // An embedded program without an information file has no identifier.
        QVERIFY(QDir().mkpath(m_install->resourcesDir() + "P2.app/Contents/MacOS"));
        const QStringList ids = collectBundleIds(true);
        QCOMPARE(ids, (QStringList{"de.marvendo.startcenter", "de.marvendo.orv", ""}));

        const QString settings = m_install->home() + "/.config/Marvendo/ORV17/Start-Center";
        const QString shared = m_install->home() + "/.local/share/Marvendo/Orvane/";
        QStringList expected{settings, shared + "Settings",
                             m_install->home() + "/.local/state/Marvendo/Orvane/Logfiles"};
        for (const QString& id : {QStringLiteral("de.marvendo.startcenter"), QStringLiteral("de.marvendo.orv")}) {
            for (const QString& base : xdgBases)
                expected << userFolder(base, id);
        }
        QCOMPARE(Uninstall::ownFolders(ids), expected);

        // A working folder of one mode inside a folder of the program keeps
        // that folder, as do the home data folder and a settings folder that
        // is the home folder itself.
        QVERIFY(QDir().mkpath(userFolder(".cache", "de.marvendo.orv") + "/Fälle"));
        QVERIFY(m_install->writeFile("home/orv_einur.user.ini", "[Files]\nLastWorkDir="
                                                                    + userFolder(".cache", "de.marvendo.orv").toLatin1()
                                                                    + "/F\xE4lle\n"));
        QVERIFY(QDir().mkpath(shared + "Logfiles/Steuerfälle"));
        QByteArray configuration = m_install->readFile(m_install->resourcesDir() + "ORVKonf.ini");
        const qsizetype start = configuration.indexOf("UserSettings=");
        configuration.replace(start, configuration.indexOf('\n', start) - start, "UserSettings=%HOME%");
        configuration.replace("HomeDataDir=<SYS_MYDOCUMENTS>/Orvane Steuerf\xE4lle",
                              "HomeDataDir=<USER_APPDATA>/Logfiles/Steuerf\xE4lle");
        QVERIFY(m_install->writeResource("ORVKonf.ini", configuration));
        QVERIFY(openInstalledSettings());
        expected.removeOne(settings);
        expected.removeOne(shared + "Logfiles");
        expected.removeOne(userFolder(".cache", "de.marvendo.orv"));
        QCOMPARE(Uninstall::ownFolders(ids), expected);
    }

    void removesWhatItListsAndNothingElse()
    {
        // Quoted correctly, these name ordinary folders, which are removed.
        const QStringList quotedIds{"de.marvendo.report tools", "b\"; touch pwned; \"", "$(touch pwned)",
                                    "`touch pwned`", "c\\\"$HOME", "'; touch pwned; '"};
        // These would name a standard folder or leave it, and are skipped.
        const QList<QByteArray> skippedIds{"a\"; touch $HOME/pwned; \"", "$(touch $HOME/pwned)", "", "   ", ".", "..",
                                           "../..", "tab\there", "del\x7F"};
        for (const QString& id : quotedIds)
            addProgram(id.toLatin1(), true);
        for (const QByteArray& id : skippedIds) {
            addProgram(id, false);
            QVERIFY2(!Uninstall::isUsableBundleId(QString::fromLatin1(id)), id.constData());
        }
        const QString caseFolder = fromLatin1(cNvWinIni::theInstance()->getHomeDataPath());
        QVERIFY(m_install->writeFile(caseFolder.mid(m_install->root().size() + 1) + "Fall.est11", "x"));

        const QStringList folders = Uninstall::ownFolders(collectBundleIds(true));
        m_confirmation = QMessageBox::Cancel;
        QCOMPARE(Uninstall::run(), Uninstall::Outcome::Cancelled);
        QVERIFY(QFileInfo::exists(m_install->bundleDir()));
        m_confirmation = QMessageBox::Ok;
        const QString workingFolder = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_install->home()));
        const Uninstall::Outcome outcome = Uninstall::run();
        QDir::setCurrent(workingFolder);
        QCOMPARE(outcome, Uninstall::Outcome::Removed);
        QCOMPARE(m_boxes, (QStringList{confirmBox, confirmBox}));
        // The box lists the bundle and every folder that goes.
        QCOMPARE(m_details.last().split('\n').mid(1, folders.size() + 1), QStringList{m_install->bundleDir()} + folders);

        QVERIFY(!QFileInfo::exists(m_install->bundleDir()));
        for (const QString& id : QStringList{"de.marvendo.startcenter", "de.marvendo.orv"} + quotedIds) {
            for (const QString& base : xdgBases)
                QVERIFY2(!QFileInfo::exists(userFolder(base, id)), qPrintable(userFolder(base, id)));
        }
        QVERIFY(!QFileInfo::exists(m_install->home() + "/.local/share/Marvendo/Orvane/Settings"));
        for (const QString& base : xdgBases)
            QVERIFY2(QFile::exists(m_install->home() + '/' + base + "/keep"), qPrintable(base));
        QVERIFY(QFile::exists(caseFolder + "Fall.est11"));
        QVERIFY(!QFile::exists(m_install->home() + "/pwned"));
    }

    void packageInstallationLeavesTheProgramToDpkg()
    {
        const QString bundle = m_install->bundleDir();
        QVERIFY(m_install->addStandInProgram(
            "dpkg-query", "[ \"$1\" = -S ] || exit 2\necho \"diversion by x from: $2\"\ncase \"$2\" in\n"
                          "*.app) echo \"orvane-startcenter, orvane-data: $2\";;\n*) echo \"other: $2/x.app\";;\nesac"));
        QCOMPARE(Uninstall::owningPackages(bundle), (QStringList{"orvane-startcenter", "orvane-data"}));
        QVERIFY(Uninstall::owningPackages(m_install->root()).isEmpty());   // only a folder below it is owned
        QVERIFY(m_install->addStandInProgram("dpkg-query", "echo \"orvane-startcenter: $2\""));

        const QString packageBox = "Deinstallation|Das Start-Center wurde mit dem Paket »orvane-startcenter« "
                                   "installiert. Entfernen Sie es mit der Paketverwaltung, zum Beispiel mit dem "
                                   "Befehl\nsudo apt remove orvane-startcenter";
        m_confirmation = QMessageBox::Cancel;
        QCOMPARE(Uninstall::run(), Uninstall::Outcome::Cancelled);
        const QStringList folders = Uninstall::ownFolders(collectBundleIds(true));
        QVERIFY(m_details.value(0).contains('\n' + folders.join('\n') + '\n'));
        m_confirmation = QMessageBox::Ok;
        QCOMPARE(Uninstall::run(), Uninstall::Outcome::Removed);
        QCOMPARE(m_boxes, (QStringList{packageBox, packageBox}));
        QVERIFY(QFileInfo::exists(bundle + "/Contents/Info.plist"));
        for (const QString& folder : folders)
            QVERIFY2(!QFileInfo::exists(folder), qPrintable(folder));

        // Nothing of the user's left: only the command is shown.
        m_boxes.clear();
        QCOMPARE(Uninstall::run(), Uninstall::Outcome::Cancelled);
        QCOMPARE(m_boxes, QStringList{packageBox});
        QCOMPARE(m_details.last(), QString());
    }

    void refusedRightsKeepTheLauncher()
    {
        const QString bundle = m_install->bundleDir();
        const QStringList folders = Uninstall::ownFolders(collectBundleIds(true));
        const QString log = m_install->root() + "/pkexec.log";
        for (const int code : {126, 127}) {   // dismissed, not authorised
            QVERIFY(m_install->addStandInProgram("pkexec", "echo \"$@\" > '" + log.toLocal8Bit() + "'\nexit "
                                                               + QByteArray::number(code)));
            QCOMPARE(Uninstall::removeInstallation(bundle, folders, true), Uninstall::Outcome::Failed);
        }
        QCOMPARE(m_boxes, (QStringList{failureBox, failureBox}));
        QCOMPARE(QString::fromUtf8(m_install->readFile(log)).trimmed(),
                 "/bin/sh -c " + Uninstall::commandLine(folders + QStringList{bundle}).trimmed());
        QVERIFY(QFileInfo::exists(bundle));

        // Without pkexec the user is told the command to run.
        m_boxes.clear();
        QVERIFY(QFile::remove(m_install->root() + "/bin/pkexec"));
        qputenv("PATH", QFile::encodeName(m_install->root() + "/bin"));
        QCOMPARE(Uninstall::removeInstallation(bundle, folders, true), Uninstall::Outcome::Failed);
        QCOMPARE(m_boxes.size(), 1);
        QVERIFY(m_boxes.first().endsWith("\nsudo " + Uninstall::commandLine(folders + QStringList{bundle}).trimmed()));

        // Granted: the removal runs and the launcher ends.
        QVERIFY(m_install->addStandInProgram("pkexec", "exec \"$@\""));
        QCOMPARE(Uninstall::removeInstallation(bundle, folders, true), Uninstall::Outcome::Removed);
        QVERIFY(!QFileInfo::exists(bundle));
        QCOMPARE(m_boxes.size(), 1);
    }

    void unsafeBundleOrRunningComponentChangesNothing()
    {
        const QString home = m_install->home();
        for (const QString& path : {QString("/"), home, home + '/', m_install->root() + "/x", QString("relative.app")})
            QVERIFY2(!Uninstall::isRemovableBundle(path), qPrintable(path));
        QVERIFY(Uninstall::isRemovableBundle(m_install->bundleDir()));

        // A program of the launcher's own bundle is not a component; one inside
        // an embedded bundle is.
        const QString own = m_install->bundleDir() + "/Contents/MacOS/sleeper";
        const QString embedded = m_install->resourcesDir() + "P1.app/Contents/MacOS/P1";
        QVERIFY(QDir().mkpath(QFileInfo(embedded).path()));
        QProcess ownProgram, component;
        for (auto [process, path] : {std::pair(&ownProgram, own), std::pair(&component, embedded)}) {
            QVERIFY(QFile::copy("/bin/sleep", path));
            process->start(path, {"30"});
            QVERIFY(process->waitForStarted());
        }
        QCOMPARE(Uninstall::runningComponent(m_install->bundleDir()), component.processId());
        QCOMPARE(Uninstall::run(), Uninstall::Outcome::Blocked);
        component.kill();
        component.waitForFinished();
        QCOMPARE(Uninstall::runningComponent(m_install->bundleDir()), qint64(0));
        ownProgram.kill();
        ownProgram.waitForFinished();
        QCOMPARE(m_boxes, QStringList{"Deinstallation|Die Deinstallation kann nicht gestartet werden, solange die "
                                      "Marvendo oder eine ihrer Komponenten ausgeführt werden.\nBitte beenden Sie "
                                      "die Orvane-Erklärung und versuchen Sie es erneut."});

        // A home folder that looks like a bundle, and a bundle that holds the home.
        const QString outer = m_install->root() + "/outer.app";
        QVERIFY(m_install->writeFile(outer + "/Contents/Info.plist", "<plist><dict></dict></plist>"));
        CrossPlatformApi::overrideExecutablePath((outer + "/Contents/MacOS/x").toStdString());
        for (const QString& newHome : {outer, outer + "/home"}) {
            m_boxes.clear();
            qputenv("HOME", newHome.toLocal8Bit());
            QCOMPARE(Uninstall::run(), Uninstall::Outcome::Failed);
            QCOMPARE(m_boxes, QStringList{failureBox});
        }
        QVERIFY(QFileInfo::exists(m_install->resourcesDir() + "P1.app/Contents/Info.plist"));
        QVERIFY(QFileInfo::exists(outer));
    }

private:
    // An embedded program Resources/P<n>.app with that identifier, and
    // per-user folders for it when withFolders is set.
    void addProgram(const QByteArray& bundleId, bool withFolders)
    {
        QVERIFY(m_install->writeResource(QStringLiteral("P%1.app/Contents/Info.plist").arg(++m_programs),
                                         "<plist><dict><key>CFBundleIdentifier</key><string>" + bundleId
                                             + "</string></dict></plist>"));
        for (const QString& base : xdgBases) {
            if (withFolders)
                QVERIFY(m_install->writeFile(userFolder(base, QString::fromLatin1(bundleId)) + "/data", "x"));
        }
    }

    QString userFolder(const QString& base, const QString& bundleId) const
    {
        return m_install->home() + '/' + base + '/' + bundleId;
    }

    std::unique_ptr<TempInstallation> m_install;
    int m_programs = 0;
    QStringList m_boxes;     // "title|text"
    QStringList m_details;   // the informative text of each box
    QMessageBox::StandardButton m_confirmation = QMessageBox::Ok;
    CrossPlatformApi::MessageBoxHandler m_previousBoxHandler;
};

SC_TEST(TestUninstall)
#include "tst_uninstall.moc"
