#include "CrossPlatformApi.h"
#include "TempInstallation.h"
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
}

// Removing the installation from a temporary installation under a temporary
// home; the generated command is run for real.
class TestUninstall : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_install = std::make_unique<TempInstallation>();
        m_programs = 0;
        m_boxes.clear();
        m_starts.clear();
        m_confirmation = QMessageBox::Ok;
        m_startSucceeds = true;
        m_previousBoxHandler = CrossPlatformApi::setMessageBoxHandler([this](const MessageBoxRequest& request) {
            m_boxes << request.title + '|' + request.text;
            const bool question = request.buttons == (QMessageBox::Ok | QMessageBox::Cancel);
            return MessageBoxAnswer{question ? m_confirmation : QMessageBox::Ok, false};
        });
        m_previousStarter = CrossPlatformApi::setDetachedStarter([this](const QString& program, const QStringList& args) {
            m_starts << (QStringList{program} + args);
            return m_startSucceeds;
        });

        QVERIFY(m_install->writeFile("Start-Center.app/Contents/Info.plist",
                                     "<plist><dict><key>CFBundleIdentifier</key><string>de.marvendo.startcenter</string>"
                                     "</dict></plist>"));
        for (const QString& base : xdgBases) {
            QVERIFY(m_install->writeFile(userFolder(base, "de.marvendo.startcenter") + "/data", "x"));
            QVERIFY(m_install->writeFile("home/" + base + "/keep", "x"));
        }
        addProgram("de.marvendo.orv", true);
    }

    void cleanup()
    {
        QFile::setPermissions(m_install->bundleDir(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        CrossPlatformApi::setDetachedStarter(m_previousStarter);
        CrossPlatformApi::setMessageBoxHandler(m_previousBoxHandler);
        m_install.reset();
    }

    void removesInstallationAndNothingElse()
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

        QCOMPARE(Uninstall::run(), Uninstall::Outcome::Started);
        QCOMPARE(m_boxes, QStringList{confirmBox()});
        QCOMPARE(m_starts.size(), 1);
        const QStringList start = m_starts.first();
        QCOMPARE(start.mid(0, 2), (QStringList{"/bin/sh", "-c"}));
        // The launcher's folders first, then the embedded programs'; per
        // identifier data, cache, configuration, state.
        QStringList order;
        for (const QString& id : {QStringLiteral("de.marvendo.startcenter"), QStringLiteral("de.marvendo.orv")}) {
            for (const QString& base : xdgBases)
                order << userFolder(base, id) + '"';
        }
        for (int i = 1; i < order.size(); ++i)
            QVERIFY2(start[2].indexOf(order[i - 1]) < start[2].indexOf(order[i]), qPrintable(order[i]));

        QProcess shell;
        shell.setWorkingDirectory(m_install->home());
        shell.start(start[0], start.mid(1));
        QVERIFY(shell.waitForFinished(10000));
        QCOMPARE(shell.exitCode(), 0);

        QVERIFY(!QFileInfo::exists(m_install->bundleDir()));
        for (const QString& id : QStringList{"de.marvendo.startcenter", "de.marvendo.orv"} + quotedIds) {
            for (const QString& base : xdgBases)
                QVERIFY2(!QFileInfo::exists(userFolder(base, id)), qPrintable(userFolder(base, id)));
        }
        for (const QString& base : xdgBases)
            QVERIFY2(QFile::exists(m_install->home() + '/' + base + "/keep"), qPrintable(base));
        QVERIFY(!QFile::exists(m_install->home() + "/pwned"));
    }

    void cancelOrRunningComponentChangesNothing()
    {
        m_confirmation = QMessageBox::Cancel;
        QCOMPARE(Uninstall::run(), Uninstall::Outcome::Cancelled);
        QCOMPARE(m_boxes, QStringList{confirmBox()});

        // A program of the launcher's own bundle is not a component; one inside
        // an embedded bundle is.
        m_boxes.clear();
        m_confirmation = QMessageBox::Ok;
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
        QVERIFY(m_starts.isEmpty());
        QVERIFY(QFileInfo::exists(m_install->resourcesDir() + "P1.app/Contents/Info.plist"));
    }

    void unsafeBundleOrRefusedStartKeepsLauncher()
    {
        const QString failure = "Deinstallation|Die Deinstallation konnte nicht gestartet werden!";
        const QString home = m_install->home();
        for (const QString& path : {QString("/"), home, home + '/', m_install->root() + "/x", QString("relative.app")})
            QVERIFY2(!Uninstall::isRemovableBundle(path), qPrintable(path));
        QVERIFY(Uninstall::isRemovableBundle(m_install->bundleDir()));

        if (geteuid() != 0) {   // every folder is writable for the administrator
            QVERIFY(QFile::setPermissions(m_install->bundleDir(), QFile::ReadOwner | QFile::ExeOwner));
            QCOMPARE(Uninstall::run(), Uninstall::Outcome::Started);
            QCOMPARE(m_starts.value(0).mid(0, 3), (QStringList{"pkexec", "/bin/sh", "-c"}));
        }
        // Refused rights or no shell: the launcher stays.
        m_boxes.clear();
        m_startSucceeds = false;
        QCOMPARE(Uninstall::run(), Uninstall::Outcome::Failed);
        QCOMPARE(m_boxes, (QStringList{confirmBox(), failure}));

        // A home folder that looks like a bundle, and a bundle that holds the home.
        const QString outer = m_install->root() + "/outer.app";
        QVERIFY(m_install->writeFile(outer + "/Contents/Info.plist", "<plist><dict></dict></plist>"));
        CrossPlatformApi::overrideExecutablePath((outer + "/Contents/MacOS/x").toStdString());
        for (const QString& newHome : {outer, outer + "/home"}) {
            m_boxes.clear();
            qputenv("HOME", newHome.toLocal8Bit());
            QCOMPARE(Uninstall::run(), Uninstall::Outcome::Failed);
            QCOMPARE(m_boxes, QStringList{failure});
        }
        QCOMPARE(m_starts.size(), geteuid() != 0 ? 2 : 1);
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
    QString confirmBox() const
    {
        return "Deinstallation|Die Deinstallation wird gestartet.\nDas Start-Center wird dazu beendet.";
    }

    std::unique_ptr<TempInstallation> m_install;
    int m_programs = 0;
    QStringList m_boxes;   // "title|text"
    QMessageBox::StandardButton m_confirmation = QMessageBox::Ok;
    QList<QStringList> m_starts;   // program followed by its arguments
    bool m_startSucceeds = true;
    CrossPlatformApi::MessageBoxHandler m_previousBoxHandler;
    CrossPlatformApi::DetachedStarter m_previousStarter;
};

SC_TEST(TestUninstall)
#include "tst_uninstall.moc"
