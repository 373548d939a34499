#include "Uninstall.h"

#include "BundleInfo.h"
#include "CrossPlatformApi.h"
#include "SharedHelpers.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <unistd.h>

namespace {

QMessageBox::StandardButton showBox(QMessageBox::Icon icon, const QString& text,
                                    QMessageBox::StandardButtons buttons = QMessageBox::Ok)
{
    MessageBoxRequest box;
    box.icon = icon;
    box.title = QStringLiteral("Deinstallation");
    box.text = text;
    box.buttons = buttons;
    box.defaultButton = QMessageBox::NoButton;
    return CrossPlatformApi::showMessageBox(box).button;
}

void reportStartFailure()
{
    showBox(QMessageBox::Critical, QStringLiteral("Die Deinstallation konnte nicht gestartet werden!"));
}

// An XDG base folder: the variable when it holds an absolute path, otherwise
// its default below the home folder.
QString xdgFolder(const char* variable, const QString& defaultBelowHome)
{
    const QString configured = qEnvironmentVariable(variable);
    if (QDir::isAbsolutePath(configured))
        return QDir::cleanPath(configured);
    return QDir::homePath() + QLatin1Char('/') + defaultBelowHome;
}

// Without write access to the bundle the shell runs with administrator
// rights, which pkexec asks the user for. Whether they are granted is not
// seen here: the launcher ends as soon as pkexec has started.
bool startRemoval(const QString& bundle, const QString& command)
{
    const QStringList shell{QStringLiteral("/bin/sh"), QStringLiteral("-c"), command};
    if (QFileInfo(bundle).isWritable())
        return CrossPlatformApi::startDetached(shell.first(), shell.mid(1));
    if (!QFileInfo::exists(bundle))
        return false;
    return CrossPlatformApi::startDetached(QStringLiteral("pkexec"), shell);
}

} // namespace

namespace Uninstall {

bool isUsableBundleId(const QString& id)
{
    if (id.trimmed().isEmpty() || id == QLatin1String(".") || id == QLatin1String("..")
        || id.contains(QLatin1Char('/')))
        return false;
    for (const QChar c : id) {
        if (c.category() == QChar::Other_Control)
            return false;
    }
    return true;
}

bool isRemovableBundle(const QString& bundlePath)
{
    if (!QDir::isAbsolutePath(bundlePath) || !bundlePath.endsWith(QLatin1String(".app")))
        return false;
    const auto holdsHome = [](const QString& path, const QString& home) {
        return path == QLatin1String("/") || path == home || home.startsWith(path + QLatin1Char('/'));
    };
    const QString home = QDir::cleanPath(QDir::homePath());
    if (holdsHome(QDir::cleanPath(bundlePath), home))
        return false;
    // The same check for the folders the paths lead to through symbolic links.
    const QString canonical = QFileInfo(bundlePath).canonicalFilePath();
    return canonical.isEmpty() || !holdsHome(canonical, QFileInfo(home).canonicalFilePath());
}

QStringList userFolders(const QString& bundleId)
{
    const QString suffix = QLatin1Char('/') + bundleId;
    return {xdgFolder("XDG_DATA_HOME", QStringLiteral(".local/share")) + suffix,
            xdgFolder("XDG_CACHE_HOME", QStringLiteral(".cache")) + suffix,
            xdgFolder("XDG_CONFIG_HOME", QStringLiteral(".config")) + suffix,
            xdgFolder("XDG_STATE_HOME", QStringLiteral(".local/state")) + suffix};
}

QString shellQuoted(const QString& path)
{
    QString quoted = QStringLiteral("\"");
    for (const QChar c : path) {
        if (c == QLatin1Char('\\') || c == QLatin1Char('"') || c == QLatin1Char('$') || c == QLatin1Char('`'))
            quoted += QLatin1Char('\\');
        quoted += c;
    }
    return quoted + QLatin1Char('"');
}

QString commandLine(const QStringList& bundleIds, const QString& bundlePath)
{
    QString command = QStringLiteral("/bin/rm -rf ");
    for (const QString& id : bundleIds) {
        if (!isUsableBundleId(id))
            continue;
        for (const QString& folder : userFolders(id))
            command += shellQuoted(folder) + QLatin1Char(' ');
    }
    return command + shellQuoted(bundlePath) + QLatin1Char(' ');
}

qint64 runningComponent(const QString& bundlePath)
{
    QStringList embedded;
    const QFileInfoList bundles = QDir(bundlePath + QStringLiteral("/Contents/Resources"))
                                      .entryInfoList({QStringLiteral("*.app")}, QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QFileInfo& bundle : bundles) {
        const QString canonical = bundle.canonicalFilePath();
        if (!canonical.isEmpty())
            embedded << canonical + QLatin1Char('/');
    }
    if (embedded.isEmpty())
        return 0;

    const qint64 ownPid = getpid();
    const uint ownUser = getuid();
    const QFileInfoList processes = QDir(QStringLiteral("/proc")).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QFileInfo& process : processes) {
        bool numeric = false;
        const qint64 pid = process.fileName().toLongLong(&numeric);
        if (!numeric || pid == ownPid || process.ownerId() != ownUser)
            continue;
        const QString executable = QFile::symLinkTarget(process.filePath() + QStringLiteral("/exe"));
        for (const QString& folder : std::as_const(embedded)) {
            if (executable.startsWith(folder))
                return pid;
        }
    }
    return 0;
}

Outcome run()
{
    const QString bundle = CrossPlatformApi::toQString(mainBundlePath());
    if (!isRemovableBundle(bundle)) {
        reportStartFailure();
        return Outcome::Failed;
    }
    if (runningComponent(bundle) != 0) {
        showBox(QMessageBox::Critical,
                QStringLiteral("Die Deinstallation kann nicht gestartet werden, solange die Marvendo oder eine ihrer "
                               "Komponenten ausgeführt werden.\n"
                               "Bitte beenden Sie die Orvane-Erklärung und versuchen Sie es erneut."));
        return Outcome::Blocked;
    }
    if (showBox(QMessageBox::Warning,
                QStringLiteral("Die Deinstallation wird gestartet.\nDas Start-Center wird dazu beendet."),
                QMessageBox::Ok | QMessageBox::Cancel)
        != QMessageBox::Ok) {
        return Outcome::Cancelled;
    }
    if (!startRemoval(bundle, commandLine(collectBundleIds(true), bundle))) {
        reportStartFailure();
        return Outcome::Failed;
    }
    return Outcome::Started;
}

} // namespace Uninstall
