#include "../settings/SettingsFixture.h"
#include "Date.h"
#include "OnlineUpdate.h"
#include "ProceedUpdateDlg.h"
#include "StartCenter.h"
#include "TempInstallation.h"
#include "TestMain.h"

#include <QElapsedTimer>
#include <QLineEdit>
#include <QTimer>

#include <memory>

#ifndef SC_DEMO_ONLINEUPDATE
#error "SC_DEMO_ONLINEUPDATE must name the built demo update program"
#endif

namespace {

std::string daysAgo(int days)
{
    return (cDate::today() - cDateSpan(days)).asString();
}

void resetAll()
{
    OnlineUpdate::resetInstance();
    resetSettingsSingletons();
}

// The sample installation with the real demo update program in its bundle,
// the settings opened as at start-up, and every message box answered with
// the button in `answer` (the boxes are kept).
class UpdateInstallation
{
public:
    UpdateInstallation()
    {
        resetAll();
        QVERIFY(m_install.copyDemoResources());
        QDir().mkpath(QFileInfo(programPath()).absolutePath());
        QVERIFY(QFile::copy(QStringLiteral(SC_DEMO_ONLINEUPDATE), programPath()));

        const std::string globalIni = cApplicationInfo::theInstance()->getFilenameInAppDir("ORVKonf.ini");
        FolderManager::theInstance()->parseSection(globalIni, "DirectorySymbols");
        FolderManager::theInstance()->parseSection(globalIni, "DirectoryDefs");
        cNvWinIni::theInstance()->enableCache(false);
        QVERIFY(cNvWinIni::theInstance()->setGlobalIniName("ORVKonf.ini"));
        FolderManager::theInstance()->ensureFolderExists("<COMMONSETTINGS>");

        m_previousHandler = CrossPlatformApi::setMessageBoxHandler([this](const MessageBoxRequest& box) {
            boxes.push_back(box);
            MessageBoxAnswer reply;
            reply.button = answer;
            reply.checkBoxChecked = box.checkBoxChecked != untickCheckBox;
            return reply;
        });
    }
    ~UpdateInstallation()
    {
        CrossPlatformApi::setMessageBoxHandler(m_previousHandler);
        resetAll();
    }

    QString programPath() const
    {
        return m_install.resourcesDir() + QStringLiteral("Online Update.app/Contents/MacOS/Online Update");
    }
    void setAnswers(const QByteArray& answers) const
    {
        QVERIFY(m_install.writeResource(QStringLiteral("Online Update.app/Contents/Resources/answers.ini"),
                                        "[Answers]\n" + answers));
    }
    // The arguments of each run of the update program so far.
    QStringList runs() const
    {
        QStringList result;
        const QByteArray log = m_install.readFile(m_install.home() + "/.local/state/de.marvendo.onlineupdate/runs.log");
        for (const QByteArray& line : log.split('\n')) {
            if (!line.isEmpty())
                result << QString::fromUtf8(line.mid(line.indexOf('\t') + 1));
        }
        return result;
    }
    void writeStatistics(const QByteArray& entries) const
    {
        QFile file(fromLatin1(DMFileName("<COMMONSETTINGS>/statistics.ini").compose()));
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write("[NvUpdate.ini]\n" + entries);
    }
    void writeReminderFile(const QByteArray& entries) const
    {
        QVERIFY(m_install.writeResource(QStringLiteral("Update.urc"), "[UpdateReminder]\n" + entries));
    }
    static void setCheckEvery(int days) { cConfiguration::theInstance()->Write("Start", "VersionCheckEvery", days); }
    static int checkEvery() { return cConfiguration::theInstance()->GetInt("Start", "VersionCheckEvery", -1); }

    QMessageBox::StandardButton answer = QMessageBox::No;
    bool untickCheckBox = false;
    std::vector<MessageBoxRequest> boxes;

private:
    TempInstallation m_install;
    CrossPlatformApi::MessageBoxHandler m_previousHandler;
};

OnlineUpdate* controller()
{
    return OnlineUpdate::theInstance();
}

// Runs the application's event loop until it ends or the time is up (7).
int runApplicationFor(int milliseconds)
{
    QTimer timeUp;
    timeUp.setSingleShot(true);
    QObject::connect(&timeUp, &QTimer::timeout, [] { QCoreApplication::exit(7); });
    timeUp.start(milliseconds);
    return QCoreApplication::exec();
}

} // namespace

