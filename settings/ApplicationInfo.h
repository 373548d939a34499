#pragma once

#include "SingletonSlot.h"

#include <string>

// The full path of the running executable (Latin-1). Usable before any Qt
// object exists.
std::string appFileName();

// The program's own locations: the executable, the application folder that
// holds the installation's data files (the bundle's "Contents/Resources"
// folder), the user's settings and data folders and the temporary folder.
class cApplicationInfo
{
public:
    static cApplicationInfo* theInstance();
    // For tests: destroys the instance, so that the next theInstance()
    // computes the paths again (for another executable path).
    static void resetInstance();

    virtual ~cApplicationInfo();

    std::string getAppPath() const;
    // Always ends in "/" (empty when the executable path is unknown).
    std::string getAppDir() const;
    // The application folder followed directly by name.
    std::string getFilenameInAppDir(const std::string& name) const;

    std::string getUserSettingsDir() const;
    std::string getFilenameInUserDir(const std::string& name) const;
    // Created on disk if it does not exist yet.
    std::string getHomeDataPath() const;
    // $TMPDIR as it is, or "/tmp" when it is unset or empty; read on every call.
    std::string getTempDir() const;

    // The application folder of an executable: its bundle's
    // "Contents/Resources/" folder, or outside a bundle its own folder.
    static std::string appDirOf(const std::string& executablePath);

private:
    friend class SingletonSlot<cApplicationInfo>;
    cApplicationInfo();

    std::string m_appPath;
    std::string m_appDir;
};
