// The launcher's start-up on the sample installation of the build tree: the
// time from starting the process to its main window's first painted frame,
// side by side with two plain Qt programs started the same way, one showing
// an empty QMainWindow and one showing the launcher's visible content built
// the obvious way; offscreen, and under X11 as well when a display is set
// (run it under xvfb-run). Then the memory of the three at the first frame
// and half a second later (the launcher's start sound is loaded by then), and, in
// this process, the time of one mode switch (click handler with the page
// refresh).
//
// The programs report "shown" on their standard output after their first
// frame (the launcher when it gets SC_BENCH_REPORT_SHOWN). They run with a
// home folder of their own, seeded with the sample case files, so no user
// settings are touched.

#include "BenchInstallation.h"
#include "BenchUtil.h"
#include "NvWinIni.h"
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

using namespace bench;

namespace {

constexpr int startupRuns = 15;
constexpr int warmUpRuns = 2;
constexpr int modeSwitchRuns = 24;

struct Program
{
    QString path;
    QStringList arguments;
    std::vector<StartRun> runs;

    double medianOf(double (*value)(const StartRun&)) const
    {
        std::vector<double> values;
        for (const StartRun& run : runs)
            values.push_back(value(run));
        return bench::median(values);
    }
    double ms() const { return medianOf([](const StartRun& run) { return run.ms; }); }
};

void printMemory(const char* name, const Program& ours, const Program& reference,
                 double (*value)(const StartRun&))
{
    const double oursMiB = ours.medianOf(value);
    const double referenceMiB = reference.medianOf(value);
    std::printf("%s ours_mib=%.1f reference_mib=%.1f difference_mib=%.1f\n", name, oursMiB, referenceMiB,
                oursMiB - referenceMiB);
}

// Starts the launcher and both references in turn, so that all three see the
// same machine load, and prints the medians; memory only when asked, once is
// enough.
bool compareStartUp(const QString& home, const QString& platform, const char* prefix, bool withMemory)
{
    const QProcessEnvironment environment = programEnvironment(home, platform);
    Program launcher{QStringLiteral(SC_LAUNCHER), {}, {}};
    Program empty{QStringLiteral(SC_MINIMAL_WINDOW), {}, {}};
    Program content{QStringLiteral(SC_CONTENT_WINDOW), {QStringLiteral(SC_PICTURES_DIR "/container"), QStringLiteral(SC_PICTURES_DIR "/media/sc_header.png")}, {}};

    for (int i = 0; i < warmUpRuns + startupRuns; ++i) {
        for (Program* program : {&launcher, &empty, &content}) {
            const std::optional<StartRun> run = startUntilShown(program->path, program->arguments, environment);
            if (!run) {
                std::fprintf(stderr, "bench_startup: %s did not report its window\n", qPrintable(program->path));
                return false;
            }
            if (i >= warmUpRuns)
                program->runs.push_back(*run);
        }
    }
    const std::string name = prefix;
    bench::printResult(name.c_str(), launcher.ms(), empty.ms());
    bench::printResult((name + "_content").c_str(), launcher.ms(), content.ms());
    if (withMemory) {
        const auto peak = [](const StartRun& run) { return run.memory.peakMiB; };
        const auto proportional = [](const StartRun& run) { return run.memory.proportionalMiB; };
        const auto anonymous = [](const StartRun& run) { return run.memory.anonymousMiB; };
        printMemory("startup_peak_rss", launcher, empty, peak);
        printMemory("startup_rss_content", launcher, content, peak);
        printMemory("startup_pss_content", launcher, content, proportional);
        printMemory("startup_anon_content", launcher, content, anonymous);
        printMemory("startup_rss_first_frame_content", launcher, content,
                    [](const StartRun& run) { return run.atFirstFrame.peakMiB; });
    }
    std::fflush(stdout);
    return true;
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
    preferOffscreen();
    QApplication application(argc, argv);

    QTemporaryDir home;
    if (!home.isValid())
        return 1;
    setUpHome(home.path());
    if (!compareStartUp(home.path(), QStringLiteral("offscreen"), "startup", true))
        return 1;
    if (!qEnvironmentVariableIsEmpty("DISPLAY")
        && !compareStartUp(home.path(), QStringLiteral("xcb"), "startup_xcb", false))
        return 1;
    if (!openInstallation(home.path()))
        return 1;
    measureModeSwitch();
    return 0;
}
