#include "CrossPlatformApi.h"

#include "BundleInfo.h"
#include "PlatformLogging.h"
#include "ProcessWait.h"

#include <QApplication>
#include <QCheckBox>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>
#include <QUuid>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <dirent.h>
#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace {

std::string withoutTrailingSlashes(std::string path)
{
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

std::string environment(const char* name)
{
    const char* value = std::getenv(name);
    return value ? std::string(value) : std::string();
}

// Copies at most size - 1 bytes and terminates; a null buffer or a size of 0
// means the caller does not want this component.
void copyCut(char* buffer, std::size_t size, const char* begin, const char* end)
{
    if (!buffer || size == 0)
        return;
    const std::size_t length = std::min<std::size_t>(std::size_t(end - begin), size - 1);
    std::memcpy(buffer, begin, length);
    buffer[length] = '\0';
}

bool isSeparator(char c)
{
    return c == '/' || c == '\\';
}

char foldCase(char c)
{
    return char(std::tolower(static_cast<unsigned char>(c)));
}

// '*' matches any run of characters, '?' exactly one; letters match
// regardless of ASCII case, as the suite's patterns come from file systems
// that ignore case.
bool wildcardMatch(const char* name, const char* pattern)
{
    const char* starPattern = nullptr;
    const char* starName = nullptr;
    while (*name) {
        if (*pattern == '*') {
            starPattern = ++pattern;
            starName = name;
        } else if (*pattern == '?' || (*pattern && foldCase(*pattern) == foldCase(*name))) {
            ++pattern;
            ++name;
        } else if (starPattern) {
            pattern = starPattern;
            name = ++starName;
        } else {
            return false;
        }
    }
    while (*pattern == '*')
        ++pattern;
    return *pattern == '\0';
}

// A pattern ending in ".*" also matches names without any extension, so
// "*.*" lists every entry and "readme.*" finds "readme".
bool matchesPattern(const std::string& name, const std::string& pattern)
{
    if (wildcardMatch(name.c_str(), pattern.c_str()))
        return true;
    const std::size_t length = pattern.size();
    return length >= 2 && pattern.compare(length - 2, 2, ".*") == 0
        && name.find('.') == std::string::npos
        && wildcardMatch(name.c_str(), pattern.substr(0, length - 2).c_str());
}

std::string homeFolder()
{
    std::string home = environment("HOME");
    if (home.empty()) {
        if (const passwd* entry = getpwuid(getuid()))
            home = entry->pw_dir;
    }
    return home;
}

// The folder shared by all users of the machine. Linux has no standard folder
// that every user may write to without an administrator's help except
// /var/tmp, which is persistent (unlike /tmp) and world-writable; it plays the
// part of the shared folder of other systems. SC_COMMON_APPDATA points it
// elsewhere, e.g. to a folder that an administrator prepared for a group, or
// to a private folder for tests.
std::string commonAppDataFolder()
{
    const std::string configured = environment("SC_COMMON_APPDATA");
    return configured.empty() ? std::string("/var/tmp") : configured;
}

// A user folder of the XDG base directories: the variable when it holds an
// absolute path (relative ones are invalid and ignored), else its default
// below the home folder.
std::string xdgFolder(const char* variable, const char* defaultBelowHome)
{
    const std::string configured = environment(variable);
    return configured.empty() || configured.front() != '/' ? homeFolder() + defaultBelowHome : configured;
}

std::string nativeSystemFolder(int sysFolder)
{
    switch (sysFolder) {
    case CrossPlatformApi::SysTemp: {
        const std::string temp = environment("TMPDIR");
        return temp.empty() ? std::string("/tmp") : temp;
    }
    case CrossPlatformApi::SysLocalAppData:
        return xdgFolder("XDG_DATA_HOME", "/.local/share");
    case CrossPlatformApi::SysLocalConfig:
        return xdgFolder("XDG_CONFIG_HOME", "/.config");
    case CrossPlatformApi::SysLocalState:
        return xdgFolder("XDG_STATE_HOME", "/.local/state");
    case CrossPlatformApi::SysLocalCache:
        return xdgFolder("XDG_CACHE_HOME", "/.cache");
    case CrossPlatformApi::SysCommonAppData:
        return commonAppDataFolder();
    case CrossPlatformApi::SysMyDocuments: {
        const QString documents =
            QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
        return documents.isEmpty() ? homeFolder() + "/Documents"
                                   : QFile::encodeName(documents).toStdString();
    }
    case CrossPlatformApi::SysProfile:
        return homeFolder();
    default:
        return std::string();
    }
}

std::string readExecutableLink()
{
    std::vector<char> buffer(4096);
    for (;;) {
        const ssize_t length = readlink("/proc/self/exe", buffer.data(), buffer.size());
        if (length < 0)
            return std::string();
        if (std::size_t(length) < buffer.size())
            return CrossPlatformApi::fromFileSystemEncoding(std::string(buffer.data(), std::size_t(length)));
        buffer.resize(buffer.size() * 2);
    }
}

std::string& executablePathOverride()
{
    static std::string path;
    return path;
}

QMessageBox::StandardButton firstButton(QMessageBox::StandardButtons buttons)
{
    for (int bit = QMessageBox::FirstButton; bit <= QMessageBox::LastButton; bit <<= 1) {
        if (buttons.testFlag(QMessageBox::StandardButton(bit)))
            return QMessageBox::StandardButton(bit);
    }
    return QMessageBox::NoButton;
}

// The answer of a box that nobody sees: its default button, else the first
// of its buttons.
MessageBoxAnswer unattendedAnswer(const MessageBoxRequest& request)
{
    MessageBoxAnswer answer;
    answer.button = request.defaultButton != QMessageBox::NoButton ? request.defaultButton
                                                                     : firstButton(request.buttons);
    answer.checkBoxChecked = request.checkBoxChecked;
    return answer;
}

// Without a widget application (command-line tools, early start-up) the box
// cannot be shown: its text goes to the error output.
MessageBoxAnswer answerOnConsole(const MessageBoxRequest& request)
{
    std::fprintf(stderr, "%s: %s\n", request.title.toLocal8Bit().constData(),
                 request.text.toLocal8Bit().constData());
    if (!request.informativeText.isEmpty())
        std::fprintf(stderr, "%s\n", request.informativeText.toLocal8Bit().constData());
    return unattendedAnswer(request);
}

// A program started by a test appends each box as one line "title|text"
// (UTF-8, line breaks of the text written as \n) to the file the test names.
MessageBoxAnswer answerInLog(const MessageBoxRequest& request, const QString& logPath)
{
    QFile log(logPath);
    if (log.open(QIODevice::WriteOnly | QIODevice::Append)) {
        const QString text = QString(request.text).replace(QLatin1Char('\n'), QLatin1String("\\n"));
        log.write((request.title + QLatin1Char('|') + text + QLatin1Char('\n')).toUtf8());
    }
    return unattendedAnswer(request);
}

MessageBoxAnswer showRealMessageBox(const MessageBoxRequest& request)
{
    const QString logPath = qEnvironmentVariable("SC_MESSAGE_BOX_LOG");
    if (!logPath.isEmpty())
        return answerInLog(request, logPath);
    if (!qobject_cast<QApplication*>(QCoreApplication::instance()))
        return answerOnConsole(request);

    QMessageBox box(request.icon, request.title, request.text, request.buttons, request.parent);
    box.setInformativeText(request.informativeText);
    if (request.defaultButton != QMessageBox::NoButton)
        box.setDefaultButton(request.defaultButton);
    QCheckBox* checkBox = nullptr;
    if (!request.checkBoxText.isEmpty()) {
        checkBox = new QCheckBox(request.checkBoxText);
        checkBox->setChecked(request.checkBoxChecked);
        box.setCheckBox(checkBox);
    }
    MessageBoxAnswer answer;
    answer.button = QMessageBox::StandardButton(box.exec());
    answer.checkBoxChecked = checkBox ? checkBox->isChecked() : request.checkBoxChecked;
    return answer;
}

// A function of the user interface that tests may replace: the real one is
// kept so that an empty replacement restores it.
template <class Function>
class Replaceable
{
public:
    explicit Replaceable(Function real) : m_real(real), m_current(std::move(real)) {}

    const Function& current() const { return m_current; }
    Function replace(Function replacement)
    {
        Function previous = std::move(m_current);
        m_current = replacement ? std::move(replacement) : m_real;
        return previous;
    }

private:
    const Function m_real;
    Function m_current;
};

Replaceable<CrossPlatformApi::MessageBoxHandler>& messageBoxHandler()
{
    static Replaceable<CrossPlatformApi::MessageBoxHandler> handler(showRealMessageBox);
    return handler;
}

QString showRealFileDialog(const FileDialogRequest& request)
{
    if (!qobject_cast<QApplication*>(QCoreApplication::instance()))
        return QString();
    if (request.kind == FileDialogRequest::ExistingDirectory)
        return QFileDialog::getExistingDirectory(request.parent, request.caption, request.directory);
    return QFileDialog::getOpenFileName(request.parent, request.caption, request.directory, request.filter);
}

Replaceable<CrossPlatformApi::FileDialogHandler>& fileDialogHandler()
{
    static Replaceable<CrossPlatformApi::FileDialogHandler> handler(showRealFileDialog);
    return handler;
}

// LD_LIBRARY_PATH as this process inherited it, once the suite's folders
// were added.
struct InheritedLibraryPath
{
    bool changed = false;
    bool wasSet = false;
    QByteArray value;
};

InheritedLibraryPath& inheritedLibraryPath()
{
    static InheritedLibraryPath inherited;
    return inherited;
}

QProcessEnvironment desktopEnvironment()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    const InheritedLibraryPath& inherited = inheritedLibraryPath();
    if (inherited.changed && inherited.wasSet)
        environment.insert(QStringLiteral("LD_LIBRARY_PATH"), QString::fromLocal8Bit(inherited.value));
    else if (inherited.changed)
        environment.remove(QStringLiteral("LD_LIBRARY_PATH"));
    return environment;
}

