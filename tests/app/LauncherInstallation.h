#pragma once

#include "TempInstallation.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDirIterator>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>

#include <functional>
#include <memory>

#include <signal.h>

#ifndef SC_LAUNCHER_PATH
#error "SC_LAUNCHER_PATH must name the built launcher"
#endif
#ifndef SC_BUNDLE_RESOURCES_DIR
#error "SC_BUNDLE_RESOURCES_DIR must name the Resources folder of the built bundle"
#endif

// One process of the launcher built by this project; its merged output is
// collected while the test waits for lines in it. A process that still runs
// at the end is killed.
class LauncherProcess
{
public:
    static constexpr int Timeout = 30000;   // the test machine may be busy

    LauncherProcess(const QString& program, const QProcessEnvironment& environment,
                    const QStringList& arguments = {}, const QString& workingDirectory = {})
    {
        m_process.setProcessEnvironment(environment);
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.setWorkingDirectory(workingDirectory);
        m_process.start(program, arguments);
    }
    ~LauncherProcess()
    {
        if (isRunning())
            kill();
    }

    // False when the process ended or the time ran out before the text came.
    bool waitForOutput(const QByteArray& text)
    {
        const QDeadlineTimer deadline(Timeout);
        while (!m_output.contains(text) && !deadline.hasExpired()) {
            const bool running = isRunning();
            m_process.waitForReadyRead(100);
            m_output += m_process.readAll();
            if (!running)
                break;
        }
        return m_output.contains(text);
    }
    // -1 for a process that crashed or still runs.
    int waitForExitCode()
    {
        m_process.waitForFinished(Timeout);
        m_output += m_process.readAll();
        if (isRunning() || m_process.exitStatus() != QProcess::NormalExit)
            return -1;
        return m_process.exitCode();
    }
    bool isRunning() const { return m_process.state() != QProcess::NotRunning; }
    QByteArray output() const { return m_output; }

    // As Ctrl+C does: the launcher leaves the instance register first.
    bool interrupt() { return signal(SIGINT); }
    // The highest resident memory of the running process so far ("VmHWM"), in MiB.
    double peakResidentMiB() const
    {
        QFile status(QStringLiteral("/proc/%1/status").arg(m_process.processId()));
        if (!status.open(QIODevice::ReadOnly))
            return 0;
        for (const QByteArray& line : status.readAll().split('\n')) {
            if (line.startsWith("VmHWM:"))
                return line.mid(6).trimmed().split(' ').value(0).toDouble() / 1024.0;
        }
        return 0;
    }
    // Without any chance to clean up.
    bool kill() { return signal(SIGKILL); }

private:
    bool signal(int number)
    {
        const qint64 pid = m_process.processId();
        return pid > 0 && ::kill(pid_t(pid), number) == 0 && m_process.waitForFinished(Timeout);
    }

    QProcess m_process;
    QByteArray m_output;
};

// The launcher and its modules with the files of the built bundle (sample
// configuration, image container, translation, tax program and update
// stand-ins) in a temporary installation. Its bundle identifier is its own, and
// its single-instance register lies in the installation's own folders. The launchers log their start-up ("start-up complete") and window
// activation ("main window activated") and write their message boxes to a
// log instead of showing them.
class LauncherInstallation : public TempInstallation
{
public:
    LauncherInstallation()
    {
        static int count = 0;
        const QString applicationName =
            QStringLiteral("startcenter-test-%1-%2").arg(QCoreApplication::applicationPid()).arg(++count);
        const QByteArray propertyList = propertyListWithIdentifier(QStringLiteral("de.test.") + applicationName);
        m_ready = isValid() && !propertyList.isEmpty()
                  && copyFolder(QStringLiteral(SC_BUNDLE_RESOURCES_DIR), resourcesDir())
                  && writeFile(QStringLiteral("Start-Center.app/Contents/Info.plist"), propertyList)
                  && copyFolder(QFileInfo(QStringLiteral(SC_LAUNCHER_PATH)).path(), QFileInfo(executablePath()).path());
    }
    bool isReady() const { return m_ready; }
    // adjust may change the environment the launcher gets.
    std::unique_ptr<LauncherProcess> start(const QStringList& arguments = {}, const QString& workingDirectory = {},
                                           const std::function<void(QProcessEnvironment&)>& adjust = {}) const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        environment.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("startcenter.*.debug=true"));
        environment.insert(QStringLiteral("SC_MESSAGE_BOX_LOG"), boxLogPath());
        if (adjust)
            adjust(environment);
        return std::make_unique<LauncherProcess>(executablePath(), environment, arguments, workingDirectory);
    }
    // The boxes of all launchers of this installation so far, "title|text"
    // each, line breaks of the text written as \n.
    QStringList boxes() const
    {
        return QString::fromUtf8(readFile(boxLogPath())).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }
    // Where they are written (the environment variable SC_MESSAGE_BOX_LOG),
    // also for other programs of the suite that a test starts.
    QString boxLogPath() const { return root() + QStringLiteral("/boxes.log"); }

private:
    static bool copyFolder(const QString& from, const QString& to)
    {
        const QDir source(from);
        bool ok = source.exists();
        QDirIterator it(from, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString file = it.next();
            const QString target = QDir(to).filePath(source.relativeFilePath(file));
            ok = QDir().mkpath(QFileInfo(target).path()) && QFile::copy(file, target) && ok;
        }
        return ok;
    }
    // The built bundle's property list, naming the bundle identifier given.
    static QByteArray propertyListWithIdentifier(const QString& identifier)
    {
        QFile built(QStringLiteral(SC_BUNDLE_RESOURCES_DIR "../Info.plist"));
        static const QRegularExpression key(QStringLiteral("(<key>CFBundleIdentifier</key>\\s*<string>)[^<]*"));
        if (!built.open(QIODevice::ReadOnly))
            return {};
        QString content = QString::fromUtf8(built.readAll());
        return content.contains(key) ? content.replace(key, QStringLiteral("\\1") + identifier).toUtf8() : QByteArray();
    }

    bool m_ready = false;
};
