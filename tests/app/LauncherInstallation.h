#pragma once

#include "TempInstallation.h"

#include <QByteArray>
#include <QProcess>
#include <QStringList>

#include <memory>

// One process of the launcher built by this project. Its standard and error
// output are collected while the test waits for lines in them.
class LauncherProcess
{
public:
    static constexpr int Timeout = 30000;   // the test machine may be busy

    LauncherProcess(const QString& program, const QProcessEnvironment& environment);
    ~LauncherProcess();   // kills a process that still runs
    LauncherProcess(const LauncherProcess&) = delete;
    LauncherProcess& operator=(const LauncherProcess&) = delete;

    // Waits until the output holds text; false when the process ended or the
    // time ran out first.
    bool waitForOutput(const QByteArray& text);
    // Waits for the end: the exit code, or -1 for a process that crashed or
    // still runs.
    int waitForExitCode();
    bool isRunning() const;
    QByteArray output() const { return m_output; }

    // Ends the process as Ctrl+C does: it leaves the instance register first.
    bool interrupt();
    // Ends the process without any chance to clean up.
    bool kill();

private:
    bool signal(int number);

    QProcess m_process;
    QByteArray m_output;
};

// The launcher and its modules with the files of the built bundle (sample
// configuration, image container, translation, tax program and update
// stand-ins) in a temporary installation. Its bundle identifier is its own, so its
// single-instance register is not shared with any other launcher on the
// machine. The launchers log their start-up ("start-up complete") and window
// activation ("main window activated") and write their message boxes to a
// log instead of showing them.
class LauncherInstallation : public TempInstallation
{
public:
    LauncherInstallation();
    // Removes what launchers that did not tear down left of their register.
    ~LauncherInstallation();

    bool isReady() const { return m_ready; }
    std::unique_ptr<LauncherProcess> start() const;
    // The boxes of all launchers of this installation so far, "title|text"
    // each, line breaks of the text written as \n.
    QStringList boxes() const;
    // Where they are written (the environment variable SC_MESSAGE_BOX_LOG),
    // also for other programs of the suite that a test starts.
    QString boxLogPath() const;

private:

    QString m_applicationName;
    bool m_ready = false;
};