// The launcher's side of the update program, run for real with the demo
// update program in a temporary installation.
class TestOnlineUpdate : public QObject
{
    Q_OBJECT

private slots:
    void autoCheckIsDueAfterTheInterval();
    void runsAnswerWithTheProgramsExitCode();
    void recentOfflineDataSparesTheOnlineCheck();
    void backgroundCheckDeliversItsResult();
    void userInputIsHeldBackWhileTheProgramRuns();
    void reminderFollowsTheReminderFile();
    void questionSplitsTheMessageAndSwitchesTheAutoCheck();
    void windowAsksOnceWhenANewVersionIsFound();
    void acceptedUpdateEndsTheLauncher();
};

void TestOnlineUpdate::autoCheckIsDueAfterTheInterval()
{
    UpdateInstallation install;
    QVERIFY(controller()->isExecutable());
    QVERIFY(!controller()->needAutoVersionCheck());   // the sample installation checks never

    UpdateInstallation::setCheckEvery(3);
    QCOMPARE(controller()->getDaysSinceLastVersionCheck(), -1);
    QVERIFY(controller()->needAutoVersionCheck());   // no last check: due

    install.writeStatistics("LastCheck=" + QByteArray(daysAgo(2).c_str()) + "\nVersionStatus=0\n");
    QCOMPARE(controller()->getDaysSinceLastVersionCheck(), 2);
    QCOMPARE(controller()->getDaysSinceLastValidVersionCheck(), -1);
    QVERIFY(!controller()->needAutoVersionCheck());

    install.writeStatistics("LastCheck=" + QByteArray(daysAgo(3).c_str()) + "\nVersionStatus=1\n");
    QCOMPARE(controller()->getDaysSinceLastValidVersionCheck(), 3);
    QVERIFY(controller()->needAutoVersionCheck());

    install.writeStatistics("LastCheck=gestern\nVersionStatus=kaputt\n");
    QCOMPARE(controller()->getDaysSinceLastVersionCheck(), -1);
    QCOMPARE(controller()->getDaysSinceLastValidVersionCheck(), -1);

    QVERIFY(QFile::remove(install.programPath()));
    QVERIFY(!controller()->isExecutable());
    QVERIFY(!controller()->needAutoVersionCheck());
    QVERIFY(install.runs().isEmpty());
}

void TestOnlineUpdate::runsAnswerWithTheProgramsExitCode()
{
    UpdateInstallation install;
    install.setAnswers("config=0\nupdate=80\n");
    QVERIFY(controller()->config());
    QVERIFY(controller()->update(false));
    QCOMPARE(install.runs(), QStringList({"-self -config -t", "-self -update -auto"}));

    install.setAnswers("config=1\nupdate=0\n");
    QVERIFY(!controller()->config());
    QVERIFY(!controller()->update(false));

    install.answer = QMessageBox::No;
    QVERIFY(!controller()->update(true));   // declined: the program is not run
    QCOMPARE(install.runs().size(), 4);

    const std::pair<int, QString> texts[] = {{82, "UpdateManager nicht installiert."},
                                             {83, "Vif nicht gefunden."},
                                             {84, "UpdateManager nicht aktuell."},
                                             {85, "UpdateManager kann nicht gestartet werden."}};
    for (const auto& [code, text] : texts) {
        install.setAnswers("check=" + QByteArray::number(code) + "\n");
        QCOMPARE(controller()->execOuExe("-check  -auto -h"), code);
        QCOMPARE(controller()->lastExitCodeText(), text);
    }
    QCOMPARE(install.runs().last(), "-self -check -auto -h");

    // A program that cannot be started counts as a manager that cannot start.
    QVERIFY(QFile::setPermissions(install.programPath(), QFile::ReadOwner | QFile::WriteOwner));
    install.setAnswers("check=82\n");
    QCOMPARE(controller()->check(), 85);
    QCOMPARE(controller()->lastExitCodeText(), "UpdateManager kann nicht gestartet werden.");
    QCOMPARE(controller()->getDaysSinceLastVersionCheck(), -1);   // no check took place
}

