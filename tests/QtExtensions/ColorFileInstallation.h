#pragma once

#include "ApplicationInfo.h"
#include "ColorManager.h"
#include "Configuration.h"
#include "CrossPlatformApi.h"
#include "NvWinIni.h"
#include "TempInstallation.h"

#include <QByteArray>
#include <QStringList>

// A temporary installation with a colour file of the test's choosing. The
// settings singletons and the colour manager are rebuilt to see it, and every
// message box is recorded as "title|text" instead of being shown.
class ColorFileInstallation
{
public:
    explicit ColorFileInstallation(const QByteArray& colorDefs,
                                   const QByteArray& configuration = QByteArray("[Settings]\r\n"))
    {
        m_installation.writeResource(QStringLiteral("ORVKonf.ini"), configuration);
        m_installation.writeResource(QStringLiteral("ColorDefs.ini"), colorDefs);
        resetSingletons();
        m_settingsFound = cNvWinIni::theInstance()->setGlobalIniName("ORVKonf.ini");
        m_previousHandler = CrossPlatformApi::setMessageBoxHandler(
            [this](const MessageBoxRequest& box) {
                messages << box.title + QLatin1Char('|') + box.text;
                return MessageBoxAnswer{QMessageBox::Ok, false};
            });
    }

    ~ColorFileInstallation()
    {
        CrossPlatformApi::setMessageBoxHandler(m_previousHandler);
        resetSingletons();
    }

    bool isValid() const { return m_installation.isValid() && m_settingsFound; }
    const TempInstallation& installation() const { return m_installation; }

    QStringList messages;

private:
    static void resetSingletons()
    {
        ColorManager::resetInstance();
        cConfiguration::resetInstance();
        cNvWinIni::resetInstance();
        cApplicationInfo::resetInstance();
    }

    TempInstallation m_installation;
    bool m_settingsFound = false;
    CrossPlatformApi::MessageBoxHandler m_previousHandler;
};
