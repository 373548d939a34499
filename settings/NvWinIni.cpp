#include "NvWinIni.h"

#include "ApplicationInfo.h"
#include "CrossPlatformApi.h"
#include "DMFileName.h"
#include "Exceptions.h"
#include "FilePath.h"
#include "FolderManager.h"
#include "NvAssert.h"
#include "PrivateFolder.h"
#include "StreamTokenizer.h"
#include "StringFunctions.h"
#include "UserMessage.h"

#include <sstream>

const char* const cszNvWinIniName = "ORVKonf.ini";
const char* const cszDefaultModus = "normal";
const char* const cszIniSecModus = "Modus";
const char* const cModes = "Modes";
const char* const cValidModes = "ValidModes";
const char* const cszDefaultSettingsIni = "default.ini";
const char* const cszDefaultSettingsSec = "Settings";
const char* const cszDefaultSettingsKey = "SetDefaultSettings";
const char* const cszIllegalModus = "Programmmodus <%s> unbekannt.";
const char* const cszErrorMessage =
    "Der Konfigurationspfad <%s> konnte nicht gefunden werden.\n"
    "Die eigenen Einstellungen werden gespeichert im Verzeichnis <%s>.";
const char* const cszSessionOnlyMessage =
    "Der Konfigurationspfad <%s> konnte nicht gefunden werden.\n"
    "Die eigenen Einstellungen werden nur f\xFCr diese Sitzung behalten und nicht gespeichert.";

namespace {
const char* const cszSettingsSec = "Settings";
const char* const cszUserSettingsKey = "UserSettings";
const char* const cszHomeDataDirKey = "HomeDataDir";
const char* const cszErrorTitle = "Fehler";

// Environment variables may refer to each other; a chain longer than this
// is taken as a cycle and left unresolved.
const int maxEnvironmentExpansions = 64;

std::string appDir()
{
    return cApplicationInfo::theInstance()->getAppDir();
}

// The user's copy of an installed file: x.ini becomes x.user.ini.
std::string userFileName(const std::string& installedFile)
{
    const FilePath path(installedFile);
    return path.getPrefix() + ".user." + path.getSuffix();
}

// A path that names a folder, with the trailing "/" that makes FilePath
// treat all of it as the folder part.
FilePath folderPath(std::string path)
{
    if (!path.empty() && path.back() != '/')
        path += '/';
    return FilePath(path);
}

[[noreturn]] void throwUnknownModus(const std::string& mode)
{
    throw xNvFatalExc(new cStringMessage(cszIllegalModus)) << mode;
}
} // namespace

cNvWinIni* cNvWinIni::theInstance()
{
    return SingletonSlot<cNvWinIni>::instance();
}

void cNvWinIni::resetInstance()
{
    SingletonSlot<cNvWinIni>::reset();
}

cNvWinIni::cNvWinIni() = default;

cNvWinIni::~cNvWinIni() = default;

bool cNvWinIni::setGlobalIniName(const std::string& name)
{
    m_globalIniName = name;
    const std::string path = cApplicationInfo::theInstance()->getFilenameInAppDir(name);
    if (!FilePath(path).exists())
        return false;

    m_globalIni.SetPath(path);
    // The configured folders may be written with folder symbols.
    FolderManager::theInstance();
    buildUserDir();
    buildUserGlobalIni();
    buildHomeDataDir();
    clearCache();
    return true;
}

std::string cNvWinIni::setModus(const std::string& mode)
{
    if (mode == m_modus)
        return m_modus;
    if (m_globalIniName.empty())
        NV_ASSERT_AT(!"Globale INI noch nicht gesetzt", "cNvWinIni", 236);

    const std::string oldModus = m_modus;
    m_modus = mode;
    try {
        buildModusInis();
    } catch (...) {
        // An unknown mode leaves the previous mode and its files in place.
        m_modus = oldModus;
        throw;
    }
    return oldModus;
}

std::string cNvWinIni::getModus() const
{
    return m_modus;
}

std::string cNvWinIni::GetString(const char* section, const char* key, const char* defaultValue)
{
    if (!m_cacheEnabled)
        return getStringFromIni(section, key, defaultValue);

    const std::string cacheKey = getCacheKey(section, key);
    const auto cached = m_cache.find(cacheKey);
    if (cached != m_cache.end())
        return cached->second;
    // The first caller's default is cached with the value, deliberately:
    // later reads of a missing key return it whatever default they pass.
    const std::string value = getStringFromIni(section, key, defaultValue);
    m_cache.emplace(cacheKey, value);
    return value;
}

int cNvWinIni::GetInt(const char* section, const char* key, int defaultValue)
{
    const std::string defaultText = StringFunctions::intToString(defaultValue);
    return StringFunctions::stringToInt(GetString(section, key, defaultText.c_str()));
}

cNvWinIni::BulkWrite::BulkWrite(cNvWinIni& settings)
    : m_settings(settings)
{
    m_settings.m_userModusIni.HoldWrites();
    m_settings.m_userGlobalIni.HoldWrites();
}

