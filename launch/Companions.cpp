#include "Companions.h"

#include "ApplicationInfo.h"
#include "BundleInfo.h"
#include "Configuration.h"
#include "CrossPlatformApi.h"
#include "DMFileName.h"
#include "File.h"
#include "NvWinIni.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDir>
#include <QFileInfo>
#include <QUrl>

#include <functional>
#include <string>

namespace {

const char* const cszVendorUrl = "https://www.marvendo.example/";
const char* const cszLexavoUrl = "https://www.lexavo.example/";
const char* const cszTaxAdvisorParams = "-d Marvendo -k";
const char* const cszLandlordAdvisorParams = "-d DomveraORV -k";
const char* const cszInfoManReference = "<COMMON_APPDATA>/<COMPANY>/Lumidex2/LumidexRef.ini";

QString fromLatin1(const std::string& text)
{
    return CrossPlatformApi::toQString(text);
}

std::string toLatin1(const QString& text)
{
    return text.toLatin1().toStdString();
}

std::string setting(const char* section, const char* key, const char* defaultValue)
{
    return cConfiguration::theInstance()->GetString(section, key, defaultValue);
}

void reportFailure(const QString& title, const QString& text, QMessageBox::Icon icon = QMessageBox::Critical)
{
    MessageBoxRequest box;
    box.icon = icon;
    box.title = title;
    box.text = text;
    box.buttons = QMessageBox::Ok;
    CrossPlatformApi::showMessageBox(box);
}

QString folderFailureText(const QString& folder)
{
    return QStringLiteral("Der Ordner »") + folder + QStringLiteral("« konnte nicht geöffnet werden.");
}

bool openWebPage(const std::string& address, const QString& title, const QString& text)
{
    if (!address.empty() && CrossPlatformApi::openUrl(address))
        return true;
    reportFailure(title, text);
    return false;
}

// Asks the desktop's file manager on the session bus to show the item
// selected, without waiting for the answer: a file manager that the bus
// starts for the call may take seconds. When none answers, otherwise() runs
// once that is known. False when there is no session bus to ask.
bool showItemInFileManager(const QString& path, const std::function<void()>& otherwise)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return false;
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << QStringList{QUrl::fromLocalFile(path).toString()} << QString();
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, 5000));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, [otherwise](QDBusPendingCallWatcher* answer) {
        if (answer->isError())
            otherwise();
        answer->deleteLater();
    });
    return true;
}

} // namespace

