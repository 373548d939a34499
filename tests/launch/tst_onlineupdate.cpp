#include "../ui/UiSettings.h"
#include "Date.h"
#include "OnlineUpdate.h"
#include "StartCenter.h"
#include "TempInstallation.h"
#include "TestMain.h"

#include <QElapsedTimer>
#include <QLineEdit>
#include <QTimer>

namespace {

QByteArray daysAgo(int days)
{
    return QByteArray::fromStdString((cDate::today() - cDateSpan(days)).asString());
}

// The sample installation with the real demo update program in its bundle,
// the settings opened as at start-up, and every message box recorded and
// answered with `answer` (the check box flipped when `flipCheckBox`).
class UpdateInstallation
{
public:
    UpdateInstallation()
    {
        OnlineUpdate::resetInstance();
        QVERIFY(m_install.copyDemoResources());
        QDir().mkpath(QFileInfo(programPath()).absolutePath());
        QVERIFY(QFile::copy(QStringLiteral(SC_DEMO_ONLINEUPDATE), programPath()));
        QVERIFY(openInstalledSettings());
        FolderManager::theInstance()->ensureFolderExists("<COMMONSETTINGS>");

        m_previousHandler = CrossPlatformApi::setMessageBoxHandler([this](const MessageBoxRequest& box) {
            boxes.push_back(box);
            return MessageBoxAnswer{answer, box.checkBoxChecked != flipCheckBox};
        });
    }
    ~UpdateInstallation()
    {
        CrossPlatformApi::setMessageBoxHandler(m_previousHandler);
        OnlineUpdate::resetInstance();
        resetSettingsSingletons();
    }

    QString programPath() const
    {
        return m_install.resourcesDir() + QStringLiteral("Online Update.app/Contents/MacOS/Online Update");
    }
    void setAnswers(const QByteArray& answers) const
    {
        m_install.writeResource("Online Update.app/Contents/Resources/answers.ini", "[Answers]\n" + answers);
    }
    // The arguments of each run of the update program so far.
    QStringList runs() const
    {
        const QString log = m_install.home() + "/.local/state/de.marvendo.onlineupdate/runs.log";
        return QString::fromUtf8(m_install.readFile(log)).split('\n', Qt::SkipEmptyParts);
    }
    void writeStatistics(const QByteArray& entries) const
    {
        QFile file(fromLatin1(DMFileName("<COMMONSETTINGS>/statistics.ini").compose()));
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write("[NvUpdate.ini]\n" + entries);
    }
    void writeReminderFile(const QByteArray& entries) const
    {
        m_install.writeResource("Update.urc", "[UpdateReminder]\n" + entries);
    }

