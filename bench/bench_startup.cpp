// The launcher's start-up on the sample installation of the build tree,
// offscreen: the time from starting the process to its main window being
// shown with the event loop idle, against a program that shows an empty
// QMainWindow the same way; the peak memory of both, half a second after
// that; and, in this process,
// the time of one mode switch (click handler with the page refresh).
//
// Both programs report "shown" on their standard output when they get
// SC_BENCH_REPORT_SHOWN. They run with a home folder of their own, seeded
// with the sample case files, so no user settings are touched.

#include "BenchUtil.h"
#include "Configuration.h"
#include "CrossPlatformApi.h"
#include "SharedHelpers.h"
#include "NvWinIni.h"
#include "PixmapManager.h"
#include "SCAppStyle.h"
#include "StartCenter.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <csignal>
#include <cstdio>
#include <optional>
#include <vector>

#ifndef SC_LAUNCHER
#error "SC_LAUNCHER must name the built launcher"
#endif

namespace {

constexpr int startupRuns = 15;
constexpr int warmUpRuns = 2;
constexpr int modeSwitchRuns = 24;
constexpr int shownTimeoutMs = 30000;
// Work a program does after its window is up (the launcher's start sound)
// counts for the memory figure: the peak is read this much later.
constexpr int settleMs = 500;

struct StartRun
{
    double ms = 0;
    double peakMiB = 0;
};

// The folders a program of the suite uses, all below home.
void setUpHome(const QString& home)
{
    const QString caseFolder = home + QStringLiteral("/Documents/Orvane Steuerfälle");
    QDir().mkpath(caseFolder);
    QDir().mkpath(home + QStringLiteral("/tmp"));
    QDir().mkpath(home + QStringLiteral("/shared"));
    QDir().mkpath(home + QStringLiteral("/runtime"));
    QFile::setPermissions(home + QStringLiteral("/runtime"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    const QDir samples(QStringLiteral(SC_SOURCE_DIR "/demo/HomeData"));
    for (const QString& name : samples.entryList(QDir::Files))
        QFile::copy(samples.filePath(name), caseFolder + QLatin1Char('/') + name);
}

std::vector<std::pair<const char*, QString>> homeVariables(const QString& home)
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

QProcessEnvironment programEnvironment(const QString& home)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const auto& [name, value] : homeVariables(home))
        environment.insert(QLatin1String(name), value);
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    environment.insert(QStringLiteral("SC_BENCH_REPORT_SHOWN"), QStringLiteral("1"));
    return environment;
}

// The peak resident set ("VmHWM") of a running process, in MiB.
double peakResidentMiB(qint64 pid)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(pid));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').value(0).toDouble() / 1024.0;
    }
    return 0;
}

std::optional<StartRun> startUntilShown(const QString& program, const QProcessEnvironment& environment)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setStandardErrorFile(QProcess::nullDevice());
    QElapsedTimer timer;
    timer.start();
    process.start(program, {});
    QByteArray output;
    while (!output.contains("shown\n")) {
        if (!process.waitForReadyRead(shownTimeoutMs))
            return std::nullopt;
        output += process.readAllStandardOutput();
    }
    StartRun run;
    run.ms = double(timer.nsecsElapsed()) / 1e6;
    QThread::msleep(settleMs);
    run.peakMiB = peakResidentMiB(process.processId());

    // The launcher leaves its single-instance register on an interrupt.
    ::kill(pid_t(process.processId()), SIGINT);
    if (!process.waitForFinished(5000)) {
        process.kill();
        process.waitForFinished();
    }
    return run;
}

bool compareStartUp(const QString& home)
{
    const QProcessEnvironment environment = programEnvironment(home);
    const QString launcher = QStringLiteral(SC_LAUNCHER);
    const QString minimal = QStringLiteral(SC_MINIMAL_WINDOW);

    std::vector<double> oursMs, referenceMs, oursMiB, referenceMiB;
    for (int i = 0; i < warmUpRuns + startupRuns; ++i) {
        const std::optional<StartRun> ours = startUntilShown(launcher, environment);
        const std::optional<StartRun> reference = startUntilShown(minimal, environment);
        if (!ours || !reference) {
            std::fprintf(stderr, "bench_startup: a program did not report its window\n");
            return false;
        }
        if (i < warmUpRuns)
            continue;
        oursMs.push_back(ours->ms);
        referenceMs.push_back(reference->ms);
        oursMiB.push_back(ours->peakMiB);
        referenceMiB.push_back(reference->peakMiB);
    }
    bench::printResult("startup", bench::median(oursMs), bench::median(referenceMs));
    const double ours = bench::median(oursMiB);
    const double reference = bench::median(referenceMiB);
    std::printf("startup_peak_rss ours_mib=%.1f reference_mib=%.1f difference_mib=%.1f\n", ours, reference,
                ours - reference);
    std::fflush(stdout);
    return true;
}

// The launcher's start-up, in this process, on the same installation.
bool openInstallation(const QString& home)
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

void processEventsFor(int ms)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < ms) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(5);
    }
}

void measureModeSwitch()
{
    using Handler = void (StartCenter::*)();
    const Handler handlers[] = {&StartCenter::buttonNormalClicked, &StartCenter::buttonVorwegClicked,
                                &StartCenter::buttonErmaessClicked, &StartCenter::buttonEinurClicked,
                                &StartCenter::buttonEinurVorClicked, &StartCenter::buttonFestClicked};
    StartCenter window(nullptr, Qt::WindowFlags());
    window.show();
    processEventsFor(600);

    std::vector<double> times;
    for (int i = 0; i < modeSwitchRuns; ++i) {
        const Handler handler = handlers[(i + 1) % 6];
        times.push_back(bench::timeMs([&] { (window.*handler)(); }));
        processEventsFor(550);   // the page animation ends before the next switch
    }
    std::printf("mode_switch ours_ms=%.3f (click handler with page refresh, median of %d)\n",
                bench::median(times), modeSwitchRuns);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);

    QTemporaryDir home;
    if (!home.isValid())
        return 1;
    setUpHome(home.path());
    if (!compareStartUp(home.path()))
        return 1;
    if (!openInstallation(home.path()))
        return 1;
    measureModeSwitch();
    return 0;
}