// xdg-open returns as soon as the desktop has taken the document over. Where
// no desktop is recognised it runs the viewer itself and only returns when
// that ends: still running after this long, it counts as showing the document.
constexpr int openerVerdictMs = 3000;

// A process that runs on after its caller is done with it: deleted when it
// ends, or by the application as it quits (which ends the process, but not
// the programs it started).
void keepUntilFinished(QProcess* process)
{
    QCoreApplication* application = QCoreApplication::instance();
    QObject::connect(process, &QProcess::finished, process, &QObject::deleteLater);
    if (!application)
        return;
    if (process->thread() == application->thread()) {
        process->setParent(application);
        return;
    }
    process->moveToThread(application->thread());
    QMetaObject::invokeMethod(application, [process, application] { process->setParent(application); },
                              Qt::QueuedConnection);
}

bool openWithDesktop(const QUrl& url)
{
    auto* opener = new QProcess;
    opener->setProcessEnvironment(desktopEnvironment());
    // Its complaints ("no method available") go to our error output; what a
    // viewer it runs prints is of no interest.
    opener->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    opener->setStandardOutputFile(QProcess::nullDevice());
    opener->start(QStringLiteral("xdg-open"),
                  {url.isLocalFile() ? url.toLocalFile() : url.toString(QUrl::FullyEncoded)});
    if (!opener->waitForStarted()) {
        delete opener;
        return false;
    }
    if (!ProcessWait::finished(*opener, openerVerdictMs)) {
        keepUntilFinished(opener);
        return true;
    }
    const bool opened = opener->exitStatus() == QProcess::NormalExit && opener->exitCode() == 0;
    delete opener;
    return opened;
}