cNvWinIni::BulkWrite::~BulkWrite()
{
    m_settings.m_userModusIni.ReleaseWrites();
    m_settings.m_userGlobalIni.ReleaseWrites();
}

bool cNvWinIni::WriteString(const char* section, const char* key, const char* value)
{
    if (!userFolderUsable())
        return false;
    cIniFile* target = &m_userModusIni;
    if (!m_modusIni.Contains(section, key) && m_globalIni.Contains(section, key))
        target = &m_userGlobalIni;

    if (!target->WriteString(section, key, value))
        return false;
    if (m_cacheEnabled)
        m_cache[getCacheKey(section, key)] = value ? value : "";
    return true;
}

bool cNvWinIni::WriteInt(const char* section, const char* key, int value)
{
    return WriteString(section, key, StringFunctions::intToString(value).c_str());
}

bool cNvWinIni::IsInGlobalIni(const char* section, const char* key) const
{
    return m_globalIni.Contains(section, key);
}

bool cNvWinIni::IsInModusIni(const char* section, const char* key) const
{
    return m_modusIni.Contains(section, key);
}

bool cNvWinIni::IsInUserGlobalIni(const char* section, const char* key) const
{
    return m_userGlobalIni.Contains(section, key);
}

bool cNvWinIni::IsInUserModusIni(const char* section, const char* key) const
{
    return m_userModusIni.Contains(section, key);
}

std::string cNvWinIni::getGlobalIniString(const char* section, const char* key,
                                          const char* defaultValue)
{
    NV_ASSERT_AT(!m_globalIniName.empty(), "cNvWinIni", 394);
    return m_globalIni.GetString(section, key, defaultValue);
}

int cNvWinIni::getGlobalIniInt(const char* section, const char* key, int defaultValue)
{
    NV_ASSERT_AT(!m_globalIniName.empty(), "cNvWinIni", 386);
    return m_globalIni.GetInt(section, key, defaultValue);
}

std::string cNvWinIni::getGlobalIniName() const
{
    return m_globalIniName;
}

std::string cNvWinIni::getGlobalIniPath() const
{
    return m_globalIni.GetPath();
}

std::string cNvWinIni::getModusIniPath() const
{
    return m_modusIni.GetPath();
}

std::string cNvWinIni::getUserGlobalIniPath() const
{
    return m_userGlobalIni.GetPath();
}

std::string cNvWinIni::getUserModusIniPath() const
{
    return m_userModusIni.GetPath();
}

std::string cNvWinIni::getUserSettingsPath() const
{
    return m_userSettingsPath;
}

std::string cNvWinIni::getHomeDataPath() const
{
    return m_homeDataPath;
}

void cNvWinIni::enableCache(bool on)
{
    m_cacheEnabled = on;
    if (!on)
        clearCache();
}

void cNvWinIni::clearCache()
{
    m_cache.clear();
}

bool cNvWinIni::enableDefaultSettings(bool on)
{
    return WriteInt(cszDefaultSettingsSec, cszDefaultSettingsKey, on ? 1 : 0);
}

bool cNvWinIni::defaultSettingsEnabled()
{
    return GetInt(cszDefaultSettingsSec, cszDefaultSettingsKey, 0) == 1;
}

bool cNvWinIni::setDefaultSettings()
{
    if (!applyIniSettings(cApplicationInfo::theInstance()->getFilenameInAppDir(cszDefaultSettingsIni)))
        return false;
    WriteInt(cszDefaultSettingsSec, cszDefaultSettingsKey, 0);
    return true;
}

bool cNvWinIni::applyIniSettings(const std::string& path)
{
    if (!FilePath(path).exists())
        return false;

    clearCache();
    const BulkWrite oneWritePerFile(*this);
    for (const std::string& section : CrossPlatformApi::getIniSections(path)) {
        for (const std::string& entry : CrossPlatformApi::getIniSectionEntries(section, path)) {
            std::string key;
            std::string value;
            if (StringFunctions::split(entry, "=", key, value))
                WriteString(section.c_str(), key.c_str(), value.c_str());
        }
    }
    return true;
}

bool cNvWinIni::removeUserModusIniFiles()
{
    cIniFile installed(cApplicationInfo::theInstance()->getFilenameInAppDir(cszNvWinIniName), false,
                       false);
    std::string modes = installed.GetString(cModes, cValidModes, "");
    if (modes.empty())
        return false;

    modes += ",";
    std::istringstream stream(modes);
    for (cStreamTokenizer tokens(stream, ","); !tokens.EndOfStream() && !tokens.StreamError(); ++tokens) {
        const std::string mode = StringFunctions::strip(tokens.Token());
        if (mode.empty())
            continue;
        const std::string path = userFilePath(userFileName(modusIniName(mode)));
        if (!path.empty())
            CrossPlatformApi::deleteFile(path);
    }
    if (!m_userGlobalIni.GetPath().empty())
        CrossPlatformApi::deleteFile(m_userGlobalIni.GetPath());

    // Reopen the user files so that reads no longer see the deleted values.
    m_userGlobalIni.SetPath(m_userGlobalIni.GetPath());
    m_userModusIni.SetPath(m_userModusIni.GetPath());
    clearCache();
    return true;
}

