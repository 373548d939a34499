#include "CrossPlatformApi.h"
#include "TempInstallation.h"
#include "TestMain.h"
#include "Uninstall.h"

#include <QDir>
#include <QProcess>
#include <QTest>

#include <memory>

#include <unistd.h>

namespace {

QByteArray infoPlist(const QByteArray& bundleId)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
           "<key>CFBundleIdentifier</key><string>" + bundleId + "</string></dict></plist>\n";
}

const QStringList xdgBases{QStringLiteral(".local/share"), QStringLiteral(".cache"), QStringLiteral(".config"),
                           QStringLiteral(".local/state")};

} // namespace

// Removing the installation in a temporary installation under a temporary
// home: the generated command is run for real.
class TestUninstall : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void removesBundleAndUserFolders();
    void hostileIdentifiersRemoveNothingElse();
    void cancelOrRunningComponentChangesNothing();
    void unsafeBundlePathIsRefused();
    void unwritableBundleNeedsAdministratorRights();

private:
    // An embedded program Resources/<name>.app with that identifier.
    void addEmbedded(const QString& name, const QByteArray& bundleId);
    // Per-user folders (with a file inside) for the identifier.
    void addUserFolders(const QString& bundleId);
    QString userFolder(const QString& base, const QString& bundleId) const;
    // Runs the recorded removal with /bin/sh in the home folder.
    void runRecordedCommand();
    // Files that must outlive every removal.
    void checkSentinels();

    std::unique_ptr<TempInstallation> m_install;
    QStringList m_boxes;   // "title|text"
    CrossPlatformApi::MessageBoxHandler m_previousBoxHandler;
    QMessageBox::StandardButton m_confirmation = QMessageBox::Ok;
    QList<QStringList> m_starts;   // program followed by its arguments
    bool m_startSucceeds = true;
    CrossPlatformApi::DetachedStarter m_previousStarter;
};

void TestUninstall::init()
{
    m_install = std::make_unique<TempInstallation>();
    m_boxes.clear();
    m_confirmation = QMessageBox::Ok;
    m_starts.clear();
    m_startSucceeds = true;
    m_previousBoxHandler = CrossPlatformApi::setMessageBoxHandler([this](const MessageBoxRequest& request) {
        m_boxes << request.title + QLatin1Char('|') + request.text;
        MessageBoxAnswer answer;
        answer.button = request.buttons.testFlag(QMessageBox::Cancel) ? m_confirmation : QMessageBox::Ok;
        return answer;
    });
    m_previousStarter = CrossPlatformApi::setDetachedStarter([this](const QString& program, const QStringList& args) {
        m_starts << (QStringList{program} + args);
        return m_startSucceeds;
    });

    QVERIFY(m_install->writeFile(QStringLiteral("Start-Center.app/Contents/Info.plist"),
                                 infoPlist("de.marvendo.startcenter")));
    addEmbedded(QStringLiteral("ORV"), "de.marvendo.orv");
    addUserFolders(QStringLiteral("de.marvendo.startcenter"));
    addUserFolders(QStringLiteral("de.marvendo.orv"));
    for (const QString& base : xdgBases)
        QVERIFY(m_install->writeFile(QStringLiteral("home/") + base + QStringLiteral("/keep"), "x"));
    QVERIFY(m_install->writeFile(QStringLiteral("home/keep"), "x"));
    QVERIFY(m_install->writeFile(QStringLiteral("outside/keep"), "x"));
}

