#pragma once

#include "Archive.h"

#include <memory>
#include <optional>
#include <string>

class QImage;
class QPixmap;

// An encoded picture as a strategy finds it: the bytes, and whether its name
// says PNG.
struct EncodedPicture
{
    std::string bytes;
    bool namedPng = false;

    // A null image when the bytes are no picture.
    QImage decode() const;
};

// One way of finding a picture by name.
class PixmapLoaderStrategy
{
public:
    virtual ~PixmapLoaderStrategy() = default;

    // A new pixmap (owned by the caller), or null when this strategy has no
    // picture of that name or it does not decode.
    virtual QPixmap* createPixmap(const std::string& name);
    virtual bool loadPixmap(const std::string& name, QPixmap* pixmap) = 0;
    // The encoded picture of that name, or nothing when this strategy has
    // none or does not keep its pictures encoded.
    virtual std::optional<EncodedPicture> loadEncoded(const std::string& name);
};

// A strategy whose pictures are encoded files: loading is reading and
// decoding, the same for every such strategy.
class PixmapLoaderEncoded : public PixmapLoaderStrategy
{
public:
    bool loadPixmap(const std::string& name, QPixmap* pixmap) override;
    std::optional<EncodedPicture> loadEncoded(const std::string& name) override = 0;
};

// Picture files in a folder: folder + name.
class PixmapLoaderFile : public PixmapLoaderEncoded
{
public:
    explicit PixmapLoaderFile(std::string folder);

    std::optional<EncodedPicture> loadEncoded(const std::string& name) override;

private:
    std::string m_folder;
};

// The entries of a container file. The container is indexed completely when
// the loader is built; the data are read from the file on each request.
class PixmapLoaderCNT : public PixmapLoaderEncoded
{
public:
    explicit PixmapLoaderCNT(std::string containerPath);

    std::optional<EncodedPicture> loadEncoded(const std::string& name) override;
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
    std::optional<EncodedPicture> loadEncoded(const std::string& name) override;

private:
    std::unique_ptr<PixmapLoaderStrategy> m_wrapped;
    std::string m_suffix;
};
