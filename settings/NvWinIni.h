#pragma once

#include "IniFile.h"
#include "SingletonSlot.h"

#include <map>
#include <memory>
#include <string>

class FilePath;

extern const char* const cszNvWinIniName;       // "ORVKonf.ini"
extern const char* const cszDefaultModus;       // "normal"
extern const char* const cszIniSecModus;        // "Modus"
extern const char* const cModes;                // "Modes"
extern const char* const cValidModes;           // "ValidModes"
extern const char* const cszDefaultSettingsIni; // "default.ini"
extern const char* const cszDefaultSettingsSec; // "Settings"
extern const char* const cszDefaultSettingsKey; // "SetDefaultSettings"
extern const char* const cszIllegalModus;
extern const char* const cszErrorMessage;
// Shown instead when not even a private folder can be had for the settings.
extern const char* const cszSessionOnlyMessage;

// The program settings, stacked from four INI files: the user's copy of the
// current mode's file, the mode's file, the user's copy of the main
// configuration file and the main configuration file itself. Reads take the
// first non-empty value in that order; writes go to the user copy of the
// installed file that defines the key (the mode's copy when none does).
class cNvWinIni
{
public:
    static cNvWinIni* theInstance();
    // For tests: destroys the instance (flushing its files); the next
    // theInstance() starts empty.
    static void resetInstance();

    virtual ~cNvWinIni();

    // Opens the main configuration file of that name in the application
    // folder and derives the user folders; false if the file does not exist.
    bool setGlobalIniName(const std::string& name);
    // Switches to the files of another mode; returns the previous mode.
    // Throws xNvFatalExc for a mode without a mode file.
    std::string setModus(const std::string& mode);
    std::string getModus() const;

    // For as long as it lives, writes to the user files stay in memory; at
    // its end each changed file is written once. The result on disk is that
    // of the same writes made one by one.
    class BulkWrite
    {
    public:
        explicit BulkWrite(cNvWinIni& settings);
        ~BulkWrite();
        BulkWrite(const BulkWrite&) = delete;
        BulkWrite& operator=(const BulkWrite&) = delete;

    private:
        cNvWinIni& m_settings;
    };

    std::string GetString(const char* section, const char* key, const char* defaultValue);
    int GetInt(const char* section, const char* key, int defaultValue);
    bool WriteString(const char* section, const char* key, const char* value);
    bool WriteInt(const char* section, const char* key, int value);

    bool IsInGlobalIni(const char* section, const char* key) const;
    bool IsInModusIni(const char* section, const char* key) const;
    bool IsInUserGlobalIni(const char* section, const char* key) const;
    bool IsInUserModusIni(const char* section, const char* key) const;

    // The main configuration file alone, bypassing user files and cache.
    std::string getGlobalIniString(const char* section, const char* key, const char* defaultValue);
    int getGlobalIniInt(const char* section, const char* key, int defaultValue);

    std::string getGlobalIniName() const;
    std::string getGlobalIniPath() const;
    std::string getModusIniPath() const;
    std::string getUserGlobalIniPath() const;
    std::string getUserModusIniPath() const;
    std::string getUserSettingsPath() const;
    std::string getHomeDataPath() const;

    void enableCache(bool on);
    void clearCache();

    bool enableDefaultSettings(bool on);
    bool defaultSettingsEnabled();
    // Applies "default.ini" of the application folder and switches the
    // request off, so that the defaults are applied once.
    bool setDefaultSettings();
    // Writes every entry of an INI file through WriteString, each user file
    // once at the end.
    bool applyIniSettings(const std::string& path);

    // Deletes the user's copies of all mode files and of the main
    // configuration file.
    bool removeUserModusIniFiles();

private:
    friend class SingletonSlot<cNvWinIni>;
    cNvWinIni();

    void buildUserDir();
    void buildHomeDataDir();
    void buildUserGlobalIni();
    void buildModusInis();
    // Where a configured folder came from: as configured, the user's private
    // fallback folder, or nowhere (the configured folder cannot be made and
    // no private folder can be had either).
    enum class FolderOrigin { Configured, PrivateFallback, None };
    FilePath parseAndGenerateDirectory(const std::string& dir, FolderOrigin& origin) const;
    // The path of one of the user's files; empty while they have no folder.
    std::string userFilePath(const std::string& name) const;
    // False once the private fallback folder is no longer private.
    bool userFolderUsable() const;
    std::string getCacheKey(const char* section, const char* key) const;
    std::string getStringFromIni(const char* section, const char* key, const char* defaultValue);
    std::string modusIniName(const std::string& mode);

    // Keyed "section|key", byte-exact: the INI files ignore case, the cache
    // does not, so one key spelled two ways has two entries.
    std::map<std::string, std::string> m_cache;
    bool m_cacheEnabled = true;
    cIniFile m_globalIni;
    cIniFile m_modusIni;
    cIniFile m_userGlobalIni;
    cIniFile m_userModusIni;
    std::string m_globalIniName;
    std::string m_modus;
    std::string m_userSettingsPath;
    FolderOrigin m_userSettingsOrigin = FolderOrigin::Configured;
    std::string m_homeDataPath;
};