namespace Companions {

QString manualPath()
{
    DMFileName manual(setting("Addons", "Handbuch", "handbuch.pdf"));
    if (!manual.makeAbsPath(true))
        return QString();
    return fromLatin1(manual.normalizedString());
}

bool openManual()
{
    const QString path = manualPath();
    if (!path.isEmpty() && CrossPlatformApi::executeAssociatedAppAndOpenFile(toLatin1(path)))
        return true;
    reportFailure(QStringLiteral("Handbuch öffnen"),
                  QStringLiteral("Fehler beim Öffnen des Handbuchs!\nDas Handbuch kann nicht geöffnet werden."));
    return false;
}

QString taxbookPage()
{
    const QString programFolder = QFileInfo(fromLatin1(CrossPlatformApi::executablePath())).path();
    return QDir::cleanPath(programFolder + QStringLiteral("/../Resources/help/KURSEL.htm"));
}

bool openTaxbook()
{
    // The desktop's handler for HTML pages shows the help. A missing page
    // would be reported by a viewer the user has to close, so it is checked here.
    const QString page = taxbookPage();
    if (QFileInfo(page).isFile() && CrossPlatformApi::openUrl(QUrl::fromLocalFile(page)))
        return true;
    reportFailure(QStringLiteral("Kursel"),
                  QStringLiteral("Fehler beim Öffnen des Kursel!\nDer Kompass kann nicht geöffnet werden."));
    return false;
}

bool showMarvendo()
{
    return openWebPage(setting("StartCenter", "StLogoUrl", cszVendorUrl), QStringLiteral("Marvendo im Internet"),
                       QStringLiteral("Fehler beim Öffnen der Marvendo-Internet-Seite!\n"
                                      "Die Marvendo Internet-Seite kann nicht geöffnet werden."));
}

QString taxFolder()
{
    const std::string home = setting("Settings", "HomeDataDir", cNvWinIni::theInstance()->getHomeDataPath().c_str());
    const std::string folder = setting("Files", "LastWorkDir", home.c_str());
    // The folder is usually stored relative to "<HomeDataDir>".
    const std::string expanded = DMFileName(folder).compose();
    return fromLatin1(expanded.empty() ? folder : expanded);
}

bool openTaxFolder()
{
    const QString folder = taxFolder();
    if (QFileInfo(folder).isDir() && CrossPlatformApi::openUrl(QUrl::fromLocalFile(folder)))
        return true;
    reportFailure(QStringLiteral("Steuerfallordner Öffnen"), folderFailureText(folder));
    return false;
}

bool openProgramFolder()
{
    const QString bundle = fromLatin1(mainBundlePath());
    const auto openFolder = [bundle] {
        if (!bundle.isEmpty() && CrossPlatformApi::openUrl(QUrl::fromLocalFile(QFileInfo(bundle).path())))
            return true;
        reportFailure(QStringLiteral("Programmordner öffnen"), folderFailureText(bundle));
        return false;
    };
    return (!bundle.isEmpty() && showItemInFileManager(bundle, openFolder)) || openFolder();
}

bool startReportTool()
{
    std::string path = cApplicationInfo::theInstance()->getFilenameInAppDir(
        setting("StartCenter", "Support", "Report Tools.app"));
    // The program start of the basic services takes backslash-separated
    // paths and turns them back.
    for (char& c : path) {
        if (c == '/')
            c = '\\';
    }
    if (CrossPlatformApi::exec(path, std::string(), 0))
        return true;
    reportFailure(QStringLiteral("Report Erstellen"),
                  QStringLiteral("Fehler beim Öffnen des Report-Programms!\n"
                                 "Das Support-Tool zum Erfassen eines Reports kann nicht geöffnet werden."));
    return false;
}

bool startNetViewer()
{
    const QString title = QStringLiteral("Netviewer Starten");
    const std::string address = setting("Support", "NetViewerURL", "");
    if (address.empty()) {
        reportFailure(title, QStringLiteral("Fehler beim Versuch, den NetViewer zu laden!\n"
                                            "Die Adresse zum Download des NetViewers ist nicht konfiguriert."));
        return false;
    }
    return openWebPage(address, title,
                       QStringLiteral("Fehler beim Öffnen der NetViewer-Internet-Seite!\nDie Seite zur Umleitung "
                                      "auf den NetViewer-Download kann nicht geöffnet werden."));
}

QString advisorAddress(const QString& topic)
{
    const std::string file = cApplicationInfo::theInstance()->getFilenameInAppDir("berater.ini");
    QString address = fromLatin1(CrossPlatformApi::getIniString("Online", "Business", "", file));
    const QString user = fromLatin1(CrossPlatformApi::getIniString("Online", "User", "", file));
    address.replace(QStringLiteral("<TOPIC>"), QString::fromLatin1(QUrl::toPercentEncoding(topic)));
    address.replace(QStringLiteral("<USER>"), QString::fromLatin1(QUrl::toPercentEncoding(user)));
    return address;
}

bool startMarvendoBusinessOnline(const QString& topic)
{
    const QString address = advisorAddress(topic);
    if (!address.isEmpty() && CrossPlatformApi::openUrl(QUrl(address)))
        return true;
    reportFailure(QStringLiteral("Marvendo-Business"),
                  QStringLiteral("Fehler beim Öffnen der Marvendo-Business-Internet-Seite!\n"
                                 "Die Seite der Online-Beratung kann nicht geöffnet werden."));
    return false;
}

bool openBeraterPlus()
{
    if (isInfoManInstalled())
        return startInfoMan(fromLatin1(setting("InfoMan", "SteuerBerater", cszTaxAdvisorParams)));
    return showMarvendo();
}

bool openBeraterNebenk()
{
    if (isInfoManInstalled())
        return startInfoMan(fromLatin1(setting("InfoMan", "Nebenkosten", cszLandlordAdvisorParams)));
    return openWebPage(setting("StartCenter", "LexavoUrl", cszLexavoUrl), QStringLiteral("Lexavo im Internet"),
                       QStringLiteral("Fehler beim Öffnen der Lexavo-Internet-Seite!\n"
                                      "Die Lexavo Internet-Seite kann nicht geöffnet werden."));
}

bool openInfoManLink(const QString& link)
{
    return startInfoMan(link);
}

bool startInfoMan(const QString& params)
{
    const QString title = QStringLiteral("Ihr Plus: Der Steuerberater");
    const QString program = infoManPath();
    if (program.isEmpty()) {
        reportFailure(title, QStringLiteral("Bitte installieren Sie den Steuerberater!"), QMessageBox::Information);
        return false;
    }
    if (CrossPlatformApi::exec(toLatin1(program), toLatin1(params), 0))
        return true;
    reportFailure(title, QStringLiteral("Fehler beim Starten des Steuerberaters!\n"
                                        "Der Steuerberater kann nicht gestartet werden."));
    return false;
}

QString infoManPath()
{
    const std::string reference = DMFileName(cszInfoManReference).compose();
    if (reference.empty() || !cFile(reference).Exists())
        return QString();
    const std::string program = CrossPlatformApi::getIniString("Lumidex", "Path", "", reference);
    return program.empty() ? QString() : fromLatin1(DMFileName(program).compose());
}

bool isInfoManInstalled()
{
    return !infoManPath().isEmpty();
}

} // namespace Companions