void TestOnlineUpdate::recentOfflineDataSparesTheOnlineCheck()
{
    UpdateInstallation install;
    install.setAnswers("offlinecheck=107\ncheck=0\n");
    int days = -1;
    QCOMPARE(controller()->checkOffline(days), 99);
    QCOMPARE(days, 7);
    QCOMPARE(controller()->checkNotOlderThan(7), 0);
    QCOMPARE(install.runs(), QStringList({"-self -offlinecheck -auto", "-self -offlinecheck -auto"}));

    QCOMPARE(controller()->checkNotOlderThan(6), 0);
    QCOMPARE(install.runs().last(), "-self -check -auto -t");
    QCOMPARE(controller()->getDaysSinceLastVersionCheck(), 0);   // the online check is remembered

    install.setAnswers("offlinecheck=84\ncheck=0\n");
    QCOMPARE(controller()->checkNotOlderThan(7), 84);
    install.setAnswers("offlinecheck=0\ncheck=2\n");
    QCOMPARE(controller()->checkNotOlderThan(7), 2);
    QCOMPARE(controller()->checkHidden(), 2);
    QCOMPARE(install.runs().mid(4), QStringList({"-self -offlinecheck -auto", "-self -offlinecheck -auto",
                                                 "-self -check -auto -t", "-self -check -auto -h -notify"}));
}

void TestOnlineUpdate::backgroundCheckDeliversItsResult()
{
    UpdateInstallation install;
    install.setAnswers("check=2\ndelay=300\n");
    QCOMPARE(controller()->getLastBackgroundCheckResult(), 0);
    QCOMPARE(controller()->startBackgroundCheck(0), 98);
    QCOMPARE(controller()->startBackgroundCheck(0), 98);   // no second check while one runs
    QTRY_COMPARE(controller()->getLastBackgroundCheckResult(), 2);
    QCOMPARE(install.runs(), QStringList({"-self -check -auto -h"}));
    QCOMPARE(controller()->getDaysSinceLastVersionCheck(), 0);

    install.setAnswers("check=0\n");
    QCOMPARE(controller()->startBackgroundCheck(10), 0);

    // Destroying the controller ends a check that is still running.
    install.setAnswers("check=2\ndelay=20000\n");
    QCOMPARE(controller()->startBackgroundCheck(0), 98);
    QElapsedTimer clock;
    clock.start();
    OnlineUpdate::resetInstance();
    QVERIFY(clock.elapsed() < 5000);
}

void TestOnlineUpdate::userInputIsHeldBackWhileTheProgramRuns()
{
    UpdateInstallation install;
    install.setAnswers("config=0\ndelay=500\n");
    QLineEdit edit;
    edit.show();
    bool timerRan = false;
    QTimer::singleShot(100, [&] {
        timerRan = true;
        QTest::keyClick(&edit, Qt::Key_A);
    });
    QVERIFY(controller()->config());
    QVERIFY(timerRan);
    QCOMPARE(edit.text(), QString());

    QTest::keyClick(&edit, Qt::Key_A);
    QCOMPARE(edit.text(), "a");
}

void TestOnlineUpdate::reminderFollowsTheReminderFile()
{
    UpdateInstallation install;
    auto rules = [](int firstRemindDaysAgo, int lastRemindDaysAgo) {
        return "OkRemindEvery=28\nBadRemindEvery=7\nFirstRemindDate=" + QByteArray(daysAgo(firstRemindDaysAgo).c_str())
               + "\nLastRemindDate=" + QByteArray(daysAgo(lastRemindDaysAgo).c_str()) + "\n";
    };
    auto statistics = [](int checked, int status, int reminded) {
        return "LastCheck=" + QByteArray(daysAgo(checked).c_str()) + "\nVersionStatus=" + QByteArray::number(status)
               + "\nLastReminder=" + QByteArray(daysAgo(reminded).c_str()) + "\n";
    };

    install.writeReminderFile(rules(0, -100));   // not yet past the first date
    QVERIFY(!controller()->needUpdateReminder());
    install.writeReminderFile(rules(1, -100));
    QCOMPARE(controller()->getLastUpdateReminder(), "01.10.2003");
    QVERIFY(controller()->needUpdateReminder());   // never checked, never reminded

    install.writeStatistics(statistics(30, 0, 7));
    QVERIFY(!controller()->needUpdateReminder());   // outdated: reminded a week ago
    install.writeStatistics(statistics(30, 0, 8));
    QVERIFY(controller()->needUpdateReminder());

    install.writeStatistics(statistics(28, 1, 29));
    QVERIFY(controller()->needUpdateReminder());
    install.writeStatistics(statistics(27, 1, 29));   // checked too recently
    QVERIFY(!controller()->needUpdateReminder());
    install.writeStatistics(statistics(28, 1, 28));   // reminded too recently
    QVERIFY(!controller()->needUpdateReminder());

    install.writeReminderFile(rules(100, 30));
    install.writeStatistics(statistics(30, 1, 29));   // checked on the last remind date
    QVERIFY(controller()->needUpdateReminder());
    install.writeStatistics(statistics(29, 1, 29));   // checked after it
    QVERIFY(!controller()->needUpdateReminder());

    install.writeStatistics(statistics(30, 1, 29));
    controller()->writeLastUpdateReminder();
    QCOMPARE(controller()->getLastUpdateReminder(), daysAgo(0));
    QVERIFY(!controller()->needUpdateReminder());
    QCOMPARE(controller()->getDaysSinceLastVersionCheck(), 30);   // other entries kept

    const std::string id = controller()->getStatisticsID();
    QCOMPARE(id.size(), size_t(36));
    QCOMPARE(controller()->getStatisticsID(), id);
    QVERIFY(controller()->getStatisticsActive());
    cConfiguration::theInstance()->Write("Security", "UseStats", 0);
    QVERIFY(!controller()->getStatisticsActive());
}

