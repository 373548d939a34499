#include "ApplicationInfo.h"
#include "Archive.h"
#include "PixmapLoader.h"
#include "PixmapManager.h"
#include "TempInstallation.h"
#include "TestMain.h"

#include <QBuffer>
#include <QImage>
#include <QPixmap>
#include <QTest>

namespace {

QByteArray png(Qt::GlobalColor color)
{
    QImage image(4, 4, QImage::Format_RGB32);
    image.fill(color);
    QByteArray data;
    QBuffer buffer(&data);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return data;
}

QRgb colorOf(const QPixmap* pixmap)
{
    return pixmap->isNull() ? 0 : pixmap->toImage().pixel(0, 0);
}

// Answers every request with a one-pixel pixmap of its colour.
class SolidStrategy : public PixmapLoaderStrategy
{
public:
    explicit SolidStrategy(Qt::GlobalColor color) : m_color(color) {}
    bool loadPixmap(const std::string&, QPixmap* pixmap) override
    {
        *pixmap = QPixmap(1, 1);
        pixmap->fill(m_color);
        return true;
    }

private:
    Qt::GlobalColor m_color;
};

}

class PixmapManagerTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TempInstallation> m_installation;

    void install(bool withContainer)
    {
        m_installation = std::make_unique<TempInstallation>();
        const TempInstallation& installation = *m_installation;
        installation.writeResource("media/both.png", png(Qt::red));
        installation.writeResource("media/Loose.png", png(Qt::red));
        installation.writeResource("media/images.ini", "[Start]\r\npic=start_logo\r\nwidth=12\r\n[Empty]\r\npic=\r\n");
        if (withContainer) {
            installation.writeFile("packed/both.png", png(Qt::blue));
            installation.writeFile("packed/packed.png", png(Qt::green));
            installation.writeFile("packed/broken.png", "\x89PNG but nothing more");
            cArchive writer((installation.resourcesDir() + "media/images_mac.cnt").toStdString(),
                            (installation.root() + "/packed/").toStdString());
            for (const char* name : {"both.png", "packed.png", "broken.png"})
                QVERIFY(writer.AddFile(name, name, compression::bzip2, true));
        }
        cApplicationInfo::resetInstance();
        PixmapManager::resetInstance();
    }

private slots:
    void cleanup()
    {
        PixmapManager::resetInstance();
        m_installation.reset();
        cApplicationInfo::resetInstance();
    }

    void looseFilesWinOverTheContainer()
    {
        install(true);
        PixmapManager* manager = PixmapManager::theInstance();
        QCOMPARE(colorOf(manager->getPixmap("both")), QColor(Qt::red).rgb());
        QCOMPARE(colorOf(manager->getPixmap("Packed")), QColor(Qt::green).rgb());   // the container ignores case
        QVERIFY(manager->getPixmap("loose")->isNull());                                // loose files do not
        QVERIFY(manager->getPixmap("broken")->isNull());
        QVERIFY(manager->getPixmap("both.png")->isNull());

        QPixmap* unknown = manager->getPixmap("unknown");
        QVERIFY(unknown && unknown->isNull());
        QCOMPARE(manager->getPixmap(std::string("unknown")), unknown);
        QCOMPARE(manager->getPixmap("both"), manager->getPixmap("both"));
    }

    void strategiesAreAskedInOrder()
    {
        install(true);
        PixmapManager* manager = PixmapManager::theInstance();
        manager->addStrategy(new SolidStrategy(Qt::yellow), false);
        QCOMPARE(colorOf(manager->getPixmap("both")), QColor(Qt::red).rgb());
        QCOMPARE(colorOf(manager->getPixmap("nowhere")), QColor(Qt::yellow).rgb());
        manager->addStrategy(new SolidStrategy(Qt::cyan), true);
        QCOMPARE(colorOf(manager->getPixmap("packed")), QColor(Qt::cyan).rgb());
        QCOMPARE(colorOf(manager->getPixmap("both")), QColor(Qt::red).rgb());   // cached before

        auto* replacement = new QPixmap(2, 2);
        manager->addPixmapToCache("both", replacement);
        QCOMPARE(manager->getPixmap("both"), replacement);
        manager->addPixmapToCache("both", replacement);
        QCOMPARE(manager->getPixmapFromCache("both"), replacement);
    }

    // Without a container only loose files count.
    void withoutContainerReadsLooseFilesAndInformation()
    {
        install(false);
        PixmapManager* manager = PixmapManager::theInstance();
        QCOMPARE(colorOf(manager->getPixmap("Loose")), QColor(Qt::red).rgb());
        QVERIFY(manager->getPixmap("packed")->isNull());

        QCOMPARE(manager->resolvePixName("Start", "default"), std::string("start_logo"));
        QCOMPARE(manager->resolvePixName("Empty", "default"), std::string("default"));
        QCOMPARE(manager->getInfoInt("Start", "width", 5), 12);

        m_installation->writeResource("media/edition.ini", "[Start]\r\npic=edition_logo\r\n");
        manager->setInfoFile("edition.ini");
        QCOMPARE(manager->resolvePixName("Start", "default"), std::string("edition_logo"));
    }
};

SC_TEST(PixmapManagerTest)
#include "tst_pixmaps.moc"
