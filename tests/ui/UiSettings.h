#pragma once

#include "../settings/SettingsFixture.h"
#include "TempInstallation.h"

#include <QByteArray>

// Drops every cached settings file and opens the installation's settings
// again, so that what follows reads what reached the disk.
inline bool reopenUiSettings()
{
    resetSettingsSingletons();
    if (!cNvWinIni::theInstance()->setGlobalIniName(cszNvWinIniName))
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
           && reopenUiSettings();
}
