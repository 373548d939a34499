#pragma once

#include "../settings/SettingsFixture.h"
#include "ColorManager.h"

// A temporary installation with a colour file of the test's choosing. The
// settings singletons and the colour manager are rebuilt to see it, and every
// message box is recorded in messages as "title|text" instead of being shown.
class ColorFileInstallation : public SettingsSandbox
{
public:
    explicit ColorFileInstallation(const QByteArray& colorDefs,
                                   const QByteArray& configuration = QByteArray("[Settings]\r\n"))
        : messages(boxes.boxes)
    {
        writeResource(QStringLiteral("ORVKonf.ini"), configuration);
        writeResource(QStringLiteral("ColorDefs.ini"), colorDefs);
        ColorManager::resetInstance();
        m_settingsFound = cNvWinIni::theInstance()->setGlobalIniName("ORVKonf.ini");
    }
    ~ColorFileInstallation() { ColorManager::resetInstance(); }

    bool isValid() const { return TempInstallation::isValid() && m_settingsFound; }
    QString colorFile() const { return resourcesDir() + QStringLiteral("ColorDefs.ini"); }

    QStringList& messages;

private:
    bool m_settingsFound = false;
};
