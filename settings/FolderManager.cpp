#include "FolderManager.h"

#include "ApplicationInfo.h"
#include "CrossPlatformApi.h"
#include "DMFileName.h"
#include "FilePath.h"
#include "IniFile.h"

namespace {
const char* const cszFolderErrorTitle = "Verzeichnis-Fehler";

void reportFolderError(const std::string& text)
{
    CrossPlatformApi::messageBox(text, cszFolderErrorTitle, 0);
}
} // namespace

FolderManager* FolderManager::theInstance()
{
    return SingletonSlot<FolderManager>::instance();
}

void FolderManager::resetInstance()
{
    SingletonSlot<FolderManager>::reset();
}

FolderManager::FolderManager()
{
    DMFileName::getGlobalFileEnvironment().setBaseDir(getBaseFolder());

    static const struct {
        const char* name;
        CrossPlatformApi::SysFolder folder;
    } systemSymbols[] = {
        {"SYS_TEMP", CrossPlatformApi::SysTemp},
        {"SYS_LOCAL_APPDATA", CrossPlatformApi::SysLocalAppData},
        {"SYS_COMMON_APPDATA", CrossPlatformApi::SysCommonAppData},
        {"SYS_MYDOCUMENTS", CrossPlatformApi::SysMyDocuments},
        {"SYS_PROFILE", CrossPlatformApi::SysProfile},
        {"SYS_LOCAL_CONFIG", CrossPlatformApi::SysLocalConfig},
        {"SYS_LOCAL_STATE", CrossPlatformApi::SysLocalState},
        {"SYS_LOCAL_CACHE", CrossPlatformApi::SysLocalCache},
    };
    for (const auto& symbol : systemSymbols)
        setSymbol(symbol.name, CrossPlatformApi::getSystemFolder(symbol.folder));
}

FolderManager::~FolderManager() = default;

std::string FolderManager::getBaseFolder() const
{
    return cApplicationInfo::theInstance()->getAppDir();
}

void FolderManager::setSymbol(const std::string& name, const std::string& value)
{
    DMFileName::getGlobalFileEnvironment().setSymbol(name, value);
}

void FolderManager::parseSection(const std::string& iniPath, const std::string& section)
{
    const cIniFile ini(iniPath, true, false);
    if (const auto* keys = ini.FindSection(section)) {
        for (const auto& [name, value] : *keys)
            setSymbol(std::string(name), std::string(value));
    }
}

bool FolderManager::ensureFolderExists(const std::string& symbolicPath)
{
    DMFileName fileName;
    fileName.setFullPath(symbolicPath);
    const std::string expanded = fileName.compose();
    if (expanded.size() < 2) {
        reportFolderError("Verzeichnissymbol nicht definiert: " + symbolicPath);
        return false;
    }
    if (fileName.exists())
        return true;

    // makeDir creates the folder part of a path: the trailing "/" makes the
    // whole expanded path that folder.
    FilePath folder(expanded.back() == '/' ? expanded : expanded + '/');
    folder.makeDir();
    if (!folder.exists()) {
        reportFolderError("Verzeichnis konnte nicht angelegt werden:\n" + expanded);
        return false;
    }
    return true;
}
