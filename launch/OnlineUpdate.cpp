#include "OnlineUpdate.h"

#include "ApplicationInfo.h"
#include "CheckVersionBackgroundThread.h"
#include "Configuration.h"
#include "CrossPlatformApi.h"
#include "DMFileName.h"
#include "Date.h"
#include "IniFile.h"
#include "ProceedUpdateDlg.h"
#include "ProcessWait.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QProcess>

#include <cstdlib>
#include <optional>

namespace {

const char* const cszUpdateProgram = "Online Update.app/Contents/MacOS/Online Update";
const char* const cszStatisticsFile = "<COMMONSETTINGS>/statistics.ini";
const char* const cszStatisticsSection = "NvUpdate.ini";
const char* const cszReminderFile = "Update.urc";
const char* const cszReminderSection = "UpdateReminder";
const char* const cszDateFormat = "%d.%m.%Y";
const char* const cszDefaultLastReminder = "01.10.2003";

std::string statisticsFilePath()
{
    return DMFileName(cszStatisticsFile).compose();
}

// A number of an INI file; a missing value or one that is not a number counts
// as the default (the files come from outside and must not stop the program).
int readInt(cIniFile& file, const char* section, const char* key, int defaultValue)
{
    const std::string text = file.GetString(section, key, "");
    char* end = nullptr;
    const long value = std::strtol(text.c_str(), &end, 10);
    return text.empty() || *end != '\0' ? defaultValue : int(value);
}

// A date of an INI file; nothing when it is missing or unreadable.
std::optional<cDate> readDate(cIniFile& file, const char* section, const char* key)
{
    cDate date;
    if (date.fromString(file.GetString(section, key, "")))
        return date;
    return std::nullopt;
}

cDate readDate(cIniFile& file, const char* section, const char* key, const cDate& fallback)
{
    return readDate(file, section, key).value_or(fallback);
}

int daysSince(const cDate& date)
{
    return (cDate::today() - date).getDays();
}

void writeStatistic(const char* key, const std::string& value)
{
    const std::string path = statisticsFilePath();
    if (path.empty())
        return;
    cIniFile statistics(path, false, false);
    statistics.WriteString(cszStatisticsSection, key, value.c_str());
}

bool onGuiThread()
{
    const QCoreApplication* application = QCoreApplication::instance();
    return application && QThread::currentThread() == application->thread();
}

// Starts the update program with "-self " + args. Its output goes to ours,
// so that a talkative program can never block on a full pipe.
bool startUpdateProgram(QProcess& process, const QString& program, const QString& args)
{
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(program, (QStringLiteral("-self ") + args).split(QLatin1Char(' '), Qt::SkipEmptyParts),
                  QIODevice::ReadWrite);
    if (process.waitForStarted())
        return true;
    CrossPlatformApi::outputDebugString("onlineUpdateApp.Run() - failed");
    return false;
}

int exitCodeOf(const QProcess& process)
{
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

// Only a check that reached its verdict (the installed version is current, or
// a newer one exists) counts as the last version check; after any failure the
// next start tries again.
bool checkCompleted(int code)
{
    return code == OnlineUpdate::VersionCurrent || code == OnlineUpdate::NewVersionAvailable;
}

} // namespace

OnlineUpdate* OnlineUpdate::theInstance()
{
    return SingletonSlot<OnlineUpdate>::instance();
}

void OnlineUpdate::resetInstance()
{
    SingletonSlot<OnlineUpdate>::reset();
}

OnlineUpdate::OnlineUpdate()
    : m_programPath(cApplicationInfo::theInstance()->getFilenameInAppDir(cszUpdateProgram))
{
}

OnlineUpdate::~OnlineUpdate()
{
    if (m_thread) {
        m_thread->requestInterruption();
        m_thread->wait();
        delete m_thread;
    }
}

bool OnlineUpdate::isExecutable() const
{
    return QFileInfo::exists(CrossPlatformApi::toQString(m_programPath))
           && CrossPlatformApi::getDriveType(cApplicationInfo::theInstance()->getAppDir()) != 5;
}

bool OnlineUpdate::needAutoVersionCheck()
{
    if (!isExecutable())
        return false;
    const int checkEvery = cConfiguration::theInstance()->GetInt("Start", "VersionCheckEvery", 0);
    if (checkEvery == 0)
        return false;
    const int days = getDaysSinceLastVersionCheck();
    return days < 0 || days >= checkEvery;
}

int OnlineUpdate::startBackgroundCheck(unsigned int waitSeconds)
{
    if (!m_thread) {
        m_lastBackgroundResult = CheckRunning;
        m_thread = new CheckVersionBackgroundThread(CrossPlatformApi::toQString(m_programPath));
        connect(m_thread, &QThread::finished, this, &OnlineUpdate::versionCheckThreadFinished);
        // The lowest priority but one (Qt's lowest is IdlePriority): the
        // check must not slow down the start, nor wait for an idle machine.
        m_thread->start(QThread::LowestPriority);
    }
    // The finished() signal is queued to this thread; when the wait succeeds
    // it is delivered here, so that the caller sees the result at once.
    if (waitSeconds != 0 && m_thread->wait(QDeadlineTimer(qint64(waitSeconds) * 1000)))
        QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
    return m_lastBackgroundResult;
}

void OnlineUpdate::versionCheckThreadFinished()
{
    if (!m_thread)
        return;
    const int code = m_thread->result();
    m_thread->deleteLater();
    m_thread = nullptr;
    rememberExitCode(code);
    if (checkCompleted(code))
        writeLastCheck();
    m_lastBackgroundResult = code;
}

int OnlineUpdate::runUpdateProgram(const QString& program, const QString& args)
{
    QProcess process;
    if (!startUpdateProgram(process, program, args))
        return ManagerCannotStart;
    while (process.state() != QProcess::NotRunning && !process.waitForFinished(100)) {
        if (QThread::currentThread()->isInterruptionRequested()) {
            process.kill();
            process.waitForFinished();
            return -1;
        }
    }
    return exitCodeOf(process);
}

int OnlineUpdate::execOuExe(const QString& args)
{
    const QString program = CrossPlatformApi::toQString(m_programPath);
    if (!onGuiThread())
        return runUpdateProgram(program, args);

    QProcess process;
    if (!startUpdateProgram(process, program, args)) {
        rememberExitCode(ManagerCannotStart);
        return ManagerCannotStart;
    }
    // The window keeps being painted while the update program runs, but user
    // input is held back, so that nothing can be started meanwhile. When the
    // application quits, the program still gets to finish its work.
    if (!ProcessWait::finished(process, -1))
        process.waitForFinished(-1);

    const int code = exitCodeOf(process);
    rememberExitCode(code);
    return code;
}

void OnlineUpdate::rememberExitCode(int code)
{
    switch (code) {
    case ManagerNotInstalled:
        m_exitCodeText = QStringLiteral("UpdateManager nicht installiert.");
        break;
    case VersionFileNotFound:
        m_exitCodeText = QStringLiteral("Vif nicht gefunden.");
        break;
    case ManagerOutdated:
        m_exitCodeText = QStringLiteral("UpdateManager nicht aktuell.");
        break;
    case ManagerCannotStart:
        m_exitCodeText = QStringLiteral("UpdateManager kann nicht gestartet werden.");
        break;
    default:
        break;
    }
}

int OnlineUpdate::runCheck(const QString& args)
{
    const int code = execOuExe(args);
    if (checkCompleted(code))
        writeLastCheck();
    return code;
}

int OnlineUpdate::check()
{
    return runCheck(QStringLiteral("-check -auto -t"));
}

int OnlineUpdate::checkHidden()
{
    return runCheck(QStringLiteral("-check -auto -h -notify"));
}

int OnlineUpdate::checkOffline(int& days)
{
    const int code = execOuExe(QStringLiteral("-offlinecheck -auto"));
    if (code < OfflineAgeBase)
        return code;
    days = code - OfflineAgeBase;
    return OfflineAge;
}

int OnlineUpdate::checkNotOlderThan(int days)
{
    int age = 0;
    const int code = checkOffline(age);
    if (code >= 81 && code <= 98)
        return code;
    if (code == OfflineAge && age <= days)
        return 0;
    return check();
}

bool OnlineUpdate::config()
{
    return execOuExe(QStringLiteral("-config -t")) == 0;
}

bool OnlineUpdate::update(bool askFirst)
{
    if (askFirst && ProceedUpdateDlg(nullptr, ProceedUpdateDlg::updateAvailableMessage(), false).exec() != 1)
        return false;
    return execOuExe(QStringLiteral("-update -auto")) == UpdateDone;
}

int OnlineUpdate::getDaysSinceLastVersionCheck()
{
    cIniFile statistics(statisticsFilePath(), false, false);
    const std::optional<cDate> lastCheck = readDate(statistics, cszStatisticsSection, "LastCheck");
    return lastCheck ? daysSince(*lastCheck) : -1;
}

int OnlineUpdate::getDaysSinceLastValidVersionCheck()
{
    cIniFile statistics(statisticsFilePath(), false, false);
    if (readInt(statistics, cszStatisticsSection, "VersionStatus", 0) == 0)
        return -1;
    const std::optional<cDate> lastCheck = readDate(statistics, cszStatisticsSection, "LastCheck");
    return lastCheck ? daysSince(*lastCheck) : -1;
}

std::string OnlineUpdate::getLastUpdateReminder()
{
    cIniFile statistics(statisticsFilePath(), false, false);
    return statistics.GetString(cszStatisticsSection, "LastReminder", cszDefaultLastReminder);
}

void OnlineUpdate::writeLastCheck()
{
    writeStatistic("LastCheck", cDate::today().format(cszDateFormat));
}

void OnlineUpdate::writeLastUpdateReminder()
{
    writeStatistic("LastReminder", cDate::today().format(cszDateFormat));
}

// The two date comparisons, settled so that a boundary day never reminds:
// - today must lie after FirstRemindDate (on that day itself: no reminder);
// - the last check must lie on or before LastRemindDate (a check after it:
//   no reminder for an installation that is known to be current then).
// An unreadable last check ("??.??.????" when there is none) counts as
// arbitrarily long ago: it is not after LastRemindDate and old enough, the
// same way a missing last check makes the automatic check due.
bool OnlineUpdate::needUpdateReminder()
{
    cIniFile reminder(cApplicationInfo::theInstance()->getFilenameInAppDir(cszReminderFile), false, false);
    const int okRemindEvery = readInt(reminder, cszReminderSection, "OkRemindEvery", 28);
    const int badRemindEvery = readInt(reminder, cszReminderSection, "BadRemindEvery", 7);
    const cDate firstRemindDate = readDate(reminder, cszReminderSection, "FirstRemindDate", cDate(2000, 1, 1));
    const cDate lastRemindDate = readDate(reminder, cszReminderSection, "LastRemindDate", cDate(2020, 1, 1));

    cIniFile statistics(statisticsFilePath(), false, false);
    const std::optional<cDate> lastCheck = readDate(statistics, cszStatisticsSection, "LastCheck");
    const bool versionValid = readInt(statistics, cszStatisticsSection, "VersionStatus", 1) != 0;
    const int daysSinceReminder =
        daysSince(readDate(statistics, cszStatisticsSection, "LastReminder", cDate(cszDefaultLastReminder)));

    if (cDate::today() <= firstRemindDate)
        return false;
    if (!versionValid)
        return daysSinceReminder > badRemindEvery;
    if (lastCheck && *lastCheck > lastRemindDate)
        return false;
    const bool checkIsOld = !lastCheck || daysSince(*lastCheck) >= okRemindEvery;
    return checkIsOld && daysSinceReminder > okRemindEvery;
}

bool OnlineUpdate::getStatisticsActive()
{
    return cConfiguration::theInstance()->GetInt("Security", "UseStats", 1) != 0;
}

std::string OnlineUpdate::getStatisticsID()
{
    cIniFile statistics(statisticsFilePath(), false, false);
    std::string id = statistics.GetString(cszStatisticsSection, "StatisticsID", "");
    if (id.empty()) {
        id = CrossPlatformApi::getUUID();
        writeStatistic("StatisticsID", id);
    }
    return id;
}
