#pragma once

#include "../settings/SettingsFixture.h"
#include "SharedHelpers.h"
#include "TempInstallation.h"

#include <QByteArray>

// Opens the installation's settings as the launcher's start-up does: the
// folder symbols of the main configuration file first, then the layered
// settings, uncached so that every read sees what reached the disk, in the
// income-tax mode. Drops whatever an earlier opening cached.
inline bool openInstalledSettings()
{
    resetSettingsSingletons();
    if (!openInstallationSettings())
        return false;
    cNvWinIni::theInstance()->setModus("normal");
    return true;
}

// Opens the settings of a one-mode installation whose main configuration file
// carries the given extra sections (Latin-1). User files go to <root>/user.
inline bool openUiSettings(const TempInstallation& install, const QByteArray& configuration = {})
{
    const QByteArray main = "[Settings]\nUserSettings=" + install.root().toLatin1()
                            + "/user\n[Modus]\nnormal=normal.ini\n" + configuration;
    return install.writeResource("ORVKonf.ini", main) && install.writeResource("normal.ini", "[Start]\n")
           && openInstalledSettings();
}