void cNvWinIni::buildUserDir()
{
    DMFileName fileName;
    fileName.setFullPath(m_globalIni.GetString(cszSettingsSec, cszUserSettingsKey, ""));
    fileName.makeAbsPath(true);
    m_userSettingsPath = parseAndGenerateDirectory(fileName.compose(), m_userSettingsOrigin).getPath();
}

void cNvWinIni::buildHomeDataDir()
{
    const std::string configured = m_globalIni.GetString(cszSettingsSec, cszHomeDataDirKey, "");
    FolderOrigin origin = FolderOrigin::Configured;
    const FilePath folder = parseAndGenerateDirectory(DMFileName(configured).compose(), origin);
    // The symbol keeps the configured text, not the folder made from it, so
    // that paths stored with "<HomeDataDir>" follow the configuration.
    FolderManager::theInstance()->setSymbol(cszHomeDataDirKey, configured);
    m_homeDataPath = folder.getPath();
}

void cNvWinIni::buildUserGlobalIni()
{
    m_userGlobalIni.SetPath(userFilePath(userFileName(m_globalIniName)));
}

std::string cNvWinIni::userFilePath(const std::string& name) const
{
    // Without a folder of its own the user's files have no path: their
    // values live in memory for this session only.
    if (m_userSettingsOrigin == FolderOrigin::None || !userFolderUsable())
        return {};
    FilePath path(name);
    path.makeRelativeTo(FilePath(m_userSettingsPath));
    return path.asString();
}

bool cNvWinIni::userFolderUsable() const
{
    return m_userSettingsOrigin != FolderOrigin::PrivateFallback
           || PrivateFolder::isPrivate(CrossPlatformApi::fileSystemEncoding(m_userSettingsPath));
}

void cNvWinIni::buildModusInis()
{
    if (m_globalIniName.empty() || m_modus.empty())
        return;

    FilePath modusIni(modusIniName(m_modus));
    const std::string userModusIni = userFilePath(userFileName(modusIni.asString()));
    modusIni.makeRelativeTo(FilePath(appDir()));
    m_modusIni.SetPath(modusIni.asString());
    m_userModusIni.SetPath(userModusIni);

    if (defaultSettingsEnabled()) {
        setDefaultSettings();
        m_modusIni.SetPath(m_modusIni.GetPath());
        m_userModusIni.SetPath(m_userModusIni.GetPath());
    }
    clearCache();
}

std::string cNvWinIni::modusIniName(const std::string& mode)
{
    std::string name = m_globalIni.GetString(cszIniSecModus, mode.c_str(), "");
    if (FilePath(name).getPrefix().empty())
        throwUnknownModus(mode);
    return name;
}

FilePath cNvWinIni::parseAndGenerateDirectory(const std::string& dir, FolderOrigin& origin) const
{
    std::string text = dir;
    for (int expansions = 0;
         expansions < maxEnvironmentExpansions && StringFunctions::replaceEnvironmenVariable(text);
         ++expansions) {
    }
    // A "%" left over is a variable that is not set: the configured folder
    // cannot be known, so the application folder stands in for all of it.
    if (text.find('%') != std::string::npos)
        text = appDir();

    FilePath folder = folderPath(text);
    if (!folder.isAbsolute())
        folder.makeRelativeTo(FilePath(appDir()));
    origin = FolderOrigin::Configured;
    if (folder.isDirectory() || folder.makeDir())
        return folder;

    // Never the shared temporary folder: another user could plant settings
    // there or a link that a write would follow.
    const std::string fallback = PrivateFolder::settingsFallback();
    if (fallback.empty()) {
        origin = FolderOrigin::None;
        cStringMessage message(cszSessionOnlyMessage);
        message << folder.asString();
        CrossPlatformApi::messageBox(message.GetMessage(), cszErrorTitle, 0);
        return folder;
    }
    origin = FolderOrigin::PrivateFallback;
    const FilePath privateFolder = folderPath(CrossPlatformApi::fromFileSystemEncoding(fallback));
    cStringMessage message(cszErrorMessage);
    message << folder.asString() << privateFolder.asString();
    CrossPlatformApi::messageBox(message.GetMessage(), cszErrorTitle, 0);
    return privateFolder;
}

std::string cNvWinIni::getCacheKey(const char* section, const char* key) const
{
    return std::string(section ? section : "") + "|" + (key ? key : "");
}

std::string cNvWinIni::getStringFromIni(const char* section, const char* key,
                                        const char* defaultValue)
{
    // Each layer gets the result of the less specific layers as its default,
    // so an empty or missing value falls through to the next file.
    const std::string global = m_globalIni.GetString(section, key, defaultValue);
    const std::string userGlobal = m_userGlobalIni.GetString(section, key, global.c_str());
    const std::string modus = m_modusIni.GetString(section, key, userGlobal.c_str());
    return m_userModusIni.GetString(section, key, modus.c_str());
}
