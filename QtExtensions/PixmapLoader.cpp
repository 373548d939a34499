#include "PixmapLoader.h"

#include "CrossPlatformApi.h"

#include <QFile>
#include <QPixmap>

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
    const QString path = CrossPlatformApi::toQString(m_folder + name);
    return QFile::exists(path) && pixmap->load(path);
}

PixmapLoaderCNT::PixmapLoaderCNT(std::string containerPath)
    : m_archive(std::move(containerPath), false)
{
    m_archive.readAll();
}

bool PixmapLoaderCNT::loadPixmap(const std::string& name, QPixmap* pixmap)
{
    const cBuffer data = getBufferFromArchive(name);
    return data.GetBuffer()
        && pixmap->loadFromData(reinterpret_cast<const uchar*>(data.GetBuffer()),
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
