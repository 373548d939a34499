#pragma once

// The sample installation of the build tree for the benchmarks that run the
// launcher: a home folder of its own with the sample case files, so that no
// user settings are touched, and the launcher's start-up in this process.

#include "Configuration.h"
#include "CrossPlatformApi.h"
#include "PixmapManager.h"
#include "SCAppStyle.h"
#include "SharedHelpers.h"

#include <QDir>
#include <QFile>
#include <QString>

#include <utility>
#include <vector>

#ifndef SC_LAUNCHER
#error "SC_LAUNCHER must name the built launcher"
#endif
#ifndef SC_SOURCE_DIR
#error "SC_SOURCE_DIR must name the source tree"
#endif

// The folders a program of the suite uses, all below home.
inline void setUpHome(const QString& home)
{
    const QString caseFolder = home + QStringLiteral("/Documents/Orvane Steuerfälle");
    QDir().mkpath(caseFolder);
    QDir().mkpath(home + QStringLiteral("/tmp"));
    QDir().mkpath(home + QStringLiteral("/shared"));
    QDir().mkpath(home + QStringLiteral("/runtime"));
    QFile::setPermissions(home + QStringLiteral("/runtime"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    const QDir samples(QStringLiteral(SC_SOURCE_DIR "/demo/HomeData"));
    for (const QString& name : samples.entryList(QDir::Files))
        QFile::copy(samples.filePath(name), caseFolder + QLatin1Char('/') + name);
}

inline std::vector<std::pair<const char*, QString>> homeVariables(const QString& home)
{
    return {{"HOME", home},
            {"TMPDIR", home + QStringLiteral("/tmp")},
            {"XDG_RUNTIME_DIR", home + QStringLiteral("/runtime")},
            {"XDG_CONFIG_HOME", home + QStringLiteral("/.config")},
            {"XDG_DATA_HOME", home + QStringLiteral("/.local/share")},
            {"XDG_CACHE_HOME", home + QStringLiteral("/.cache")},
            {"XDG_DOCUMENTS_DIR", home + QStringLiteral("/Documents")},
            {"SC_COMMON_APPDATA", home + QStringLiteral("/shared")}};
}

// The launcher's start-up, in this process, on the installation of the
// build tree, with the user's files below home.
inline bool openInstallation(const QString& home)
{
    for (const auto& [name, value] : homeVariables(home))
        qputenv(name, value.toLocal8Bit());
    CrossPlatformApi::overrideExecutablePath(QStringLiteral(SC_LAUNCHER).toLatin1().toStdString());

    if (!openInstallationSettings())
        return false;
    PixmapManager::theInstance()->setInfoFile(
        cConfiguration::theInstance()->GetString("Application", "ImageInfoFile", "images.ini"));
    SCAppStyle::installApplicationLook();
    return true;
}
