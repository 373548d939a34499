// The launcher's entry point: brings the program up in a fixed order, each
// step relying on what the earlier ones set up.

#include "AppLogging.h"
#include "ApplicationInfo.h"
#include "CommandLine.h"
#include "Configuration.h"
#include "CrossPlatformApi.h"
#include "FilePath.h"
#include "FirstPaint.h"
#include "FolderManager.h"
#include "FontConfigPreload.h"
#include "KDSingleApplicationGuard.h"
#include "NvWinIni.h"
#include "PixmapManager.h"
#include "RegularFile.h"
#include "SCAppStyle.h"
#include "SharedHelpers.h"
#include "StartCenter.h"

#include <QApplication>
#include <QDir>
#include <QTimer>
#include <QTranslator>

#include <cstdio>
#include <cstdlib>

namespace {

const char* const cszApplicationName = "Start-Center 2012";

// A box of the start-up, titled "Fehler", before any window exists.
void showStartUpBox(QMessageBox::Icon icon, const QString& text)
{
    MessageBoxRequest box;
    box.icon = icon;
    box.title = QStringLiteral("Fehler");
    box.text = text;
    box.buttons = QMessageBox::Ok;
    CrossPlatformApi::showMessageBox(box);
}

// A refusal to start: a critical box, then the process ends at once with
// exit code 0.
[[noreturn]] void refuseStart(const QString& text)
{
    showStartUpBox(QMessageBox::Critical, text);
    std::exit(0);
}

// Without the image container the window lacks its icons and home button:
// the user learns which file is missing instead of wondering.
void reportMissingImageContainer()
{
    const PixmapManager* pictures = PixmapManager::theInstance();
    if (!pictures->hasContainer())
        showStartUpBox(QMessageBox::Warning, QStringLiteral("Die Bilddatei wurde nicht gefunden:\n")
                                                 + QString::fromLatin1(pictures->getContainerPath().c_str())
                                                 + QStringLiteral("\nDas Start-Center zeigt ohne sie keine Symbole."));
}

// Child programs inherit the library search path: the bundle's Frameworks
// folder and the folders of "Settings"/"DYLD_PATH" (the key keeps the name
// the installations' files know it by).
void exportLibrarySearchPath(const QDir& contents)
{
    QString path = contents.absoluteFilePath(QStringLiteral("Frameworks"));
    const std::string extra = cNvWinIni::theInstance()->GetString("Settings", "DYLD_PATH", "");
    if (!extra.empty())
        path += QLatin1Char(':') + QString::fromLatin1(extra.c_str());
    CrossPlatformApi::appendChildLibraryPath(path);
}

// For the start-up benchmark only: one line on the standard output once the
// window's first frame is painted.
void reportShownAfterFirstPaint(QWidget* window)
{
    runAfterFirstPaint(window, [] {
        std::fputs("shown\n", stdout);
        std::fflush(stdout);
    });
}

// While the application object connects to the display, Qt's messages about
// it are held back: without a display the user gets one German line and exit
// code 1 instead of Qt's English text and an abort.
QtMessageHandler qtMessageHandler = nullptr;

void reportMissingDisplay(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    if (type == QtFatalMsg) {
        std::fputs(QStringLiteral("Start-Center: Keine grafische Anzeige verf\u00FCgbar, das Programm kann nicht "
                                  "gestartet werden.\n")
                       .toLocal8Bit()
                       .constData(),
                   stderr);
        std::_Exit(1);
    }
    if (!QByteArray(context.category).startsWith("qt.qpa"))
        qtMessageHandler(type, context, message);
}

} // namespace