void TestOnlineUpdate::questionSplitsTheMessageAndSwitchesTheAutoCheck()
{
    UpdateInstallation install;
    UpdateInstallation::setCheckEvery(5);
    install.answer = QMessageBox::Yes;
    QCOMPARE(ProceedUpdateDlg(nullptr, ProceedUpdateDlg::updateAvailableMessage(), true).exec(), 1);
    const MessageBoxRequest& box = install.boxes.back();
    QCOMPARE(box.text, QString::fromUtf8("Eine neue Programmversion ist verfügbar!"));
    QVERIFY(!box.informativeText.isEmpty());
    QVERIFY(!box.informativeText.contains('<'));
    QCOMPARE(box.checkBoxText, QString::fromUtf8("Automatische Versionsprüfung bei Programmstart"));
    QVERIFY(box.checkBoxChecked);
    QCOMPARE(UpdateInstallation::checkEvery(), 5);   // left ticked: the interval stays

    install.answer = QMessageBox::No;
    install.untickCheckBox = true;
    QCOMPARE(ProceedUpdateDlg(nullptr, ProceedUpdateDlg::updateAvailableMessage(), true).exec(), 0);
    QCOMPARE(UpdateInstallation::checkEvery(), 0);
    QCOMPARE(ProceedUpdateDlg(nullptr, ProceedUpdateDlg::updateAvailableMessage(), true).exec(), 0);
    QCOMPARE(UpdateInstallation::checkEvery(), 1);

    QCOMPARE(ProceedUpdateDlg(nullptr, "Kein HTML", false).exec(), 0);
    QCOMPARE(install.boxes.back().text, "Kein HTML");
    QVERIFY(install.boxes.back().checkBoxText.isEmpty());
    QCOMPARE(UpdateInstallation::checkEvery(), 1);
}

void TestOnlineUpdate::windowAsksOnceWhenANewVersionIsFound()
{
    UpdateInstallation install;
    install.setAnswers("check=2\n");
    {
        StartCenter window;   // "VersionCheckEvery" 0: no check at start
        QCOMPARE(runApplicationFor(1000), 7);
    }
    QVERIFY(install.runs().isEmpty());
    QVERIFY(install.boxes.empty());

    UpdateInstallation::setCheckEvery(1);
    install.answer = QMessageBox::No;
    StartCenter window;
    QCOMPARE(runApplicationFor(2500), 7);   // declined: the launcher goes on
    QCOMPARE(install.runs(), QStringList({"-self -check -auto -h"}));
    QCOMPARE(install.boxes.size(), size_t(1));   // the poll stopped after the answer
    QCOMPARE(install.boxes.front().parent, static_cast<QWidget*>(&window));
}

void TestOnlineUpdate::acceptedUpdateEndsTheLauncher()
{
    UpdateInstallation install;
    install.setAnswers("check=2\nupdate=80\n");
    UpdateInstallation::setCheckEvery(1);
    install.answer = QMessageBox::Yes;
    StartCenter window;
    QCOMPARE(runApplicationFor(10000), 0);
    QCOMPARE(install.runs(), QStringList({"-self -check -auto -h", "-self -update -auto"}));
}

SC_TEST(TestOnlineUpdate)
#include "tst_onlineupdate.moc"