void TestUninstall::cleanup()
{
    QFile::setPermissions(m_install->bundleDir(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    CrossPlatformApi::setDetachedStarter(m_previousStarter);
    CrossPlatformApi::setMessageBoxHandler(m_previousBoxHandler);
    m_install.reset();
}

void TestUninstall::addEmbedded(const QString& name, const QByteArray& bundleId)
{
    QVERIFY(m_install->writeResource(name + QStringLiteral(".app/Contents/Info.plist"), infoPlist(bundleId)));
}

void TestUninstall::addUserFolders(const QString& bundleId)
{
    for (const QString& base : xdgBases)
        QVERIFY(m_install->writeFile(userFolder(base, bundleId) + QStringLiteral("/data"), "x"));
}

QString TestUninstall::userFolder(const QString& base, const QString& bundleId) const
{
    return m_install->home() + QLatin1Char('/') + base + QLatin1Char('/') + bundleId;
}

void TestUninstall::runRecordedCommand()
{
    QCOMPARE(m_starts.size(), 1);
    const QStringList start = m_starts.first();
    QCOMPARE(start.mid(0, 2), (QStringList{QStringLiteral("/bin/sh"), QStringLiteral("-c")}));
    QProcess shell;
    shell.setWorkingDirectory(m_install->home());
    shell.start(start.at(0), start.mid(1));
    QVERIFY(shell.waitForFinished(10000));
    QCOMPARE(shell.exitCode(), 0);
}

void TestUninstall::checkSentinels()
{
    for (const QString& base : xdgBases)
        QVERIFY2(QFile::exists(m_install->home() + QLatin1Char('/') + base + QStringLiteral("/keep")), qPrintable(base));
    QVERIFY(QFile::exists(m_install->home() + QStringLiteral("/keep")));
    QVERIFY(QFile::exists(m_install->root() + QStringLiteral("/outside/keep")));
    QVERIFY(!QFile::exists(m_install->home() + QStringLiteral("/pwned")));
}

void TestUninstall::removesBundleAndUserFolders()
{
    addEmbedded(QStringLiteral("Report Tools"), "de.marvendo.report tools");
    addUserFolders(QStringLiteral("de.marvendo.report tools"));

    QCOMPARE(Uninstall::run(), Uninstall::Outcome::Started);
    QCOMPARE(m_boxes, QStringList{QStringLiteral("Deinstallation|Die Deinstallation wird gestartet.\n"
                                                        "Das Start-Center wird dazu beendet.")});
    // Launcher first, then the embedded programs; per identifier data, cache,
    // configuration, state.
    const QString command = m_starts.value(0).value(2);
    QVERIFY(command.startsWith(QStringLiteral("/bin/rm -rf \"") + userFolder(xdgBases[0], "de.marvendo.startcenter")));
    QStringList order;
    for (const QString& id : {QStringLiteral("de.marvendo.startcenter"), QStringLiteral("de.marvendo.orv")}) {
        for (const QString& base : xdgBases)
            order << userFolder(base, id);
    }
    for (int i = 1; i < order.size(); ++i)
        QVERIFY2(command.indexOf(order[i - 1] + '"') < command.indexOf(order[i] + '"'), qPrintable(order[i]));

    runRecordedCommand();
    QVERIFY(!QFileInfo::exists(m_install->bundleDir()));
    for (const char* id : {"de.marvendo.startcenter", "de.marvendo.orv", "de.marvendo.report tools"}) {
        for (const QString& base : xdgBases)
            QVERIFY2(!QFileInfo::exists(userFolder(base, id)), qPrintable(userFolder(base, id)));
    }
    checkSentinels();
}

void TestUninstall::hostileIdentifiersRemoveNothingElse()
{
    // Quoted correctly, these name ordinary folders, which are removed.
    const QList<QByteArray> quotedIds{"b\"; touch pwned; \"", "$(touch pwned)", "`touch pwned`", "c\\\"$HOME",
                                      "'; touch pwned; '"};
    // These would name a standard folder, or leave it, and are skipped.
    const QList<QByteArray> skippedIds{"a\"; touch $HOME/pwned; \"", "$(touch $HOME/pwned)", "", "   ", ".", "..",
                                       "../..", "tab\there", "del\x7F"};
    int n = 0;
    for (const QByteArray& id : quotedIds + skippedIds) {
        addEmbedded(QStringLiteral("P%1").arg(++n), id);
        if (quotedIds.contains(id))
            addUserFolders(QString::fromLatin1(id));
    }

    for (const QByteArray& id : skippedIds)
        QVERIFY2(!Uninstall::isUsableBundleId(QString::fromLatin1(id)), id.constData());

    QCOMPARE(Uninstall::run(), Uninstall::Outcome::Started);
    runRecordedCommand();
    QVERIFY(!QFileInfo::exists(m_install->bundleDir()));
    for (const QByteArray& id : quotedIds) {
        for (const QString& base : xdgBases)
            QVERIFY2(!QFileInfo::exists(userFolder(base, QString::fromLatin1(id))), id.constData());
    }
    checkSentinels();
    QVERIFY(QDir(m_install->home() + QStringLiteral("/.config")).exists());
}

void TestUninstall::cancelOrRunningComponentChangesNothing()
{
    m_confirmation = QMessageBox::Cancel;
    QCOMPARE(Uninstall::run(), Uninstall::Outcome::Cancelled);
    QVERIFY(m_starts.isEmpty());

    // A program of the launcher's own bundle is not a component; one inside
    // an embedded bundle is.
    m_boxes.clear();
    m_confirmation = QMessageBox::Ok;
    const QString own = m_install->bundleDir() + QStringLiteral("/Contents/MacOS/sleeper");
    const QString embedded = m_install->resourcesDir() + QStringLiteral("ORV.app/Contents/MacOS/ORV");
    QDir().mkpath(QFileInfo(embedded).path());
    QVERIFY(QFile::copy(QStringLiteral("/bin/sleep"), own));
    QVERIFY(QFile::copy(QStringLiteral("/bin/sleep"), embedded));
    QProcess ownProgram;
    ownProgram.start(own, {QStringLiteral("30")});
    QVERIFY(ownProgram.waitForStarted());
    QCOMPARE(Uninstall::runningComponent(m_install->bundleDir()), qint64(0));

    QProcess component;
    component.start(embedded, {QStringLiteral("30")});
    QVERIFY(component.waitForStarted());
    QCOMPARE(Uninstall::runningComponent(m_install->bundleDir()), component.processId());
    QCOMPARE(Uninstall::run(), Uninstall::Outcome::Blocked);
    component.kill();
    ownProgram.kill();
    component.waitForFinished();
    ownProgram.waitForFinished();

    QCOMPARE(m_boxes,
             QStringList{QStringLiteral("Deinstallation|Die Deinstallation kann nicht gestartet werden, solange die "
                                        "Marvendo oder eine ihrer Komponenten ausgeführt werden.\nBitte beenden Sie "
                                        "die Orvane-Erklärung und versuchen Sie es erneut.")});
    QVERIFY(m_starts.isEmpty());
    QVERIFY(QFile::exists(m_install->resourcesDir() + QStringLiteral("ORV.app/Contents/Info.plist")));
}

void TestUninstall::unsafeBundlePathIsRefused()
{
    const QString home = m_install->home();
    for (const QString& path : {QStringLiteral("/"), home, home + QLatin1Char('/'), m_install->root() + "/x",
                                QStringLiteral("relative.app"), QStringLiteral("/.app/..")}) {
        QVERIFY2(!Uninstall::isRemovableBundle(path), qPrintable(path));
    }
    QVERIFY(Uninstall::isRemovableBundle(m_install->bundleDir()));

    // A home folder that looks like a bundle, and a bundle holding the home.
    const QString outer = m_install->root() + QStringLiteral("/outer.app");
    for (const auto& [bundle, newHome] : {std::pair(outer, outer), std::pair(outer, outer + "/home")}) {
        m_boxes.clear();
        qputenv("HOME", newHome.toLocal8Bit());
        QVERIFY(m_install->writeFile(bundle + "/Contents/Info.plist", infoPlist("x")));
        QVERIFY(QDir().mkpath(newHome));
        CrossPlatformApi::overrideExecutablePath((bundle + "/Contents/MacOS/x").toStdString());
        QVERIFY(!Uninstall::isRemovableBundle(bundle));
        QCOMPARE(Uninstall::run(), Uninstall::Outcome::Failed);
        QCOMPARE(m_boxes, QStringList{"Deinstallation|Die Deinstallation konnte nicht gestartet werden!"});
        QVERIFY(m_starts.isEmpty());
    }
}

void TestUninstall::unwritableBundleNeedsAdministratorRights()
{
    if (geteuid() == 0)
        QSKIP("every folder is writable for the administrator");
    QVERIFY(QFile::setPermissions(m_install->bundleDir(), QFile::ReadOwner | QFile::ExeOwner));
    QCOMPARE(Uninstall::run(), Uninstall::Outcome::Started);
    QCOMPARE(m_starts.value(0).mid(0, 3),
             (QStringList{QStringLiteral("pkexec"), QStringLiteral("/bin/sh"), QStringLiteral("-c")}));

    // Refused rights or a missing pkexec: the launcher stays.
    m_starts.clear();
    m_boxes.clear();
    m_startSucceeds = false;
    QCOMPARE(Uninstall::run(), Uninstall::Outcome::Failed);
    QCOMPARE(m_boxes.value(1), QStringLiteral("Deinstallation|Die Deinstallation konnte nicht gestartet werden!"));
}

SC_TEST(TestUninstall)
#include "tst_uninstall.moc"
