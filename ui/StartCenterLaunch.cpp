// Starting the tax program of the current mode and watching it end.

#include "StartCenter.h"

#include "ActionPage.h"
#include "ApplicationInfo.h"
#include "ConfigText.h"
#include "Configuration.h"
#include "CrossPlatformApi.h"
#include "File.h"
#include "SharedHelpers.h"

#include <QCoreApplication>
#include <QPointer>

#include <vector>

namespace {

constexpr int startTimeoutMs = 30000;

// A test harness may ask for every program to be started through its
// preload program; only an existing one is used.
QString preloadProgram()
{
    const QByteArray prefix = qgetenv("SQUISH_PREFIX");
    if (prefix.isEmpty())
        return QString();
    const QString preload = QString::fromLocal8Bit(prefix) + QStringLiteral("/bin/dllpreload");
    return cFile(preload.toLatin1().toStdString()).Exists() ? preload : QString();
}

// A program started as the launcher ends runs on by itself. Its QProcess
// object is kept, never destroyed, to the end of the process (destroying it
// would end the program), in a list that stays reachable so that leak
// checkers do not take it for lost.
void keepRunningAfterExit(QProcess* process)
{
    static auto* const outliving = new std::vector<QPointer<QProcess>>();
    outliving->emplace_back(process);
}

void reportBrokenInstallation(QWidget* parent)
{
    MessageBoxRequest box;
    box.icon = QMessageBox::Critical;
    box.title = QStringLiteral("Fehlerhafte Installation");
    box.text = QString::fromUtf8("Ihre Installation ist fehlerhaft!\n\nDie Orvane-Erklärung kann nicht gestartet "
                                 "werden.\nInstallieren Sie das Programm erneut.");
    box.buttons = QMessageBox::Ok;
    box.parent = parent;
    CrossPlatformApi::showMessageBox(box);
}

} // namespace

void StartCenter::startORV()
{
    startORVWithParam({QStringLiteral("-n")});
}

void StartCenter::startORV(const QString& file)
{
    if (startORVWithParam({file}))
        addToRecentFiles(file);
}

void StartCenter::startConvert()
{
    startORVWithParam({QStringLiteral("-c")});
}

void StartCenter::startConvert(const QString& file)
{
    startORVWithParam({QStringLiteral("-c"), file});
}

bool StartCenter::startORVWithParam(const QStringList& params)
{
    // No update question while the tax program comes up.
    m_updateTimer.stop();

    const std::string name = cConfiguration::theInstance()->GetString("StartCenter", "ORVExecutable", "");
    const QString exePath = QString::fromLatin1(cApplicationInfo::theInstance()->getFilenameInAppDir(name).c_str());
    // The mode's own parameter always comes first, even when it is empty.
    const QStringList arguments = QStringList{configText("ModusEinstellungen", "Parameter")} + params;

    auto* process = new QProcess();
    // The tax program's output goes where the launcher's goes: a pipe that
    // nobody reads would stall a talkative program.
    process->setProcessChannelMode(QProcess::ForwardedChannels);
    const QString preload = preloadProgram();
    if (preload.isEmpty())
        process->start(exePath, arguments, QIODevice::ReadWrite);
    else
        process->start(preload, QStringList{exePath} + arguments, QIODevice::ReadWrite);

    if (!process->waitForStarted(startTimeoutMs)) {
        reportBrokenInstallation(this);
        delete process;
        return false;
    }

    const QString onStart = configText("StartCenter", "OnORVStart");
    if (onStart == QLatin1String("Terminate")) {
        QCoreApplication::exit(0);
        keepRunningAfterExit(process);
    }
    ++m_runningCount;
    connect(process, &QProcess::finished, this, &StartCenter::orvFinished);
    // Hidden only now that the program runs: its end brings the window back.
    if (onStart == QLatin1String("Minimize"))
        hideApplication(true);
    return true;
}

void StartCenter::orvFinished(int, QProcess::ExitStatus)
{
    if (--m_runningCount == 0) {
        hideApplication(false);
        setWindowState((windowState() & ~Qt::WindowMinimized) | Qt::WindowActive);
        m_ui.updateUi();
        // The tax program may have saved a new last file.
        if (ActionPage* page = m_ui.page(m_mode))
            page->updateUI();
    }
    if (QObject* process = sender())
        process->deleteLater();
}
