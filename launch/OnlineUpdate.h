#pragma once

#include "SingletonSlot.h"

#include <QObject>
#include <QString>

#include <string>

class CheckVersionBackgroundThread;

// The launcher's side of the separate update program ("Online Update" in the
// application folder): runs it with the right arguments, keeps the dates of
// the last version check and the last update reminder, and decides whether an
// automatic version check is due. A check at start runs on a background
// thread; its result is polled on the GUI thread.
class OnlineUpdate : public QObject
{
    Q_OBJECT

public:
    // Exit codes of the update program, and the controller's own value for a
    // background check that is still running.
    enum ExitCode {
        VersionCurrent = 0,
        NewVersionAvailable = 2,
        UpdateDone = 80,
        ManagerNotInstalled = 82,
        VersionFileNotFound = 83,
        ManagerOutdated = 84,
        ManagerCannotStart = 85,
        CheckRunning = 98,
        OfflineAge = 99,
        OfflineAgeBase = 100
    };

    static OnlineUpdate* theInstance();
    // For tests: destroys the instance (ending a running background check);
    // the next theInstance() locates the update program again.
    static void resetInstance();

    ~OnlineUpdate() override;

    // The program exists and the installation is not on a read-only optical medium.
    bool isExecutable() const;
    // "Start"/"VersionCheckEvery" days have passed since the last check (or
    // it is unknown); never when that setting is 0.
    bool needAutoVersionCheck();

    // Starts the hidden check on a background thread and waits up to
    // waitSeconds for it. Returns the current result: CheckRunning while the
    // check runs, otherwise the update program's exit code. While a check
    // runs no second one is started.
    int startBackgroundCheck(unsigned int waitSeconds);
    int getLastBackgroundCheckResult() const { return m_lastBackgroundResult; }

    // Runs the update program with "-self " followed by args (split at
    // blanks) until it ends and returns its exit code (ManagerCannotStart
    // when it cannot be started, -1 when it crashed). On the GUI thread the
    // window is kept painted while user input is held back.
    int execOuExe(const QString& args);
    // The text of the last exit code that has one (82 to 85), for diagnostics.
    QString lastExitCodeText() const { return m_exitCodeText; }

    int check();         // visible check
    int checkHidden();   // hidden check that notifies the user itself
    // The offline check. A code of OfflineAgeBase or more tells the age of
    // the offline data: days is set to it and OfflineAge is returned.
    int checkOffline(int& days);
    // 0 when the offline data is at most days old, an offline failure code
    // (81 to 98), otherwise the result of an online check().
    int checkNotOlderThan(int days);
    bool config();       // true when the settings run ended with 0
    // Runs the update; with askFirst only after the user agreed. True when
    // the update was carried out.
    bool update(bool askFirst);

    // Days since "LastCheck" of the statistics file, -1 when unknown; the
    // second also -1 when the last check did not find a valid version.
    int getDaysSinceLastVersionCheck();
    int getDaysSinceLastValidVersionCheck();
    std::string getLastUpdateReminder();
    void writeLastCheck();
    void writeLastUpdateReminder();
    bool needUpdateReminder();

    bool getStatisticsActive();
    // An anonymous identifier of this installation for the usage statistics,
    // made on first use and kept in the statistics file.
    std::string getStatisticsID();

    // Runs program with "-self " + args and waits for it; usable on any
    // thread, touches no settings.
    static int runUpdateProgram(const QString& program, const QString& args);

public slots:
    void versionCheckThreadFinished();

private:
    friend class SingletonSlot<OnlineUpdate>;
    OnlineUpdate();

    int runCheck(const QString& args);
    void rememberExitCode(int code);

    std::string m_programPath;   // Latin-1
    QString m_exitCodeText;
    int m_lastBackgroundResult = 0;
    CheckVersionBackgroundThread* m_thread = nullptr;
};
