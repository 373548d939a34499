// The launcher's entry point: brings the program up in a fixed order, each
// step relying on what the earlier ones set up.

#include "ApplicationInfo.h"
#include "CommandLine.h"
#include "Configuration.h"
#include "CrossPlatformApi.h"
#include "FilePath.h"
#include "FolderManager.h"
#include "KDSingleApplicationGuard.h"
#include "NvWinIni.h"
#include "PixmapManager.h"
#include "SCAppStyle.h"
#include "SharedHelpers.h"
#include "StartCenter.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QDir>
#include <QLoggingCategory>
#include <QTimer>
#include <QTranslator>

#include <cstdio>
#include <cstdlib>
#include <memory>

Q_LOGGING_CATEGORY(lcStartUp, "startcenter.startup", QtWarningMsg)

namespace {

const char* const cszApplicationName = "Start-Center 2012";

// A refusal to start: a critical box before any window exists, then the
// process ends at once with exit code 0.
[[noreturn]] void refuseStart(const QString& text)
{
    MessageBoxRequest box;
    box.icon = QMessageBox::Critical;
    box.title = QStringLiteral("Fehler");
    box.text = text;
    box.buttons = QMessageBox::Ok;
    CrossPlatformApi::showMessageBox(box);
    std::exit(0);
}

// Child programs inherit the library search path: the bundle's Frameworks
// folder and the folders of "Settings"/"DYLD_PATH".
void exportLibrarySearchPath(const QDir& contents)
{
    QString path = contents.absoluteFilePath(QStringLiteral("Frameworks"));
    const std::string extra = cNvWinIni::theInstance()->GetString("Settings", "DYLD_PATH", "");
    if (!extra.empty())
        path += QLatin1Char(':') + QString::fromLatin1(extra.c_str());
    qputenv("DYLD_FALLBACK_LIBRARY_PATH", path.toLocal8Bit());
}

// For the start-up benchmark only: one line on the standard output once the
// window is shown and the event loop has nothing left to do.
void reportShownWhenIdle()
{
    auto connection = std::make_shared<QMetaObject::Connection>();
    *connection = QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock,
                                   [connection] {
                                       QObject::disconnect(*connection);
                                       std::fputs("shown\n", stdout);
                                       std::fflush(stdout);
                                   });
}

} // namespace

int main(int argc, char** argv)
{
    // Read first, while the current folder is still the caller's: --help,
    // --version and mistakes are answered without a display or a window.
    const CommandLine commandLine = CommandLine::parse(CommandLine::fromArgv(argc, argv), StartCenter::modeNames());
    if (commandLine.request() != CommandLine::Start)
        return commandLine.answer();

    SharedHelpers::SetOrganizationDomainAndApplicationName(cszApplicationName);

    QTranslator translator;
    (void)translator.load(QString::fromLatin1(cApplicationInfo::theInstance()->getFilenameInAppDir("qt_de.qm").c_str()));

    // Qt sees the program name only: the arguments are the launcher's, and a
    // file named like one of Qt's options must stay a file.
    int qtArgc = 1;
    QApplication application(qtArgc, argv);
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
        refuseStart(QStringLiteral("Konfiguration nicht gefunden.\nDas Programm kann nicht gestartet werden."));

    exportLibrarySearchPath(contents);
    FolderManager::theInstance()->ensureFolderExists("<COMMONSETTINGS>");
    FolderManager::theInstance()->ensureFolderExists("<COMMONLOGFILES>");

    PixmapManager::theInstance()->setInfoFile(
        cConfiguration::theInstance()->GetString("Application", "ImageInfoFile", "images.ini"));

    // Another instance runs: it learns of this start through the guard and
    // raises its window. A guard without shared memory does not stop us.
    if (guard.isOperational() && !guard.isPrimaryInstance())
        return 0;

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
        reportShownWhenIdle();
    return QApplication::exec();
}
