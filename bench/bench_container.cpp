// container_readall: every entry of an image container read through
// PixmapLoaderCNT (building the loader, which indexes the container, then the
// data of each entry), against the floor of reading the file in one go and
// decompressing each entry with libbz2 directly.
// container_open: building the loader alone (what the image manager pays at
// start-up).
// pixmap_lookup: one cached PixmapManager::getPixmap.

#include "ApplicationInfo.h"
#include "Archive.h"
#include "BenchUtil.h"
#include "CrossPlatformApi.h"
#include "PixmapLoader.h"
#include "PixmapManager.h"

#include <QApplication>
#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <bzlib.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr int kEntries = 300;
constexpr int kRuns = 15;
constexpr int kLookups = 1000000;

// Noise pictures: like real PNG data they are already compressed as far as
// they go, so bzip2 makes them slightly larger. About 17 KiB each.
QByteArray noisePng(QRandomGenerator& random, int index)
{
    QImage image(70 + index % 12, 76, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, random.generate() | 0xFF000000u);
    }
    QByteArray data;
    QBuffer buffer(&data);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return data;
}

struct Entry
{
    std::string name;
    std::streamoff dataOffset;
    unsigned int storedSize;
    unsigned int uncompressedSize;
};

std::vector<Entry> entriesOf(const std::string& container)
{
    std::vector<Entry> entries;
    cArchive archive(container, false);
    std::ifstream in(container, std::ios::binary);
    while (in.peek() != std::char_traits<char>::eof()) {
        const cArchive::CacheItem item = archive.getCacheItem(in, std::string());
        // method, name length, name with its zero byte, two sizes
        entries.push_back({item.name, item.position + 16 + std::streamoff(item.name.size() + 1),
                           item.storedSize, item.uncompressedSize});
    }
    return entries;
}

void benchReadAll(const QString& folder)
{
    const std::string container = (folder + "/images_mac.cnt").toStdString();
    QRandomGenerator random(17);
    qint64 unpacked = 0;
    {
        cArchive writer(container, (folder + "/").toStdString());
        for (int i = 0; i < kEntries; ++i) {
            const QString name = QStringLiteral("picture%1.png").arg(i);
            const QByteArray png = noisePng(random, i);
            unpacked += png.size();
            QFile file(folder + '/' + name);
            if (!file.open(QIODevice::WriteOnly) || file.write(png) != png.size())
                return;
            file.close();
            writer.AddFile(name.toStdString(), name.toStdString(), compression::bzip2, false);
        }
    }
    const std::vector<Entry> entries = entriesOf(container);
    std::fprintf(stderr, "container: %zu entries, %.2f MiB unpacked, %.2f MiB stored\n", entries.size(),
                 unpacked / 1048576.0, QFile(QString::fromStdString(container)).size() / 1048576.0);

    long total = 0;
    const auto ours = [&] {
        PixmapLoaderCNT loader(container);
        for (const Entry& entry : entries)
            total += loader.getBufferFromArchive(entry.name).GetBufferLength();
    };
    const auto floor = [&] {
        QFile in(QString::fromStdString(container));
        in.open(QIODevice::ReadOnly);
        const QByteArray file = in.readAll();
        for (const Entry& entry : entries) {
            std::unique_ptr<char[]> data(new char[entry.uncompressedSize]);
            unsigned int length = entry.uncompressedSize;
            BZ2_bzBuffToBuffDecompress(data.get(), &length, const_cast<char*>(file.data() + entry.dataOffset),
                                       entry.storedSize, 0, 0);
            total += length;
        }
    };
    bench::compare("container_readall", kRuns, ours, floor);
    std::printf("container_open ms=%.3f\n", bench::medianMs(kRuns, [&] {
                    PixmapLoaderCNT loader(container);
                    bench::keep(loader);
                }));
    bench::keep(total);
}

void benchLookup(const QString& folder)
{
    const QString resources = folder + "/Start-Center.app/Contents/Resources/media/";
    QDir().mkpath(resources);
    QDir().mkpath(folder + "/Start-Center.app/Contents/MacOS");
    QImage(16, 16, QImage::Format_RGB32).save(resources + "logo.png");
    CrossPlatformApi::overrideExecutablePath((folder + "/Start-Center.app/Contents/MacOS/Start-Center").toStdString());
    cApplicationInfo::resetInstance();

    PixmapManager* manager = PixmapManager::theInstance();
    if (manager->getPixmap("logo")->isNull())
        std::fprintf(stderr, "pixmap_lookup: the picture did not load\n");
    const double ms = bench::medianMs(kRuns, [manager] {
        for (int i = 0; i < kLookups; ++i)
            bench::keep(manager->getPixmap("logo"));
    });
    std::printf("pixmap_lookup ns=%.1f\n", ms * 1e6 / kLookups);
    PixmapManager::resetInstance();
}

}

int main(int argc, char* argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QTemporaryDir folder;
    if (!folder.isValid())
        return 1;
    benchReadAll(folder.path());
    benchLookup(folder.path());
    return 0;
}
