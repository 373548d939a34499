#pragma once

#include "IniFile.h"
#include "SingletonSlot.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class PixmapLoaderStrategy;
struct EncodedPicture;
class QPixmap;

// Hands out the pictures of the user interface by name. Strategies are asked
// in order: loose "<name>.png" files in the picture folder, then the entries
// of the image container in that folder. Every answer is cached, also a
// miss, which is an empty pixmap: getPixmap never fails.
//
// Beside the pictures the manager reads an information INI file that maps
// picture roles to names per section (key "pic") and holds further values of
// the edition. Main thread only.
class PixmapManager
{
public:
    static constexpr const char* cPictureBasePath = "media/";

    static PixmapManager* theInstance();
    // For tests: destroys the instance with its cache, so that the next
    // theInstance() looks at the installation afresh.
    static void resetInstance();

    ~PixmapManager();
    PixmapManager(const PixmapManager&) = delete;
    PixmapManager& operator=(const PixmapManager&) = delete;

    static std::string getDefContainerName();
    // The image container of the picture folder, and whether it is there.
    std::string getContainerPath() const;
    bool hasContainer() const { return m_hasContainer; }

    // Never null; owned by the manager.
    QPixmap* getPixmap(const std::string& name);
    QPixmap* getPixmap(const char* name);
    // The picture of that name still encoded, as the first strategy that has
    // it finds it, for decoding away from the main thread; the cache is
    // neither asked nor filled.
    std::optional<EncodedPicture> getEncoded(const std::string& name);

    // Takes ownership; atFront puts the strategy before all others.
    void addStrategy(PixmapLoaderStrategy* strategy, bool atFront);

    // The information INI becomes the picture folder's file name.
    void setInfoFile(const std::string& name);
    // The value of "pic" in section, or defaultName.
    std::string resolvePixName(const std::string& section, const std::string& defaultName) const;
    int getInfoInt(const std::string& section, const std::string& key, int defaultValue) const;
    std::string getInfoString(const std::string& section, const std::string& key,
                              const std::string& defaultValue) const;

    QPixmap* getPixmapFromCache(const std::string& name) const;
    // Takes ownership; a pixmap cached under name before is deleted.
    void addPixmapToCache(const std::string& name, QPixmap* pixmap);

private:
    friend class SingletonSlot<PixmapManager>;
    PixmapManager();

    std::string m_picturePath;
    bool m_hasContainer = false;
    // Reading may re-parse the file when it changed on disk.
    mutable cIniFile m_infoFile;
    std::vector<std::unique_ptr<PixmapLoaderStrategy>> m_strategies;
    std::map<std::string, std::unique_ptr<QPixmap>> m_cache;
};