Replaceable<CrossPlatformApi::UrlOpener>& urlOpener()
{
    static Replaceable<CrossPlatformApi::UrlOpener> opener(openWithDesktop);
    return opener;
}

Replaceable<CrossPlatformApi::DetachedStarter>& detachedStarter()
{
    static Replaceable<CrossPlatformApi::DetachedStarter> starter(
        [](const QString& program, const QStringList& arguments) {
            return QProcess::startDetached(program, arguments);
        });
    return starter;
}

// The executable of a program path: a bundle folder "X.app" stands for the
// program named by its Info.plist (or X) in X.app/Contents/MacOS.
QString bundleExecutable(const QString& program)
{
    const QFileInfo info(program);
    if (!info.isDir() || !program.endsWith(QLatin1String(".app")))
        return program;
    std::string name = BundleInfo::at(program.toLatin1().toStdString()).value("CFBundleExecutable");
    const QString executable = name.empty() ? info.completeBaseName() : QString::fromLatin1(name.c_str());
    return info.absoluteFilePath() + QStringLiteral("/Contents/MacOS/") + executable;
}

// The suite's box styles: the low four bits choose the buttons, the next
// four the icon; the answer is the number of the button pressed.
struct SuiteButton
{
    QMessageBox::StandardButton button;
    int id;
};
constexpr SuiteButton suiteButtons[] = {
    {QMessageBox::Ok, 1},    {QMessageBox::Cancel, 2}, {QMessageBox::Abort, 3},
    {QMessageBox::Retry, 4}, {QMessageBox::Ignore, 5}, {QMessageBox::Yes, 6},
    {QMessageBox::No, 7},
};

