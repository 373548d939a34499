#pragma once

#include "Archive.h"

#include <memory>
#include <string>

class QPixmap;

// One way of finding a picture by name.
class PixmapLoaderStrategy
{
public:
    virtual ~PixmapLoaderStrategy() = default;

    // A new pixmap (owned by the caller), or null when this strategy has no
    // picture of that name or it does not decode.
    virtual QPixmap* createPixmap(const std::string& name);
    virtual bool loadPixmap(const std::string& name, QPixmap* pixmap) = 0;
};

// Picture files in a folder: folder + name.
class PixmapLoaderFile : public PixmapLoaderStrategy
{
public:
    explicit PixmapLoaderFile(std::string folder);

    bool loadPixmap(const std::string& name, QPixmap* pixmap) override;

private:
    std::string m_folder;
};

// The entries of a container file. The container is indexed completely when
// the loader is built; the data are read from the file on each request.
class PixmapLoaderCNT : public PixmapLoaderStrategy
{
public:
    explicit PixmapLoaderCNT(std::string containerPath);

    bool loadPixmap(const std::string& name, QPixmap* pixmap) override;
    cBuffer getBufferFromArchive(const std::string& name);

private:
    cArchive m_archive;
};

// Passes every request on to another strategy (which it owns) with a suffix
// appended to the name.
class PixmapLoaderDecoratorAddSuffix : public PixmapLoaderStrategy
{
public:
    PixmapLoaderDecoratorAddSuffix(PixmapLoaderStrategy* wrapped, std::string suffix);

    bool loadPixmap(const std::string& name, QPixmap* pixmap) override;

private:
    std::unique_ptr<PixmapLoaderStrategy> m_wrapped;
    std::string m_suffix;
};
