#include "PixmapLoader.h"

#include "CrossPlatformApi.h"
#include "RegularFile.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>
#include <QPixmap>

namespace {

// The pictures of the installation are a few hundred kilobytes at most; a
// larger file, a FIFO or a device in their place yields no picture.
constexpr std::size_t MaxPictureFileBytes = 16 * 1024 * 1024;

bool hasPngSuffix(const std::string& name)
{
    return name.size() >= 4 && QByteArray::fromStdString(name.substr(name.size() - 4)).toLower() == ".png";
}

// A picture named "*.png" is read as PNG straight away. Left to itself, Qt
// asks every image plug-in whether it recognises the content before it tries
// its own PNG reader, which loads all of them (and the libraries they need)
// into the process at the first picture. Content that is no PNG after all is
// read the usual way, so nothing loads differently.
bool loadAsPng(QIODevice* device, QPixmap* pixmap)
{
    QImageReader reader(device, "png");
    reader.setAutoDetectImageFormat(false);
    QImage image = reader.read();
    if (image.isNull())
        return false;
    *pixmap = QPixmap::fromImage(std::move(image));
    return !pixmap->isNull();
}

} // namespace

QPixmap* PixmapLoaderStrategy::createPixmap(const std::string& name)
{
    auto pixmap = std::make_unique<QPixmap>();
    return loadPixmap(name, pixmap.get()) ? pixmap.release() : nullptr;
}

PixmapLoaderFile::PixmapLoaderFile(std::string folder)
    : m_folder(std::move(folder))
{
}

bool PixmapLoaderFile::loadPixmap(const std::string& name, QPixmap* pixmap)
{
    const std::optional<std::string> content =
        RegularFile::readWhole(CrossPlatformApi::fileSystemEncoding(m_folder + name), MaxPictureFileBytes);
    if (!content)
        return false;
    QByteArray bytes = QByteArray::fromRawData(content->data(), qsizetype(content->size()));
    if (hasPngSuffix(name)) {
        QBuffer buffer(&bytes);
        if (buffer.open(QIODevice::ReadOnly) && loadAsPng(&buffer, pixmap))
            return true;
    }
    return pixmap->loadFromData(bytes);
}

PixmapLoaderCNT::PixmapLoaderCNT(std::string containerPath)
    : m_archive(std::move(containerPath), false)
{
    m_archive.readAll();
}

bool PixmapLoaderCNT::loadPixmap(const std::string& name, QPixmap* pixmap)
{
    const cBuffer data = getBufferFromArchive(name);
    if (!data.GetBuffer())
        return false;
    if (hasPngSuffix(name)) {
        QByteArray bytes = QByteArray::fromRawData(data.GetBuffer(), qsizetype(data.GetBufferLength()));
        QBuffer buffer(&bytes);
        if (buffer.open(QIODevice::ReadOnly) && loadAsPng(&buffer, pixmap))
            return true;
    }
    return pixmap->loadFromData(reinterpret_cast<const uchar*>(data.GetBuffer()),
                                static_cast<uint>(data.GetBufferLength()));
}

cBuffer PixmapLoaderCNT::getBufferFromArchive(const std::string& name)
{
    return m_archive.GetFile(name);
}

PixmapLoaderDecoratorAddSuffix::PixmapLoaderDecoratorAddSuffix(PixmapLoaderStrategy* wrapped,
                                                               std::string suffix)
    : m_wrapped(wrapped)
    , m_suffix(std::move(suffix))
{
}

bool PixmapLoaderDecoratorAddSuffix::loadPixmap(const std::string& name, QPixmap* pixmap)
{
    return m_wrapped->loadPixmap(name + m_suffix, pixmap);
}
