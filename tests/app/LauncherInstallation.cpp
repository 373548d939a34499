#include "LauncherInstallation.h"

#include "KDSingleApplicationGuard_p.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSharedMemory>
#include <QSystemSemaphore>

#include <signal.h>

#ifndef SC_LAUNCHER_PATH
#error "SC_LAUNCHER_PATH must name the built launcher"
#endif
#ifndef SC_BUNDLE_RESOURCES_DIR
#error "SC_BUNDLE_RESOURCES_DIR must name the Resources folder of the built bundle"
#endif

namespace {

bool copyFolder(const QString& from, const QString& to)
{
    const QDir source(from);
    bool ok = source.exists();
    QDirIterator it(from, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString file = it.next();
        const QString target = QDir(to).filePath(source.relativeFilePath(file));
        ok = QDir().mkpath(QFileInfo(target).path()) && QFile::copy(file, target) && ok;
    }
    return ok;
}

// The built bundle's property list, naming the bundle identifier given.
QByteArray propertyListWithIdentifier(const QString& identifier)
{
    QFile built(QStringLiteral(SC_BUNDLE_RESOURCES_DIR "../Info.plist"));
    if (!built.open(QIODevice::ReadOnly))
        return {};
    static const QRegularExpression key(QStringLiteral("(<key>CFBundleIdentifier</key>\\s*<string>)[^<]*"));
    QString content = QString::fromUtf8(built.readAll());
    if (!content.contains(key))
        return {};
    return content.replace(key, QStringLiteral("\\1") + identifier).toUtf8();
}

} // namespace

LauncherProcess::LauncherProcess(const QString& program, const QProcessEnvironment& environment)
{
    m_process.setProcessEnvironment(environment);
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    m_process.start(program, {});
}

LauncherProcess::~LauncherProcess()
{
    if (isRunning())
        kill();
}

bool LauncherProcess::waitForOutput(const QByteArray& text)
{
    const QDeadlineTimer deadline(Timeout);
    while (!m_output.contains(text) && !deadline.hasExpired()) {
        const bool running = isRunning();
        m_process.waitForReadyRead(100);
        m_output += m_process.readAll();
        if (!running)
            break;
    }
    return m_output.contains(text);
}

int LauncherProcess::waitForExitCode()
{
    m_process.waitForFinished(Timeout);
    m_output += m_process.readAll();
    if (isRunning() || m_process.exitStatus() != QProcess::NormalExit)
        return -1;
    return m_process.exitCode();
}

bool LauncherProcess::isRunning() const
{
    return m_process.state() != QProcess::NotRunning;
}

bool LauncherProcess::signal(int number)
{
    const qint64 pid = m_process.processId();
    return pid > 0 && ::kill(pid_t(pid), number) == 0 && m_process.waitForFinished(Timeout);
}

bool LauncherProcess::interrupt()
{
    return signal(SIGINT);
}

bool LauncherProcess::kill()
{
    return signal(SIGKILL);
}

LauncherInstallation::LauncherInstallation()
{
    static int count = 0;
    m_applicationName = QStringLiteral("startcenter-test-%1-%2").arg(QCoreApplication::applicationPid()).arg(++count);
    const QByteArray propertyList = propertyListWithIdentifier(QStringLiteral("de.test.") + m_applicationName);
    m_ready = isValid() && !propertyList.isEmpty()
              && copyFolder(QStringLiteral(SC_BUNDLE_RESOURCES_DIR), resourcesDir())
              && writeFile(QStringLiteral("Start-Center.app/Contents/Info.plist"), propertyList)
              && copyFolder(QFileInfo(QStringLiteral(SC_LAUNCHER_PATH)).path(), QFileInfo(executablePath()).path());
}

LauncherInstallation::~LauncherInstallation()
{
    // As the next start would: a register nobody is attached to goes away,
    // and so does the lock of its last user.
    QSharedMemory stale;
    setRegisterKey(stale, m_applicationName);
    if (stale.attach())
        stale.detach();
    QSystemSemaphore(stale.key(), 1, QSystemSemaphore::Create);
}

std::unique_ptr<LauncherProcess> LauncherInstallation::start() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    environment.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("startcenter.*.debug=true"));
    environment.insert(QStringLiteral("SC_MESSAGE_BOX_LOG"), boxLogPath());
    return std::make_unique<LauncherProcess>(executablePath(), environment);
}

QStringList LauncherInstallation::boxes() const
{
    return QString::fromUtf8(readFile(boxLogPath())).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

QString LauncherInstallation::boxLogPath() const
{
    return root() + QStringLiteral("/boxes.log");
}