QMessageBox::StandardButtons suiteButtonSet(unsigned style)
{
    switch (style & 0xF) {
    case 1: return QMessageBox::Ok | QMessageBox::Cancel;
    case 2: return QMessageBox::Abort | QMessageBox::Retry | QMessageBox::Ignore;
    case 3: return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
    case 4: return QMessageBox::Yes | QMessageBox::No;
    case 5: return QMessageBox::Retry | QMessageBox::Cancel;
    default: return QMessageBox::Ok;
    }
}

// Every box of the suite reports something worth the user's attention, so a
// style without an icon of its own gets the warning sign.
QMessageBox::Icon suiteIcon(unsigned style)
{
    switch (style & 0xF0) {
    case 0x10: return QMessageBox::Critical;
    case 0x20: return QMessageBox::Question;
    case 0x40: return QMessageBox::Information;
    default: return QMessageBox::Warning;
    }
}

} // namespace

std::string CrossPlatformApi::fileSystemEncoding(const std::string& latin1Path)
{
    return QFile::encodeName(toQString(latin1Path)).toStdString();
}

std::string CrossPlatformApi::fromFileSystemEncoding(const std::string& nativePath)
{
    const QByteArray bytes(nativePath.data(), qsizetype(nativePath.size()));
    return QFile::decodeName(bytes).toLatin1().toStdString();
}

QString CrossPlatformApi::toQString(const std::string& latin1Path)
{
    return QString::fromLatin1(latin1Path.data(), qsizetype(latin1Path.size()));
}

int CrossPlatformApi::strCmpNoCase(const char* a, const char* b)
{
    for (;; ++a, ++b) {
        const int difference = static_cast<unsigned char>(foldCase(*a))
                             - static_cast<unsigned char>(foldCase(*b));
        if (difference != 0 || *a == '\0')
            return difference;
    }
}

int CrossPlatformApi::splitpath_s(const char* path, char* drive, std::size_t driveSize, char* dir,
                                  std::size_t dirSize, char* fname, std::size_t fnameSize,
                                  char* ext, std::size_t extSize)
{
    if (!path)
        return EINVAL;
    const char* end = path + std::strlen(path);
    const char* name = end;
    while (name > path && !isSeparator(name[-1]))
        --name;
    const char* dot = end;
    for (const char* p = name; p < end; ++p) {
        if (*p == '.')
            dot = p;
    }
    copyCut(drive, driveSize, path, path);
    copyCut(dir, dirSize, path, name);
    copyCut(fname, fnameSize, name, dot);
    copyCut(ext, extSize, dot, end);
    return 0;
}

std::vector<std::string> CrossPlatformApi::getDirectoryEntries(const std::string& folder,
                                                               const std::string& pattern)
{
    std::vector<std::string> names;
    DIR* directory = opendir(fileSystemEncoding(folder).c_str());
    if (!directory)
        return names;
    while (const dirent* entry = readdir(directory)) {
        const std::string name = fromFileSystemEncoding(entry->d_name);
        if (name != "." && name != ".." && matchesPattern(name, pattern))
            names.push_back(name);
    }
    closedir(directory);
    std::sort(names.begin(), names.end());
    return names;
}

bool CrossPlatformApi::deleteFile(const std::string& path)
{
    return unlink(fileSystemEncoding(path).c_str()) == 0;
}

bool CrossPlatformApi::deleteDirectory(const std::string& path)
{
    return rmdir(fileSystemEncoding(path).c_str()) == 0;
}

long long CrossPlatformApi::getFileSize(const std::string& path)
{
    const int fd = open(fileSystemEncoding(path).c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return -1;
    struct stat status;
    const bool isFile = fstat(fd, &status) == 0 && S_ISREG(status.st_mode);
    close(fd);
    return isFile ? static_cast<long long>(status.st_size) : -1;
}

std::string CrossPlatformApi::getUUID()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toStdString();
}

bool CrossPlatformApi::localtime_s(struct tm& result, const long& time)
{
    const time_t seconds = time;
    return localtime_r(&seconds, &result) != nullptr;
}

