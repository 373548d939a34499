#include "PixmapLoader.h"

#include "CrossPlatformApi.h"
#include "RegularFile.h"

#include <QBuffer>
#include <QImage>
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

} // namespace

// A picture named "*.png" is read as PNG straight away. Left to itself, Qt
// asks every image plug-in whether it recognises the content before it tries
// its own PNG reader, which loads all of them (and the libraries they need)
// into the process at the first picture. Content that is no PNG after all is
// read the usual way, so nothing loads differently.
QImage EncodedPicture::decode() const
{
    const QByteArray data = QByteArray::fromRawData(bytes.data(), qsizetype(bytes.size()));
    if (namedPng) {
        QBuffer buffer;
        buffer.setData(data);
        QImageReader reader(&buffer, "png");
        reader.setAutoDetectImageFormat(false);
        QImage image = reader.read();
        if (!image.isNull())
            return image;
    }
    return QImage::fromData(data);
}

QPixmap* PixmapLoaderStrategy::createPixmap(const std::string& name)
{
    auto pixmap = std::make_unique<QPixmap>();
    return loadPixmap(name, pixmap.get()) ? pixmap.release() : nullptr;
}

std::optional<EncodedPicture> PixmapLoaderStrategy::loadEncoded(const std::string&)
{
    return std::nullopt;
}

bool PixmapLoaderEncoded::loadPixmap(const std::string& name, QPixmap* pixmap)
{
    const std::optional<EncodedPicture> encoded = loadEncoded(name);
    if (!encoded)
        return false;
    *pixmap = QPixmap::fromImage(encoded->decode());
    return !pixmap->isNull();
}

PixmapLoaderFile::PixmapLoaderFile(std::string folder)
    : m_folder(std::move(folder))
{
}

std::optional<EncodedPicture> PixmapLoaderFile::loadEncoded(const std::string& name)
{
    std::optional<std::string> content =
        RegularFile::readWhole(CrossPlatformApi::fileSystemEncoding(m_folder + name), MaxPictureFileBytes);
    if (!content)
        return std::nullopt;
    return EncodedPicture{std::move(*content), hasPngSuffix(name)};
}

PixmapLoaderCNT::PixmapLoaderCNT(std::string containerPath)
    : m_archive(std::move(containerPath), false)
{
    m_archive.readAll();
}

std::optional<EncodedPicture> PixmapLoaderCNT::loadEncoded(const std::string& name)
{
    const cBuffer data = getBufferFromArchive(name);
    if (!data.GetBuffer())
        return std::nullopt;
    return EncodedPicture{std::string(data.GetBuffer(), data.GetBufferLength()), hasPngSuffix(name)};
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

std::optional<EncodedPicture> PixmapLoaderDecoratorAddSuffix::loadEncoded(const std::string& name)
{
    return m_wrapped->loadEncoded(name + m_suffix);
}
