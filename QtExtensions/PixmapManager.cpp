#include "PixmapManager.h"

#include "ApplicationInfo.h"
#include "FilePath.h"
#include "PixmapLoader.h"

#include <QPixmap>

PixmapManager* PixmapManager::theInstance()
{
    return SingletonSlot<PixmapManager>::instance();
}

void PixmapManager::resetInstance()
{
    SingletonSlot<PixmapManager>::reset();
}

PixmapManager::PixmapManager()
    : m_picturePath(cApplicationInfo::theInstance()->getFilenameInAppDir(cPictureBasePath))
{
    addStrategy(new PixmapLoaderDecoratorAddSuffix(new PixmapLoaderFile(m_picturePath), ".png"), false);

    const std::string container = getContainerPath();
    m_hasContainer = FilePath(container).exists();
    if (m_hasContainer)
        addStrategy(new PixmapLoaderDecoratorAddSuffix(new PixmapLoaderCNT(container), ".png"), false);

    setInfoFile("images.ini");
}

PixmapManager::~PixmapManager() = default;

std::string PixmapManager::getDefContainerName()
{
    return "images_mac.cnt";
}

std::string PixmapManager::getContainerPath() const
{
    FilePath container(m_picturePath);
    container.setName(getDefContainerName().c_str());
    return container.asString();
}

QPixmap* PixmapManager::getPixmap(const std::string& name)
{
    if (QPixmap* cached = getPixmapFromCache(name))
        return cached;
    for (const auto& strategy : m_strategies) {
        if (QPixmap* pixmap = strategy->createPixmap(name)) {
            addPixmapToCache(name, pixmap);
            return pixmap;
        }
    }
    auto* missing = new QPixmap;
    addPixmapToCache(name, missing);
    return missing;
}

std::optional<EncodedPicture> PixmapManager::getEncoded(const std::string& name)
{
    for (const auto& strategy : m_strategies)
        if (std::optional<EncodedPicture> encoded = strategy->loadEncoded(name))
            return encoded;
    return std::nullopt;
}

QPixmap* PixmapManager::getPixmap(const char* name)
{
    return getPixmap(std::string(name ? name : ""));
}

void PixmapManager::addStrategy(PixmapLoaderStrategy* strategy, bool atFront)
{
    m_strategies.emplace(atFront ? m_strategies.begin() : m_strategies.end(), strategy);
}

void PixmapManager::setInfoFile(const std::string& name)
{
    m_infoFile.SetPath(m_picturePath + name);
}

std::string PixmapManager::resolvePixName(const std::string& section, const std::string& defaultName) const
{
    return getInfoString(section, "pic", defaultName);
}

int PixmapManager::getInfoInt(const std::string& section, const std::string& key, int defaultValue) const
{
    return m_infoFile.GetInt(section.c_str(), key.c_str(), defaultValue);
}

std::string PixmapManager::getInfoString(const std::string& section, const std::string& key,
                                         const std::string& defaultValue) const
{
    return m_infoFile.GetString(section.c_str(), key.c_str(), defaultValue.c_str());
}

QPixmap* PixmapManager::getPixmapFromCache(const std::string& name) const
{
    const auto cached = m_cache.find(name);
    return cached != m_cache.end() ? cached->second.get() : nullptr;
}

void PixmapManager::addPixmapToCache(const std::string& name, QPixmap* pixmap)
{
    auto& slot = m_cache[name];
    if (slot.get() != pixmap)
        slot.reset(pixmap);
}