    QMessageBox::StandardButton answer = QMessageBox::No;
    bool flipCheckBox = false;
    std::vector<MessageBoxRequest> boxes;

private:
    TempInstallation m_install;
    CrossPlatformApi::MessageBoxHandler m_previousHandler;
};

OnlineUpdate* controller()
{
    return OnlineUpdate::theInstance();
}

void setCheckEvery(int days)
{
    cConfiguration::theInstance()->Write("Start", "VersionCheckEvery", days);
}

int checkEvery()
{
    return cConfiguration::theInstance()->GetInt("Start", "VersionCheckEvery", -1);
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
    void autoCheckIsDueAfterTheInterval()
    {
        UpdateInstallation install;
        QVERIFY(controller()->isExecutable());
        QVERIFY(!controller()->needAutoVersionCheck());   // the sample installation never checks

        setCheckEvery(3);
        QVERIFY(controller()->needAutoVersionCheck());   // no last check: due
        install.writeStatistics("LastCheck=" + daysAgo(2) + "\nVersionStatus=0\n");
        QCOMPARE(controller()->getDaysSinceLastValidVersionCheck(), -1);
        QVERIFY(!controller()->needAutoVersionCheck());
        install.writeStatistics("LastCheck=" + daysAgo(3) + "\nVersionStatus=1\n");
        QCOMPARE(controller()->getDaysSinceLastValidVersionCheck(), 3);
        QVERIFY(controller()->needAutoVersionCheck());

        QVERIFY(QFile::remove(install.programPath()));
        QVERIFY(!controller()->isExecutable());
        QVERIFY(!controller()->needAutoVersionCheck());
        QVERIFY(install.runs().isEmpty());
    }

    void runsAnswerWithTheProgramsExitCode()
    {
        UpdateInstallation install;
        install.setAnswers("config=0\nupdate=80\n");
        QVERIFY(controller()->config());
        QVERIFY(controller()->update(false));
        install.setAnswers("config=1\nupdate=0\n");
        QVERIFY(!controller()->config());
        QVERIFY(!controller()->update(false));
        QVERIFY(!controller()->update(true));   // declined: the program is not run
        QCOMPARE(install.runs(), QStringList({"-self -config -t", "-self -update -auto", "-self -config -t",
                                              "-self -update -auto"}));

        const char* const texts[] = {"UpdateManager nicht installiert.", "Vif nicht gefunden.",
                                     "UpdateManager nicht aktuell.", "UpdateManager kann nicht gestartet werden."};
        for (int code = 82; code <= 85; ++code) {
            install.setAnswers("check=" + QByteArray::number(code) + "\n");
            QCOMPARE(controller()->execOuExe("-check  -auto -h"), code);
            QCOMPARE(controller()->lastExitCodeText(), QString(texts[code - 82]));
        }
        QCOMPARE(install.runs().last(), QString("-self -check -auto -h"));

        // A program that cannot be started counts as a manager that cannot start.
        QVERIFY(QFile::setPermissions(install.programPath(), QFile::ReadOwner | QFile::WriteOwner));
        install.setAnswers("check=82\n");
        QCOMPARE(controller()->check(), 85);
        QCOMPARE(controller()->lastExitCodeText(), QString(texts[3]));
        QCOMPARE(controller()->getDaysSinceLastVersionCheck(), -1);   // no check took place

        // Only a check that reached its verdict moves the date of the last check.
        QVERIFY(QFile::setPermissions(install.programPath(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        install.writeStatistics("LastCheck=" + daysAgo(5) + "\n");
        for (const int failure : {81, 1, 97}) {
            install.setAnswers("check=" + QByteArray::number(failure) + "\n");
            QCOMPARE(controller()->check(), failure);
            QCOMPARE(controller()->getDaysSinceLastVersionCheck(), 5);
        }
        install.setAnswers("check=0\n");
        QCOMPARE(controller()->check(), 0);
        QCOMPARE(controller()->getDaysSinceLastVersionCheck(), 0);
    }

    void recentOfflineDataSparesTheOnlineCheck()
    {
        UpdateInstallation install;
        install.setAnswers("offlinecheck=107\ncheck=2\n");
        int days = -1;
        QCOMPARE(controller()->checkOffline(days), 99);
        QCOMPARE(days, 7);
        QCOMPARE(controller()->checkNotOlderThan(7), 0);
        QCOMPARE(install.runs(), QStringList({"-self -offlinecheck -auto", "-self -offlinecheck -auto"}));

        QCOMPARE(controller()->checkNotOlderThan(6), 2);
        QCOMPARE(install.runs().last(), QString("-self -check -auto -t"));
        QCOMPARE(controller()->getDaysSinceLastVersionCheck(), 0);   // the online check is remembered

        install.setAnswers("offlinecheck=84\ncheck=0\n");
        QCOMPARE(controller()->checkNotOlderThan(7), 84);
        QCOMPARE(install.runs().size(), 5);
    }

    void backgroundCheckDeliversItsResult()
    {
        UpdateInstallation install;
        install.setAnswers("check=2\ndelay=300\n");
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

    void userInputIsHeldBackWhileTheProgramRuns()
    {
        UpdateInstallation install;
        install.setAnswers("config=0\ndelay=500\n");
        QLineEdit edit;
        edit.show();
        bool timerRan = false;
        QTimer::singleShot(100, &edit, [&] {
            timerRan = true;
            QTest::keyClick(&edit, Qt::Key_A);
        });
        QVERIFY(controller()->config());
        QVERIFY(timerRan);   // the event loop ran meanwhile
        QCOMPARE(edit.text(), QString());

        QTest::keyClick(&edit, Qt::Key_A);
        QCOMPARE(edit.text(), QString("a"));
    }

    // Dates in days before today (negative: in the future); reminders every 28
    // days for a current version, every 7 for an outdated one.
    void reminderFollowsTheReminderFile_data()
    {
        QTest::addColumn<int>("firstRemind");
        QTest::addColumn<int>("lastRemind");
        QTest::addColumn<QByteArray>("statistics");
        QTest::addColumn<bool>("remind");

        auto stats = [](int checked, int status, int reminded) {
            return "LastCheck=" + daysAgo(checked) + "\nVersionStatus=" + QByteArray::number(status)
                   + "\nLastReminder=" + daysAgo(reminded) + "\n";
        };
        QTest::newRow("on the first date") << 0 << -100 << QByteArray() << false;
        QTest::newRow("never checked or reminded") << 1 << -100 << QByteArray() << true;
        QTest::newRow("outdated, reminded 7 days ago") << 1 << -100 << stats(30, 0, 7) << false;
        QTest::newRow("outdated, reminded 8 days ago") << 1 << -100 << stats(30, 0, 8) << true;
        QTest::newRow("current, checked and reminded long ago") << 1 << -100 << stats(28, 1, 29) << true;
        QTest::newRow("current, checked 27 days ago") << 1 << -100 << stats(27, 1, 29) << false;
        QTest::newRow("current, reminded 28 days ago") << 1 << -100 << stats(28, 1, 28) << false;
        QTest::newRow("checked on the last date") << 100 << 30 << stats(30, 1, 29) << true;
        QTest::newRow("checked after the last date") << 100 << 30 << stats(29, 1, 29) << false;
        QTest::newRow("unreadable last check") << 100 << 30 << QByteArray("LastCheck=??.??.????\n") << true;
    }

    void reminderFollowsTheReminderFile()
    {
        QFETCH(int, firstRemind);
        QFETCH(int, lastRemind);
        QFETCH(QByteArray, statistics);
        QFETCH(bool, remind);

        UpdateInstallation install;
        install.writeReminderFile("OkRemindEvery=28\nBadRemindEvery=7\nFirstRemindDate=" + daysAgo(firstRemind)
                                  + "\nLastRemindDate=" + daysAgo(lastRemind) + "\n");
        install.writeStatistics(statistics);
        QCOMPARE(controller()->needUpdateReminder(), remind);

        controller()->writeLastUpdateReminder();
        QCOMPARE(QByteArray::fromStdString(controller()->getLastUpdateReminder()), daysAgo(0));
        QVERIFY(!controller()->needUpdateReminder());
    }

    void windowAsksOnceWhenANewVersionIsFound()
    {
        UpdateInstallation install;
        install.setAnswers("check=2\nupdate=80\n");
        {
            StartCenter window;   // "VersionCheckEvery" 0: no check at start
            QCOMPARE(runApplicationFor(1000), 7);
        }
        QVERIFY(install.runs().isEmpty());

        setCheckEvery(1);
        install.flipCheckBox = true;
        {
            StartCenter window;
            QCOMPARE(runApplicationFor(4000), 7);   // declined: the launcher goes on
            QCOMPARE(install.boxes.size(), size_t(1));   // the poll stopped after the answer
            QCOMPARE(install.boxes.front().parent, static_cast<QWidget*>(&window));
        }
        const MessageBoxRequest& box = install.boxes.front();
        QCOMPARE(box.text, QString::fromUtf8("Eine neue Programmversion ist verfügbar!"));
        QVERIFY(!box.informativeText.isEmpty() && !box.informativeText.contains('<'));
        QCOMPARE(box.checkBoxText, QString::fromUtf8("Automatische Versionsprüfung bei Programmstart"));
        QVERIFY(box.checkBoxChecked);
        QCOMPARE(checkEvery(), 0);   // unticked

        setCheckEvery(5);
        install.writeStatistics(QByteArray());   // due again
        install.flipCheckBox = false;
        install.answer = QMessageBox::Yes;   // accepted: update, then exit status 0
        StartCenter window;
        QCOMPARE(runApplicationFor(10000), 0);
        QCOMPARE(install.runs(), QStringList({"-self -check -auto -h", "-self -check -auto -h", "-self -update -auto"}));
        QCOMPARE(checkEvery(), 5);   // left ticked: the interval stays
    }
};

SC_TEST(TestOnlineUpdate)
#include "tst_onlineupdate.moc"
