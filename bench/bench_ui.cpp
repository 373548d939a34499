// The file list and the overview against their floors: rebuilding the list
// of a folder of 10,000 case files against listing that folder with QDir
// alone, and writing the overview of 1,000 case files.

#include "BenchUtil.h"

#include "CrossPlatformApi.h"
#include "OverviewPage.h"
#include "SCListView.h"

#include <QApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace {

const QString pattern = QStringLiteral("*.est11");

// count case files with change times spread over two years, so that the
// list meets both summer and winter time.
QStringList writeCaseFiles(const QString& folder, int count)
{
    const QDateTime start(QDate(2010, 1, 1), QTime(8, 0));
    QStringList names;
    for (int i = 0; i < count; ++i) {
        const QString name = QStringLiteral("Steuerfall %1.est11").arg(i, 5, 10, QLatin1Char('0'));
        QFile file(folder + name);
        file.open(QIODevice::WriteOnly);
        file.write("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<Steuerfall>\n"
                   "<Person>Erika und Hans Mustermann</Person>\n"
                   "<Kommentar>Zusammenveranlagung\nHandwerkerleistungen, Riester-Vertrag</Kommentar>\n"
                   "<Formulare><Feld Nr=\"976\">602.38</Feld></Formulare>\n</Steuerfall>\n");
        file.setFileTime(start.addSecs(qint64(i) * 6311), QFileDevice::FileModificationTime);
        names.append(name);
    }
    return names;
}

void benchFileList(const QString& folder)
{
    SCListView list(nullptr);
    list.init(folder, {pattern});
    bench::compare(
        "filelist_refresh", 15, [&] { list.updateList(); },
        [&] {
            const QDir dir(folder, pattern, QDir::Name | QDir::IgnoreCase,
                           QDir::Files | QDir::Readable | QDir::Writable);
            bench::keep(dir.entryInfoList());
        });
}

void benchOverview(const QString& folder, const QStringList& names)
{
    CrossPlatformApi::setUrlOpener([](const QUrl&) { return true; });
    OverviewPage page;
    page.setCaption(QStringLiteral("Steuererklärungen 2011"));
    const double ms = bench::medianMs(9, [&] {
        page.setTaxFiles(folder, names);
        page.show();
    });
    std::printf("overview_write ms=%.3f\n", ms);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QTemporaryDir root;

    const QString listFolder = root.path() + QStringLiteral("/list/");
    QDir().mkpath(listFolder);
    writeCaseFiles(listFolder, 10000);
    benchFileList(listFolder);

    const QString overviewFolder = root.path() + QStringLiteral("/overview/");
    QDir().mkpath(overviewFolder);
    benchOverview(overviewFolder, writeCaseFiles(overviewFolder, 1000));
    return 0;
}
