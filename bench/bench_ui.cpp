// The launcher with a large archive of case files: a working folder of N
// case files of the income-tax mode (and N/10 of the profit mode) for N =
// 1,000, 10,000 and 50,000. Per N: start-up of the launcher process against
// start-up with the sample folder (run alternately), and, in this process, a list refresh
// until its last row, a mode switch (click handler), the overview and the
// folder chooser's count until shown. At 50,000 files: the longest time the
// UI thread ran no event during start-up, a mode switch and the overview
// (beside the same with the sample folder);
// the list's fill against QDir::entryInfoList and a QTreeWidget; a key press
// in the page's search field until the filtered list is in; and a bulk
// settings write of 1,000 keys against QSettings. With the argument
// "search_filter_50k" only the search is measured.

#include "BenchInstallation.h"
#include "BenchUtil.h"
#include "ActionPage.h"
#include "DirSelectDialog.h"
#include "NvWinIni.h"
#include "OverviewPage.h"
#include "SCListView.h"
#include "StartCenter.h"

#include <QApplication>
#include <QDateTime>
#include <QEventLoop>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QSettings>
#include <QTemporaryDir>
#include <QTimer>
#include <QTreeWidget>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

namespace {

constexpr int startupRuns = 5;
const QString incomeTaxPattern = QStringLiteral("*.est11");

// Case files first..count-1 of one mode, with change times spread over two
// years, so that the list meets both summer and winter time.
void writeCaseFiles(const QString& folder, const QString& stem, const char* suffix, int first, int count)
{
    const QDateTime start(QDate(2010, 1, 1), QTime(8, 0));
    for (int i = first; i < count; ++i) {
        QFile file(folder + QStringLiteral("/%1 %2.%3").arg(stem).arg(i, 5, 10, QLatin1Char('0')).arg(QLatin1String(suffix)));
        file.open(QIODevice::WriteOnly);
        file.write("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<Steuerfall>\n"
                   "<Person>Erika und Hans Mustermann</Person>\n"
                   "<Kommentar>Zusammenveranlagung\nHandwerkerleistungen, Riester-Vertrag</Kommentar>\n"
                   "<Formulare><Feld Nr=\"976\">602.38</Feld></Formulare>\n</Steuerfall>\n");
        file.setFileTime(start.addSecs(qint64(i) * 1237), QFileDevice::FileModificationTime);
    }
}

// Runs the event loop until done() holds.
void waitUntil(const std::function<bool()>& done)
{
    QEventLoop loop;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        if (done())
            loop.quit();
    });
    poll.start(1);
    if (!done())
        loop.exec();
}

// The longest gap between two runs of a 1 ms timer: how long the UI thread
// at most did not answer.
class StallMeter
{
public:
    StallMeter()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.setInterval(1);
        QObject::connect(&m_timer, &QTimer::timeout, [this] { tick(); });
    }

    template<class Work>
    double longestStallMs(Work&& work)
    {
        m_longest = 0;
        m_timer.start();
        m_last.start();
        work();
        tick();
        m_timer.stop();
        return m_longest;
    }

private:
    void tick()
    {
        m_longest = std::max(m_longest, double(m_last.nsecsElapsed()) / 1e6);
        m_last.restart();
    }

    QTimer m_timer;
    QElapsedTimer m_last;
    double m_longest = 0;
};

// Start-up of the launcher with the large folder against start-up with the
// sample folder, run alternately.
void compareStartup(const char* name, const QProcessEnvironment& large, const QProcessEnvironment& sample)
{
    std::vector<double> largeMs, sampleMs;
    for (int i = 0; i <= startupRuns; ++i) {
        const std::optional<bench::StartRun> ours = bench::startUntilShown(QStringLiteral(SC_LAUNCHER), {}, large, 0);
        const std::optional<bench::StartRun> reference =
            bench::startUntilShown(QStringLiteral(SC_LAUNCHER), {}, sample, 0);
        if (i > 0 && ours && reference) {
            largeMs.push_back(ours->ms);
            sampleMs.push_back(reference->ms);
        }
    }
    bench::printResult(name, bench::median(largeMs), bench::median(sampleMs));
}

SCListView* incomeTaxList(const StartCenter& window)
{
    return window.findChild<ActionPage*>(QStringLiteral("pageNormal"))->findChild<SCListView*>(QStringLiteral("fileView"));
}

