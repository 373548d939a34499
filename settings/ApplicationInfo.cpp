#include "ApplicationInfo.h"

#include "CrossPlatformApi.h"
#include "FilePath.h"
#include "NvWinIni.h"

#include <cstdlib>

std::string appFileName()
{
    return CrossPlatformApi::executablePath();
}

cApplicationInfo* cApplicationInfo::theInstance()
{
    return SingletonSlot<cApplicationInfo>::instance();
}

void cApplicationInfo::resetInstance()
{
    SingletonSlot<cApplicationInfo>::reset();
}

cApplicationInfo::cApplicationInfo()
    : m_appPath(appFileName())
{
    m_appDir = appDirOf(m_appPath);
}

cApplicationInfo::~cApplicationInfo() = default;

std::string cApplicationInfo::appDirOf(const std::string& executablePath)
{
    const std::size_t lastSlash = executablePath.rfind('/');
    if (lastSlash == std::string::npos)
        return std::string();
    std::string folder = executablePath.substr(0, lastSlash + 1);

    static const std::string bundleExecutables = "/Contents/MacOS";
    const std::size_t inBundle = folder.rfind(bundleExecutables);
    if (inBundle != std::string::npos)
        folder = folder.substr(0, inBundle + 1) + "Contents/Resources/";
    return folder;
}

std::string cApplicationInfo::getAppPath() const
{
    return m_appPath;
}

std::string cApplicationInfo::getAppDir() const
{
    return m_appDir;
}

std::string cApplicationInfo::getFilenameInAppDir(const std::string& name) const
{
    return m_appDir + name;
}

std::string cApplicationInfo::getUserSettingsDir() const
{
    return cNvWinIni::theInstance()->getUserSettingsPath();
}

std::string cApplicationInfo::getFilenameInUserDir(const std::string& name) const
{
    return getUserSettingsDir() + name;
}

std::string cApplicationInfo::getHomeDataPath() const
{
    const std::string path = cNvWinIni::theInstance()->getHomeDataPath();
    FilePath folder(path);
    if (!folder.exists())
        folder.makeDir();
    return path;
}

std::string cApplicationInfo::getTempDir() const
{
    const char* tmpDir = std::getenv("TMPDIR");
    return tmpDir && *tmpDir ? CrossPlatformApi::fromFileSystemEncoding(tmpDir) : std::string("/tmp");
}
