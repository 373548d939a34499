#include "PixmapManager.h"

#include "ApplicationInfo.h"
#include "FilePath.h"
#include "PixmapLoader.h"

#include <QImage>
#include <QPixmap>

#include <system_error>
#include <utility>

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

PixmapManager::~PixmapManager()
{
    if (m_decoder.joinable())
        m_decoder.join();
}

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
    if (QPixmap* prefetched = takePrefetched(name))
        return prefetched;
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

void PixmapManager::prefetch(const std::vector<std::string>& names)
{
    struct Job
    {
        EncodedPicture picture;
        std::promise<QImage> decoded;
    };
    std::vector<Job> jobs;
    for (const std::string& name : names) {
        if (getPixmapFromCache(name) || m_prefetched.count(name))
            continue;
        for (const auto& strategy : m_strategies) {
            if (!strategy->readsEncoded())
                break;
            if (std::optional<EncodedPicture> picture = strategy->loadEncoded(name)) {
                jobs.push_back({std::move(*picture), {}});
                m_prefetched.emplace(name, jobs.back().decoded.get_future());
                break;
            }
        }
    }
    if (jobs.empty())
        return;
    if (m_decoder.joinable())
        m_decoder.join();
    // Converted to the form a pixmap keeps, so that the UI thread only wraps it.
    const auto decodeAll = [](std::vector<Job> jobs) {
        for (Job& job : jobs) {
            QImage image = job.picture.decode();
            if (image.format() == QImage::Format_ARGB32)
                image.convertTo(QImage::Format_ARGB32_Premultiplied);
            job.decoded.set_value(std::move(image));
        }
    };
    try {
        m_decoder = std::thread(decodeAll, std::move(jobs));
    } catch (const std::system_error&) {
        // No thread to be had: getPixmap finds the promises broken and
        // loads the pictures itself.
    }
}

QPixmap* PixmapManager::takePrefetched(const std::string& name)
{
    const auto prefetched = m_prefetched.find(name);
    if (prefetched == m_prefetched.end())
        return nullptr;
    QImage image;
    try {
        image = prefetched->second.get();
    } catch (const std::future_error&) {
    }
    m_prefetched.erase(prefetched);
    // A picture that did not decode is looked for again, strategy by
    // strategy, as if never prefetched.
    if (image.isNull())
        return nullptr;
    auto* pixmap = new QPixmap(QPixmap::fromImage(std::move(image)));
    addPixmapToCache(name, pixmap);
    return pixmap;
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