int main(int argc, char** argv)
{
    // Read first, while the current folder is still the caller's: --help,
    // --version and mistakes are answered without a display or a window.
    const CommandLine commandLine = CommandLine::parse(CommandLine::fromArgv(argc, argv), StartCenter::modeNames());
    if (commandLine.request() != CommandLine::Start)
        return commandLine.answer();
    // Read beside the steps below; the window's first font waits for it.
    FontConfigPreload::start();

    SharedHelpers::SetOrganizationDomainAndApplicationName(cszApplicationName);

    // Read through a bounded read, so that a FIFO or a device in the
    // translation's place cannot hold up or flood the start; the translator
    // uses the bytes in place, so they live as long as it does.
    constexpr std::size_t maxTranslationBytes = 8 * 1024 * 1024;
    const std::optional<std::string> translation = RegularFile::readWhole(
        CrossPlatformApi::fileSystemEncoding(cApplicationInfo::theInstance()->getFilenameInAppDir("qt_de.qm")),
        maxTranslationBytes);
    QTranslator translator;
    if (translation)
        (void)translator.load(reinterpret_cast<const uchar*>(translation->data()), int(translation->size()));

    // Qt sees the program name only: the arguments are the launcher's, and a
    // file named like one of Qt's options must stay a file.
    int qtArgc = 1;
    qtMessageHandler = qInstallMessageHandler(reportMissingDisplay);
    QApplication application(qtArgc, argv);
    qInstallMessageHandler(qtMessageHandler);
    // Lets the desktop match the window to its desktop entry (Wayland app id).
    QGuiApplication::setDesktopFileName(QStringLiteral("de.marvendo.startcenter"));

    // Plug-ins come from the bundle when it carries its own; otherwise Qt's
    // own list stays, since the system's plug-ins live elsewhere on Linux.
    QDir contents(QCoreApplication::applicationDirPath());
    contents.cdUp();
    if (contents.exists(QStringLiteral("plugins")))
        QCoreApplication::setLibraryPaths({contents.absoluteFilePath(QStringLiteral("plugins"))});

    QCoreApplication::setAttribute(Qt::AA_DontShowIconsInMenus, true);
    QCoreApplication::installTranslator(&translator);

    // A later start hands its Wayland activation token over with its arguments.
    KDSingleApplicationGuard guard(StartCenter::guardArguments(commandLine.handOverArguments()),
                                   KDSingleApplicationGuard::NoPolicy);

    FilePath appDir(cApplicationInfo::theInstance()->getAppDir());
    if (appDir.isUNC())
        refuseStart(QStringLiteral("Das Programm kann nicht direkt aus einem Netzwerkpfad (UNC-Pfad) gestartet werden."));
    appDir.setCWD();

    if (!openInstallationSettings())
        refuseStart(QStringLiteral("Konfiguration nicht gefunden.\nDas Programm kann nicht gestartet werden.\n"
                                   "Gesucht wurde: ")
                    + QString::fromLatin1(cApplicationInfo::theInstance()->getFilenameInAppDir("ORVKonf.ini").c_str()));

    exportLibrarySearchPath(contents);
    FolderManager::theInstance()->ensureFolderExists("<COMMONSETTINGS>");
    FolderManager::theInstance()->ensureFolderExists("<COMMONLOGFILES>");

    PixmapManager::theInstance()->setInfoFile(
        cConfiguration::theInstance()->GetString("Application", "ImageInfoFile", "images.ini"));

    // Another instance runs: it learns of this start through the guard and
    // raises its window. A guard without shared memory does not stop us.
    if (guard.isOperational() && !guard.isPrimaryInstance())
        return 0;

    reportMissingImageContainer();

    SCAppStyle::installApplicationLook();

    StartCenter mainWindow(nullptr, Qt::WindowFlags());
    mainWindow.raise();
    mainWindow.show();

    QObject::connect(&guard, &KDSingleApplicationGuard::instanceStarted, &mainWindow,
                     &StartCenter::activateForInstance);
    QObject::connect(&application, &QGuiApplication::lastWindowClosed, &application, &QCoreApplication::quit);
    // Followed once the event loop runs, so that "OnORVStart"=Terminate can end it.
    QMetaObject::invokeMethod(&mainWindow, [&] { mainWindow.followCommandLine(commandLine); }, Qt::QueuedConnection);

    QTimer::singleShot(0, [] { qCDebug(lcStartUp) << "start-up complete"; });
    if (qEnvironmentVariableIsSet("SC_BENCH_REPORT_SHOWN"))
        reportShownAfterFirstPaint(&mainWindow);
    return QApplication::exec();
}
