#include "Uninstall.h"

#include "BundleInfo.h"
#include "Configuration.h"
#include "CrossPlatformApi.h"
#include "DMFileName.h"
#include "NvWinIni.h"
#include "ProcessWait.h"
#include "SharedHelpers.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

#include <unistd.h>

namespace {

constexpr int queryTimeoutMs = 10000;
// The removal includes the time the user takes at pkexec's password prompt.
constexpr int removalTimeoutMs = 10 * 60 * 1000;
// pkexec's own exit codes: the user dismissed the prompt, or was not
// authorised (or pkexec failed).
constexpr int pkexecDismissed = 126;
constexpr int pkexecNotAuthorised = 127;
constexpr int notRun = -1;

QString fromLatin1(const std::string& text)
{
    return CrossPlatformApi::toQString(text);
}

MessageBoxRequest box(QMessageBox::Icon icon, const QString& text, const QString& informativeText = QString())
{
    MessageBoxRequest request;
    request.icon = icon;
    request.title = QStringLiteral("Deinstallation");
    request.text = text;
    request.informativeText = informativeText;
    request.buttons = QMessageBox::Ok;
    request.defaultButton = QMessageBox::NoButton;
    return request;
}

void showBox(QMessageBox::Icon icon, const QString& text)
{
    CrossPlatformApi::showMessageBox(box(icon, text));
}

bool confirmed(const QString& text, const QString& informativeText)
{
    MessageBoxRequest request = box(QMessageBox::Warning, text, informativeText);
    request.buttons = QMessageBox::Ok | QMessageBox::Cancel;
    return CrossPlatformApi::showMessageBox(request).button == QMessageBox::Ok;
}

void reportStartFailure()
{
    showBox(QMessageBox::Critical, QStringLiteral("Die Deinstallation konnte nicht gestartet werden!"));
}

QString casesStay()
{
    return QStringLiteral("Ihre Steuerfälle bleiben erhalten.");
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

QStringList xdgBaseFolders()
{
    return {xdgFolder("XDG_DATA_HOME", QStringLiteral(".local/share")),
            xdgFolder("XDG_CACHE_HOME", QStringLiteral(".cache")),
            xdgFolder("XDG_CONFIG_HOME", QStringLiteral(".config")),
            xdgFolder("XDG_STATE_HOME", QStringLiteral(".local/state"))};
}

// A configured path with its folder symbols expanded, made absolute against
// the application folder.
QString configuredFolder(const std::string& configured)
{
    if (configured.empty())
        return QString();
    DMFileName name;
    name.setFullPath(configured);
    name.makeAbsPath(true);
    return fromLatin1(name.compose());
}

// Folders that no removal may hold: the home folder and its standard folders,
// and every folder of case files the settings know of, the working folders
// that the user's settings files remember included.
QStringList protectedFolders()
{
    QStringList folders = QStringList{QDir::homePath()} + xdgBaseFolders();
    folders << fromLatin1(CrossPlatformApi::getSystemFolder(CrossPlatformApi::SysMyDocuments))
            << QStandardPaths::writableLocation(QStandardPaths::DesktopLocation)
            << fromLatin1(cNvWinIni::theInstance()->getHomeDataPath())
            << configuredFolder(cConfiguration::theInstance()->GetString("Files", "LastWorkDir", ""));
    const std::string userSettings = cNvWinIni::theInstance()->getUserSettingsPath();
    for (const std::string& name : CrossPlatformApi::getDirectoryEntries(userSettings, "*.ini"))
        folders << configuredFolder(CrossPlatformApi::getIniString("Files", "LastWorkDir", "", userSettings + name));
    folders.removeAll(QString());
    return folders;
}

// The path rm would act on: a link at the end is removed itself, links on
// the way there are followed.
QString removedPath(const QString& path)
{
    const QFileInfo info(path);
    const QString parent = QFileInfo(info.path()).canonicalFilePath();
    return parent.isEmpty() ? QString() : QDir::cleanPath(parent + QLatin1Char('/') + info.fileName());
}

bool isOrHolds(const QString& folder, const QString& other)
{
    return other == folder || other.startsWith(folder + QLatin1Char('/'));
}

// Below the home folder, outside the bundle (which goes with it anyway), and
// neither a protected folder nor holding one.
bool isOwnFolder(const QString& path, const QString& bundlePath, const QStringList& protectedOnes)
{
    const QString home = QDir::cleanPath(QDir::homePath());
    const QString removed = removedPath(path);
    if (!path.startsWith(home + QLatin1Char('/')) || removed.isEmpty()
        || (!bundlePath.isEmpty() && isOrHolds(bundlePath, path)))
        return false;
    for (const QString& folder : protectedOnes) {
        const QString canonical = QFileInfo(folder).canonicalFilePath();
        if (isOrHolds(removed, QDir::cleanPath(folder)) || (!canonical.isEmpty() && isOrHolds(removed, canonical)))
            return false;
    }
    return true;
}

QString listed(const QStringList& paths)
{
    return paths.join(QLatin1Char('\n'));
}

// Runs the program and waits up to timeoutMs for it: its exit code, or
// notRun when it did not start, crashed or ran out of time (then it is ended).
int runAndWait(const QString& program, const QStringList& arguments, int timeoutMs, QByteArray* output = nullptr)
{
    QProcess process;
    if (output)
        process.setStandardErrorFile(QProcess::nullDevice());
    else
        process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(program, arguments);
    if (!process.waitForStarted())
        return notRun;
    if (!ProcessWait::finished(process, timeoutMs)) {
        process.kill();
        process.waitForFinished();
        return notRun;
    }
    if (output)
        *output = process.readAllStandardOutput();
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : notRun;
}

// The removal ran: whatever is left is named for the user to remove.
Uninstall::Outcome reportRemoval(int exitCode, const QStringList& paths)
{
    if (exitCode == notRun) {
        reportStartFailure();
        return Uninstall::Outcome::Failed;
    }
    QStringList left;
    for (const QString& path : paths) {
        if (QFileInfo::exists(path) || QFileInfo(path).isSymLink())
            left << path;
    }
    if (!left.isEmpty()) {
        showBox(QMessageBox::Critical,
                QStringLiteral("Die Deinstallation wurde nicht vollständig ausgeführt.\n"
                               "Bitte entfernen Sie von Hand:\n")
                    + listed(left));
    }
    return Uninstall::Outcome::Removed;
}

// The package manager removes the program; the user may remove their own
// files of it now.
Uninstall::Outcome offerOwnFiles(const QStringList& packages, const QStringList& folders)
{
    const QString text = QStringLiteral("Das Start-Center wurde mit dem Paket »%1« installiert. Entfernen Sie es "
                                        "mit der Paketverwaltung, zum Beispiel mit dem Befehl\nsudo apt remove %2")
                             .arg(packages.join(QStringLiteral(", ")), packages.join(QLatin1Char(' ')));
    if (folders.isEmpty()) {
        showBox(QMessageBox::Information, text);
        return Uninstall::Outcome::Cancelled;
    }
    if (!confirmed(text, QStringLiteral("Sollen jetzt nur Ihre eigenen Dateien des Programms entfernt werden? "
                                        "Das Start-Center wird dazu beendet.\n\n")
                             + listed(folders) + QStringLiteral("\n\n") + casesStay())) {
        return Uninstall::Outcome::Cancelled;
    }
    const QStringList shell{QStringLiteral("-c"), Uninstall::commandLine(folders)};
    return reportRemoval(runAndWait(QStringLiteral("/bin/sh"), shell, removalTimeoutMs), folders);
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
        return path == QLatin1String("/") || isOrHolds(path, home);
    };
    const QString home = QDir::cleanPath(QDir::homePath());
    if (holdsHome(QDir::cleanPath(bundlePath), home))
        return false;
    // The same check for the folders the paths lead to through symbolic links.
    const QString canonical = QFileInfo(bundlePath).canonicalFilePath();
    return canonical.isEmpty() || !holdsHome(canonical, QFileInfo(home).canonicalFilePath());
}

QStringList userFoldersOf(const QString& bundleId)
{
    QStringList folders;
    for (const QString& base : xdgBaseFolders())
        folders << base + QLatin1Char('/') + bundleId;
    return folders;
}

QStringList ownFolders(const QStringList& bundleIds)
{
    QStringList candidates{fromLatin1(cNvWinIni::theInstance()->getUserSettingsPath()),
                           fromLatin1(DMFileName("<COMMONSETTINGS>").compose()),
                           fromLatin1(DMFileName("<COMMONLOGFILES>").compose())};
    if (DMFileName::getGlobalFileEnvironment().hasSymbol("COMMONCACHE"))
        candidates << fromLatin1(DMFileName("<COMMONCACHE>").compose());
    for (const QString& id : bundleIds) {
        if (isUsableBundleId(id))
            candidates << userFoldersOf(id);
    }

    const QString bundle = QDir::cleanPath(fromLatin1(mainBundlePath()));
    const QStringList protectedOnes = protectedFolders();
    QStringList own;
    for (const QString& candidate : std::as_const(candidates)) {
        if (!QDir::isAbsolutePath(candidate))
            continue;
        const QString path = QDir::cleanPath(candidate);
        if (!own.contains(path) && (QFileInfo::exists(path) || QFileInfo(path).isSymLink())
            && isOwnFolder(path, bundle, protectedOnes))
            own << path;
    }
    return own;
}

QStringList owningPackages(const QString& bundlePath)
{
    QByteArray output;
    if (runAndWait(QStringLiteral("dpkg-query"), {QStringLiteral("-S"), bundlePath}, queryTimeoutMs, &output) != 0)
        return {};
    // "package[, package...]: path", one line per match; diversions are
    // reported on lines of their own.
    for (const QByteArray& line : output.split('\n')) {
        const qsizetype colon = line.indexOf(": ");
        if (colon <= 0 || line.startsWith("diversion ") || QFile::decodeName(line.mid(colon + 2)) != bundlePath)
            continue;
        QStringList packages;
        for (const QByteArray& package : line.left(colon).split(','))
            packages << QString::fromUtf8(package.trimmed());
        return packages;
    }
    return {};
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

QString commandLine(const QStringList& paths)
{
    QString command = QStringLiteral("/bin/rm -rf ");
    for (const QString& path : paths)
        command += shellQuoted(path) + QLatin1Char(' ');
    return command;
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

Outcome removeInstallation(const QString& bundlePath, const QStringList& folders, bool asAdministrator)
{
    if (!QFileInfo::exists(bundlePath)) {
        reportStartFailure();
        return Outcome::Failed;
    }
    const QStringList paths = folders + QStringList{bundlePath};
    const QString command = commandLine(paths);
    const QStringList shell{QStringLiteral("/bin/sh"), QStringLiteral("-c"), command};
    if (!asAdministrator)
        return reportRemoval(runAndWait(shell.first(), shell.mid(1), removalTimeoutMs), paths);

    if (QStandardPaths::findExecutable(QStringLiteral("pkexec")).isEmpty()) {
        showBox(QMessageBox::Critical,
                QStringLiteral("Zum Entfernen des Programms sind Administratorrechte nötig, doch das Programm "
                               "pkexec, das nach ihnen fragt, ist nicht installiert.\n"
                               "Führen Sie als Administrator diesen Befehl aus:\nsudo ")
                    + command.trimmed());
        return Outcome::Failed;
    }
    const int code = runAndWait(QStringLiteral("pkexec"), shell, removalTimeoutMs);
    if (code == pkexecDismissed || code == pkexecNotAuthorised) {
        reportStartFailure();
        return Outcome::Failed;
    }
    return reportRemoval(code, paths);
}

Outcome run()
{
    const QString bundle = fromLatin1(mainBundlePath());
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
    const QStringList folders = ownFolders(collectBundleIds(true));
    const QStringList packages = owningPackages(bundle);
    if (!packages.isEmpty())
        return offerOwnFiles(packages, folders);

    if (!confirmed(QStringLiteral("Die Deinstallation wird gestartet.\nDas Start-Center wird dazu beendet."),
                   QStringLiteral("Entfernt werden:\n") + listed(QStringList{bundle} + folders) + QStringLiteral("\n\n")
                       + casesStay())) {
        return Outcome::Cancelled;
    }
    return removeInstallation(bundle, folders, !QFileInfo(bundle).isWritable());
}

} // namespace Uninstall
