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
#include "NvWinIni.h"
#include "SampleInstallation.h"
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
