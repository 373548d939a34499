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

#include "BenchInstallation.h"
#include "BenchUtil.h"
#include "StartCenter.h"

#include <QApplication>
#include <QTemporaryDir>

#include <cstdio>
#include <optional>
#include <vector>

namespace {

using namespace bench;

constexpr int startupRuns = 15;
constexpr int warmUpRuns = 2;
constexpr int modeSwitchRuns = 24;

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