// The figures of the table for one folder size, from a window that
// is already up; the folder chooser counts the same folder.
void measureWindow(StartCenter& window, const QString& folder, const char* size)
{
    SCListView* list = incomeTaxList(window);
    char name[64];

    std::snprintf(name, sizeof name, "filelist_refresh_%s", size);
    const double refresh = bench::medianMs(5, [&] {
        list->updateList();
        waitUntil([&] { return !list->isListing(); });
    });
    std::printf("%s ms=%.3f\n", name, refresh);

    std::vector<double> switches;
    for (int i = 0; i < 5; ++i) {
        window.buttonEinurClicked();
        bench::processEventsFor(100);
        switches.push_back(bench::timeMs([&] { window.buttonNormalClicked(); }));
        waitUntil([&] { return !list->isListing(); });
    }
    std::printf("mode_switch_%s ms=%.3f\n", size, bench::median(switches));

    OverviewPage overview;
    overview.setCaption(QStringLiteral("Steuererklärungen 2011"));
    const double overviewMs = bench::medianMs(3, [&] {
        overview.setTaxFiles(folder + QLatin1Char('/'), list->fileNames());
        overview.show();
    });
    std::printf("overview_%s ms=%.3f\n", size, overviewMs);

    DirSelectDialog chooser(nullptr);
    chooser.setFileFilter({incomeTaxPattern});
    auto* label = chooser.findChild<QLabel*>();
    const double countMs = bench::medianMs(5, [&] {
        chooser.setDirectory(folder);
        waitUntil([&] { return label->text().endsWith(QStringLiteral("Steuerfälle.")); });
    });
    std::printf("chooser_count_%s ms=%.3f\n", size, countMs);
    std::fflush(stdout);
}

struct Stalls
{
    double startup = 0;
    double modeSwitch = 0;
    double overview = 0;
    double longest() const { return std::max({startup, modeSwitch, overview}); }
};

// The longest stalls of start-up (window built and shown until the list is
// full), a mode switch (until the list is full again) and the overview.
Stalls measureStalls(const QString& folder)
{
    Stalls stalls;
    StallMeter meter;
    std::unique_ptr<StartCenter> window;
    stalls.startup = meter.longestStallMs([&] {
        window = std::make_unique<StartCenter>(nullptr, Qt::WindowFlags());
        window->show();
        waitUntil([&] { return !incomeTaxList(*window)->isListing(); });
    });
    window->buttonEinurClicked();
    bench::processEventsFor(600);
    stalls.modeSwitch = meter.longestStallMs([&] {
        window->buttonNormalClicked();
        bench::processEventsFor(100);
        waitUntil([&] { return !incomeTaxList(*window)->isListing(); });
    });
    stalls.overview = meter.longestStallMs([&] {
        OverviewPage page;
        page.setCaption(QStringLiteral("Steuererklärungen 2011"));
        page.setTaxFiles(folder + QLatin1Char('/'), incomeTaxList(*window)->fileNames());
        page.show();
    });
    return stalls;
}

// Until the last row is in, against the plain way: QDir's listing with the
// same filter and a QTreeWidget filled with the same two columns.
void compareFill(const QString& folder)
{
    SCListView list(nullptr);
    QTreeWidget plain;
    list.init(folder, {incomeTaxPattern});
    waitUntil([&] { return !list.isListing(); });
    bench::compare(
        "filelist_fill_50k", 7,
        [&] {
            list.updateList();
            waitUntil([&] { return !list.isListing(); });
        },
        [&] {
            plain.clear();
            const QDir dir(folder, incomeTaxPattern, QDir::Name | QDir::IgnoreCase,
                           QDir::Files | QDir::Readable | QDir::Writable);
            QList<QTreeWidgetItem*> rows;
            for (const QFileInfo& file : dir.entryInfoList())
                rows.append(new QTreeWidgetItem(QStringList{
                    file.completeBaseName(), file.lastModified().toString(QStringLiteral("dd.MM.yyyy hh:mm"))}));
            plain.addTopLevelItems(rows);
        });
}

// Key presses in the page's search field, each until the list holds the
// matching rows: narrowing down ("4", "42", "421") and widening again back to
// every file; the longest UI-thread stall over all of them beside.
void measureSearch(StartCenter& window)
{
    auto* page = window.findChild<ActionPage*>(QStringLiteral("pageNormal"));
    auto* field = page->findChild<QLineEdit*>(QStringLiteral("searchField"));
    SCListView* list = incomeTaxList(window);
    const auto press = [&](Qt::Key key, const QString& text) {
        QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier, text);
        QApplication::sendEvent(field, &down);
        QKeyEvent up(QEvent::KeyRelease, key, Qt::NoModifier, text);
        QApplication::sendEvent(field, &up);
        waitUntil([&] { return !list->isListing(); });
    };
    StallMeter meter;
    std::vector<double> presses;
    double stall = 0;
    for (int run = 0; run < 3; ++run) {
        stall = std::max(stall, meter.longestStallMs([&] {
            for (const char digit : {'4', '2', '1'})
                presses.push_back(bench::timeMs([&] { press(Qt::Key(digit), QString(QLatin1Char(digit))); }));
            for (int i = 0; i < 3; ++i)
                presses.push_back(bench::timeMs([&] { press(Qt::Key_Backspace, QString()); }));
        }));
    }
    std::printf("search_filter_50k ms=%.3f max_ms=%.3f stall_ms=%.3f rows=%d\n", bench::median(presses),
                *std::max_element(presses.begin(), presses.end()), stall, list->topLevelItemCount());
    std::fflush(stdout);
}