void CrossPlatformApi::outputDebugString(const std::string& text)
{
    std::string line = text;
    if (!line.empty() && line.back() == '\n')
        line.pop_back();
    qCDebug(lcPlatform, "%s", line.c_str());
}

std::string CrossPlatformApi::getSystemFolder(int sysFolder)
{
    return fromFileSystemEncoding(withoutTrailingSlashes(nativeSystemFolder(sysFolder)));
}

int CrossPlatformApi::getDriveType(const std::string& path)
{
    constexpr long iso9660Magic = 0x9660;
    constexpr long udfMagic = 0x15013346;
    struct statfs info;
    if (statfs(fileSystemEncoding(path).c_str(), &info) != 0)
        return 0;
    const long type = static_cast<long>(info.f_type);
    return type == iso9660Magic || type == udfMagic ? 5 : 3;
}

std::string CrossPlatformApi::executablePath()
{
    static const std::string realPath = readExecutableLink();
    const std::string& overridden = executablePathOverride();
    return overridden.empty() ? realPath : overridden;
}

void CrossPlatformApi::overrideExecutablePath(const std::string& path)
{
    executablePathOverride() = path;
}

MessageBoxAnswer CrossPlatformApi::showMessageBox(const MessageBoxRequest& request)
{
    return messageBoxHandler().current()(request);
}

CrossPlatformApi::MessageBoxHandler CrossPlatformApi::setMessageBoxHandler(MessageBoxHandler handler)
{
    return messageBoxHandler().replace(std::move(handler));
}

QString CrossPlatformApi::showFileDialog(const FileDialogRequest& request)
{
    return fileDialogHandler().current()(request);
}

CrossPlatformApi::FileDialogHandler CrossPlatformApi::setFileDialogHandler(FileDialogHandler handler)
{
    return fileDialogHandler().replace(std::move(handler));
}

bool CrossPlatformApi::openUrl(const QUrl& url)
{
    return url.isValid() && urlOpener().current()(url);
}

bool CrossPlatformApi::openUrl(const std::string& url)
{
    const QString text = toQString(url);
    QUrl parsed(text);
    if (parsed.scheme().isEmpty())
        parsed = QUrl::fromLocalFile(text);
    return openUrl(parsed);
}

bool CrossPlatformApi::executeAssociatedAppAndOpenFile(const std::string& path)
{
    const QString file = toQString(path);
    return QFileInfo::exists(file) && openUrl(QUrl::fromLocalFile(file));
}

bool CrossPlatformApi::exec(const std::string& program, const std::string& params, int /*flags*/)
{
    std::string path = program;
    std::replace(path.begin(), path.end(), '\\', '/');
    const QString executable = bundleExecutable(toQString(path));
    const QFileInfo info(executable);
    if (!info.isFile() || !info.isExecutable())
        return false;
    return startDetached(info.absoluteFilePath(), QProcess::splitCommand(toQString(params)));
}

void CrossPlatformApi::appendChildLibraryPath(const QString& folders)
{
    InheritedLibraryPath& inherited = inheritedLibraryPath();
    const QByteArray current = qgetenv("LD_LIBRARY_PATH");
    if (!inherited.changed) {
        inherited.changed = true;
        inherited.wasSet = qEnvironmentVariableIsSet("LD_LIBRARY_PATH");
        inherited.value = current;
    }
    const QByteArray added = folders.toLocal8Bit();
    qputenv("LD_LIBRARY_PATH", current.isEmpty() ? added : current + ':' + added);
}

CrossPlatformApi::UrlOpener CrossPlatformApi::setUrlOpener(UrlOpener opener)
{
    return urlOpener().replace(std::move(opener));
}

CrossPlatformApi::DetachedStarter CrossPlatformApi::setDetachedStarter(DetachedStarter starter)
{
    return detachedStarter().replace(std::move(starter));
}

bool CrossPlatformApi::startDetached(const QString& program, const QStringList& arguments)
{
    return detachedStarter().current()(program, arguments);
}

int CrossPlatformApi::messageBox(const std::string& text, const std::string& title, unsigned style)
{
    MessageBoxRequest request;
    request.icon = suiteIcon(style);
    request.title = toQString(title);
    request.text = toQString(text);
    request.buttons = suiteButtonSet(style);
    const MessageBoxAnswer answer = showMessageBox(request);
    for (const SuiteButton& entry : suiteButtons) {
        if (entry.button == answer.button)
            return entry.id;
    }
    return 0;
}
