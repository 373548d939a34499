#include "SharedHelpers.h"

#include "ApplicationInfo.h"
#include "BundleInfo.h"
#include "CrossPlatformApi.h"
#include "FolderManager.h"
#include "NvWinIni.h"

#include <QApplication>
#include <QDir>
#include <QPointer>
#include <QWidget>

bool SharedHelpers::SetOrganizationDomainAndApplicationName(const char* name)
{
    if (!name)
        return false;

    const QString bundleId = QString::fromLatin1(mainBundleIdentifier().c_str());
    const QStringList labels = bundleId.split(QLatin1Char('.'), Qt::KeepEmptyParts);
    if (labels.size() != 3) {
        // The text carries brace markers, not %1 markers, so the substitution
        // leaves it as it is; the diagnostic has always read this way.
        const QString text = QStringLiteral("Ungeeignete BundleID {0} fuer {1}")
                                 .arg(bundleId, QString::fromLatin1(name));
        CrossPlatformApi::outputDebugString(text.toLatin1().toStdString());
        return false;
    }
    QCoreApplication::setOrganizationDomain(labels.at(1) + QLatin1Char('.') + labels.at(0));
    QCoreApplication::setApplicationName(labels.at(2));
    return true;
}

namespace {
QList<QPointer<QWidget>>& windowsHiddenByUs()
{
    static QList<QPointer<QWidget>> windows;
    return windows;
}
} // namespace

void hideApplication(bool hide)
{
    QList<QPointer<QWidget>>& hidden = windowsHiddenByUs();
    if (hide) {
        const QWidgetList windows = QApplication::topLevelWidgets();
        for (QWidget* window : windows) {
            if (window->isVisible()) {
                hidden.append(window);
                window->hide();
            }
        }
        return;
    }
    for (const QPointer<QWidget>& window : std::as_const(hidden)) {
        if (!window)
            continue;
        window->show();
        window->raise();
        window->activateWindow();
    }
    hidden.clear();
}

bool openInstallationSettings()
{
    const std::string globalIni = cApplicationInfo::theInstance()->getFilenameInAppDir(cszNvWinIniName);
    FolderManager::theInstance()->parseSection(globalIni, "DirectorySymbols");
    FolderManager::theInstance()->parseSection(globalIni, "DirectoryDefs");
    cNvWinIni::theInstance()->enableCache(false);
    return cNvWinIni::theInstance()->setGlobalIniName(cszNvWinIniName);
}

QStringList collectBundleIds(bool includeMain)
{
    QStringList ids;
    if (includeMain)
        ids.append(QString::fromLatin1(mainBundleIdentifier().c_str()));

    const QDir resources(QString::fromLatin1(mainBundlePath().c_str()) + QStringLiteral("/Contents/Resources"));
    const QStringList embedded = resources.entryList({QStringLiteral("*.app")}, QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& entry : embedded) {
        const std::string path = resources.absoluteFilePath(entry).toLatin1().toStdString();
        ids.append(QString::fromLatin1(BundleInfo::at(path).value("CFBundleIdentifier").c_str()));
    }
    return ids;
}
