#pragma once

#include "UiSettings.h"

#include "ColorManager.h"
#include "PixmapManager.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <memory>

// A one-mode installation for the mode pages: the user settings lie in
// ~/.config/Marvendo/ORV17/Start-Center (last year's program in ORV16), the
// home data folder is <SYS_MYDOCUMENTS>/Steuerfälle and the mode lists
// "*.est11" files. Settings are read without cache, as the program does.
class PageInstallation
{
public:
    explicit PageInstallation(const QByteArray& fileTypes = "Steuererkl\xE4rungen 2011|*.est11")
    {
        // The previous-year rule rewrites "17" and "2011" anywhere in a path;
        // the random part of the temporary folder must not take part in it.
        do {
            m_install = std::make_unique<TempInstallation>();
        } while (m_install->root().contains(QRegularExpression(QStringLiteral("1[67]|201[01]"))));

        m_valid = m_install->writeResource(
                      QStringLiteral("ORVKonf.ini"),
                      "[Settings]\r\nUserSettings=%HOME%/.config/Marvendo/ORV17/Start-Center\r\n"
                      "HomeDataDir=<SYS_MYDOCUMENTS>/Steuerf\xE4lle\r\n"
                      "[Modus]\r\nnormal=orv_normal.ini\r\n"
                      "[StartCenter.HelpText]\r\nOeffnen=Den Steuerfall \xF6" "ffnen.\r\n")
                  && m_install->writeResource(QStringLiteral("orv_normal.ini"),
                                              "[FileExtensions]\r\nOpen=" + fileTypes
                                                  + "\r\n[ToolTips]\r\nNeuerFall=Neu\r\n");
        resetSingletons();
        m_valid = m_valid && openInstalledSettings();
    }

    ~PageInstallation() { resetSingletons(); }

    bool isValid() const { return m_valid && QFileInfo(homeData()).isDir(); }
    const TempInstallation& install() const { return *m_install; }

    QString homeData() const { return m_install->home() + QStringLiteral("/Documents/Steuerfälle/"); }
    QString userModeSettings() const { return settingsFolder("ORV17") + userModeSettingsName(); }
    QString lastYearModeSettings() const { return settingsFolder("ORV16") + userModeSettingsName(); }

    // Creates an empty case file (and its folders).
    static bool createFile(const QString& path, bool readOnly = false)
    {
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            return false;
        file.close();
        return !readOnly || file.setPermissions(QFile::ReadOwner);
    }

    // Replaces a settings file as another program would, dated later than
    // every earlier replacement, so that the settings notice the change.
    bool replaceSettings(const QString& path, const QByteArray& content)
    {
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile file(path);
        m_secondsAhead += 10;
        return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(content) == content.size()
               && file.flush()
               && file.setFileTime(QDateTime::currentDateTime().addSecs(m_secondsAhead),
                                   QFileDevice::FileModificationTime);
    }

    // The most recently used file of this year's program.
    bool setLastFile(const QString& path)
    {
        return replaceSettings(userModeSettings(), "[MRUFiles]\r\n0=" + path.toLatin1() + "\r\n");
    }

    static std::string setting(const char* section, const char* key)
    {
        return cConfiguration::theInstance()->GetString(section, key, "");
    }

private:
    static void resetSingletons()
    {
        resetSettingsSingletons();
        PixmapManager::resetInstance();
        ColorManager::resetInstance();
    }

    QString settingsFolder(const char* version) const
    {
        return m_install->home() + QStringLiteral("/.config/Marvendo/") + QLatin1String(version)
               + QStringLiteral("/Start-Center/");
    }
    static QString userModeSettingsName()
    {
        return QFileInfo(fromLatin1(cNvWinIni::theInstance()->getUserModusIniPath())).fileName();
    }

    std::unique_ptr<TempInstallation> m_install;
    bool m_valid = false;
    int m_secondsAhead = 0;
};