// 1,000 keys in ten sections, applied to the settings against QSettings
// writing the same keys and syncing once.
void compareBulkApply(const QString& scratch)
{
    const QString defaults = scratch + QStringLiteral("/bulk.ini");
    QFile file(defaults);
    file.open(QIODevice::WriteOnly);
    for (int section = 0; section < 10; ++section) {
        file.write(QStringLiteral("[Bench%1]\r\n").arg(section).toLatin1());
        for (int key = 0; key < 100; ++key)
            file.write(QStringLiteral("Key%1=Wert %2\r\n").arg(key).arg(section * 100 + key).toLatin1());
    }
    file.close();

    cNvWinIni* settings = cNvWinIni::theInstance();
    const QString userFile = QString::fromLatin1(settings->getUserModusIniPath().c_str());
    const QString plainFile = scratch + QStringLiteral("/qsettings.ini");
    bench::compare(
        "ini_bulk_apply", 9,
        [&] {
            QFile::remove(userFile);
            QFile::remove(plainFile);
        },
        [&] { settings->applyIniSettings(defaults.toLatin1().toStdString()); },
        [&] {
            QSettings plain(plainFile, QSettings::IniFormat);
            for (int section = 0; section < 10; ++section) {
                for (int key = 0; key < 100; ++key)
                    plain.setValue(QStringLiteral("Bench%1/Key%2").arg(section).arg(key),
                                   QStringLiteral("Wert %1").arg(section * 100 + key));
            }
            plain.sync();
        });
}

} // namespace

int main(int argc, char** argv)
{
    bench::preferOffscreen();
    QApplication application(argc, argv);
    CrossPlatformApi::setUrlOpener([](const QUrl&) { return true; });

    QTemporaryDir home;
    QTemporaryDir sampleHome;
    if (!home.isValid() || !sampleHome.isValid())
        return 1;
    bench::setUpHome(home.path());
    bench::setUpHome(sampleHome.path());
    const QString folder = bench::caseFolder(home.path());
    const QProcessEnvironment environment = bench::programEnvironment(home.path());
    const QProcessEnvironment sampleEnvironment = bench::programEnvironment(sampleHome.path());
    if (!bench::openInstallation(home.path()))
        return 1;
    if (argc > 1 && qstrcmp(argv[1], "search_filter_50k") == 0) {
        writeCaseFiles(folder, QStringLiteral("Steuerfall"), "est11", 0, 50000);
        StartCenter window(nullptr, Qt::WindowFlags());
        window.show();
        waitUntil([&] { return !incomeTaxList(window)->isListing(); });
        measureSearch(window);
        return 0;
    }
    const Stalls sampleStalls = measureStalls(folder);

    const std::pair<int, const char*> sizes[] = {{1000, "1k"}, {10000, "10k"}, {50000, "50k"}};
    int written = 0;
    for (const auto& [count, size] : sizes) {
        writeCaseFiles(folder, QStringLiteral("Steuerfall"), "est11", written, count);
        writeCaseFiles(folder, QStringLiteral("Betrieb"), "eur11", written / 10, count / 10);
        written = count;

        char name[32];
        std::snprintf(name, sizeof name, "startup_%s", size);
        compareStartup(name, environment, sampleEnvironment);

        StartCenter window(nullptr, Qt::WindowFlags());
        window.show();
        waitUntil([&] { return !incomeTaxList(window)->isListing(); });
        measureWindow(window, folder, size);
        if (count == 50000)
            measureSearch(window);
    }
    const Stalls stalls = measureStalls(folder);
    std::printf("ui_stall_max ms=%.3f startup_ms=%.3f mode_switch_ms=%.3f overview_ms=%.3f "
                "sample_folder_ms=%.3f\n",
                stalls.longest(), stalls.startup, stalls.modeSwitch, stalls.overview, sampleStalls.longest());
    std::fflush(stdout);
    compareFill(folder);
    compareBulkApply(home.path());
    return 0;
}
