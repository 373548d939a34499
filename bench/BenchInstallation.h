#pragma once

// Shared by the benchmarks that run the launcher: a home folder of its own
// (seeded with the sample case files, so no user settings are touched), the
// environment that points the suite there, and the launcher's start-up in
// the benchmark's own process on that installation.

#include "Configuration.h"
#include "CrossPlatformApi.h"
#include "PixmapManager.h"
#include "SCAppStyle.h"
#include "SharedHelpers.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QThread>

#include <csignal>
#include <optional>
#include <utility>
#include <vector>

#ifndef SC_LAUNCHER
#error "SC_LAUNCHER must name the built launcher"
#endif

namespace bench {

// The benchmarks that build the launcher's window in their own process run
// offscreen unless a platform is set. Call before the QApplication exists.
inline void preferOffscreen()
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
}

// The working folder of the sample installation below home.
inline QString caseFolder(const QString& home)
{
    return home + QStringLiteral("/Documents/Orvane Steuerfälle");
}

// The folders a program of the suite uses, all below home.
inline void setUpHome(const QString& home)
{
    const QString cases = caseFolder(home);
    QDir().mkpath(cases);
    QDir().mkpath(home + QStringLiteral("/tmp"));
    QDir().mkpath(home + QStringLiteral("/shared"));
    QDir().mkpath(home + QStringLiteral("/runtime"));
    QFile::setPermissions(home + QStringLiteral("/runtime"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    const QDir samples(QStringLiteral(SC_SOURCE_DIR "/demo/HomeData"));
    for (const QString& name : samples.entryList(QDir::Files))
        QFile::copy(samples.filePath(name), cases + QLatin1Char('/') + name);
}

inline std::vector<std::pair<const char*, QString>> homeVariables(const QString& home)
{
    return {{"HOME", home},
            {"TMPDIR", home + QStringLiteral("/tmp")},
            {"XDG_RUNTIME_DIR", home + QStringLiteral("/runtime")},
            {"XDG_CONFIG_HOME", home + QStringLiteral("/.config")},
            {"XDG_DATA_HOME", home + QStringLiteral("/.local/share")},
            {"XDG_CACHE_HOME", home + QStringLiteral("/.cache")},
            {"XDG_DOCUMENTS_DIR", home + QStringLiteral("/Documents")},
            {"SC_COMMON_APPDATA", home + QStringLiteral("/shared")}};
}

inline QProcessEnvironment programEnvironment(const QString& home,
                                              const QString& platform = QStringLiteral("offscreen"))
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const auto& [name, value] : homeVariables(home))
        environment.insert(QLatin1String(name), value);
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), platform);
    environment.insert(QStringLiteral("SC_BENCH_REPORT_SHOWN"), QStringLiteral("1"));
    return environment;
}

// The launcher's start-up, in this process, on the same installation.
inline bool openInstallation(const QString& home)
{
    for (const auto& [name, value] : homeVariables(home))
        qputenv(name, value.toLocal8Bit());
    CrossPlatformApi::overrideExecutablePath(QStringLiteral(SC_LAUNCHER).toLatin1().toStdString());

    if (!openInstallationSettings())
        return false;
    PixmapManager::theInstance()->setInfoFile(
        cConfiguration::theInstance()->GetString("Application", "ImageInfoFile", "images.ini"));
    SCAppStyle::installApplicationLook();
    return true;
}

inline void processEventsFor(int ms)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < ms) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(5);
    }
}

constexpr int shownTimeoutMs = 30000;
// Work a program does after its window is up (the launcher's start sound)
// counts for the memory figure: the peak is read this much later.
constexpr int settleMs = 500;

struct Memory
{
    double peakMiB = 0;        // peak resident set
    double proportionalMiB = 0; // proportional set size: shared pages split among their users
    double anonymousMiB = 0;   // memory of the process's own, not backed by files
};

struct StartRun
{
    double ms = 0;
    Memory atFirstFrame;
    Memory memory;   // settled: what the program loads after its first frame included
};

// A value in kB from a /proc file of "Name:   value kB" lines, in MiB.
inline double procValueMiB(const QString& file, const QByteArray& name)
{
    QFile status(file);
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith(name + ':'))
            return line.mid(name.size() + 1).trimmed().split(' ').value(0).toDouble() / 1024.0;
    }
    return 0;
}

inline Memory memoryOf(qint64 pid)
{
    const QString status = QStringLiteral("/proc/%1/status").arg(pid);
    const QString rollup = QStringLiteral("/proc/%1/smaps_rollup").arg(pid);
    return {procValueMiB(status, "VmHWM"), procValueMiB(rollup, "Pss"), procValueMiB(rollup, "Anonymous")};
}

// Starts program and waits for its "shown"; the memory is read then and
// settle milliseconds later.
inline std::optional<StartRun> startUntilShown(const QString& program, const QStringList& arguments,
                                               const QProcessEnvironment& environment, int settle = settleMs)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setStandardErrorFile(QProcess::nullDevice());
    QElapsedTimer timer;
    timer.start();
    process.start(program, arguments);
    QByteArray output;
    while (!output.contains("shown\n")) {
        if (!process.waitForReadyRead(shownTimeoutMs))
            return std::nullopt;
        output += process.readAllStandardOutput();
    }
    StartRun run;
    run.ms = double(timer.nsecsElapsed()) / 1e6;
    run.atFirstFrame = memoryOf(process.processId());
    QThread::msleep(settle);
    run.memory = memoryOf(process.processId());

    // The launcher leaves its single-instance register on an interrupt.
    ::kill(pid_t(process.processId()), SIGINT);
    if (!process.waitForFinished(5000)) {
        process.kill();
        process.waitForFinished();
    }
    return run;
}

} // namespace bench
