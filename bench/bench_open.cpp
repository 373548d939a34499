// Opening a case file given on the command line, against doing the same by
// hand: in this process, on the sample installation of the build tree
// (offscreen, the sample tax program without a window), the time from the
// launcher's window being built to the tax program having started with the
// file, ours reading "startcenter FILE" and following it, the reference
// clicking the file's mode and "Anderen Steuerfall öffnen", whose file
// dialog answers with the file at once. Process start-up and the opening of
// the settings are the same for both and are left out, so the ratio shows
// what the command line adds. The file belongs to another mode than the one
// the launcher starts in, so both switch modes.

#include "ActionPage.h"
#include "BenchUtil.h"
#include "CommandLine.h"
#include "BenchInstallation.h"
#include "SelectionButton.h"
#include "StartCenter.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

#include <cstdio>
#include <functional>
#include <vector>

namespace {

constexpr int runs = 31;
constexpr int programTimeoutMs = 30000;

// Builds and shows the window, runs open, and returns the milliseconds
// until the tax program runs; the program is waited for untimed.
double timeOpening(const std::function<void(StartCenter&)>& open)
{
    QElapsedTimer timer;
    timer.start();
    StartCenter window(nullptr, Qt::WindowFlags());
    window.show();
    open(window);
    const double ms = double(timer.nsecsElapsed()) / 1e6;
    if (window.runningCount() != 1)
        return -1;
    return QTest::qWaitFor([&] { return window.runningCount() == 0; }, programTimeoutMs) ? ms : -1;
}

} // namespace

int main(int argc, char** argv)
{
    bench::preferOffscreen();
    QApplication application(argc, argv);
    QTemporaryDir home;
    if (!home.isValid())
        return 1;
    bench::setUpHome(home.path());
    if (!bench::openInstallation(home.path()))
        return 1;
    qputenv("ORV_DEMO_HEADLESS", "1");
    // Every run starts in the income-tax mode and leaves no mode behind.
    cConfiguration::theInstance()->Write("StartCenter", "RestoreModus", 0);
    const QString file = home.path() + QStringLiteral("/Documents/Orvane Steuerfälle/Tischlerei Köhler 2011.eur11");
    CrossPlatformApi::setFileDialogHandler([file](const FileDialogRequest&) { return file; });

    const auto fromCommandLine = [&](StartCenter& window) {
        window.followCommandLine(CommandLine::parse({QStringLiteral("startcenter"), file}, StartCenter::modeNames()));
    };
    const auto byHand = [&](StartCenter& window) {
        window.findChild<SelectionButton*>(QStringLiteral("BtnEinur"))->click();
        ActionPage* page = window.findChild<ActionPage*>(QStringLiteral("pageEinur"));
        page->actionButton(ActionPage::ActionOther)->click();
    };

    timeOpening(fromCommandLine);   // warm-up: first pictures, first process start
    timeOpening(byHand);
    std::vector<double> ours, reference;
    for (int i = 0; i < runs; ++i) {
        ours.push_back(timeOpening(fromCommandLine));
        reference.push_back(timeOpening(byHand));
        if (ours.back() < 0 || reference.back() < 0) {
            std::fputs("bench_open: the tax program did not start\n", stderr);
            return 1;
        }
    }
    bench::printResult("open_from_args", bench::median(ours), bench::median(reference));
    return 0;
}
