#pragma once

#include <QMessageBox>
#include <QString>

#include <cstddef>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

class QUrl;
class QWidget;

// One message box, as the user interface asks for it. Every box of the
// program is described by such a request and shown by
// CrossPlatformApi::showMessageBox, so that tests can answer boxes instead of
// blocking on them.
struct MessageBoxRequest
{
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QString title;
    QString text;
    QString informativeText;
    QMessageBox::StandardButtons buttons = QMessageBox::Ok;
    QMessageBox::StandardButton defaultButton = QMessageBox::NoButton;
    QWidget* parent = nullptr;
    QString checkBoxText;        // a check box below the text when not empty
    bool checkBoxChecked = false;
};

// The answer to a MessageBoxRequest: the button pressed and the check box state.
struct MessageBoxAnswer
{
    QMessageBox::StandardButton button = QMessageBox::NoButton;
    bool checkBoxChecked = false;
};

// A standard file or folder dialog, as the user interface asks for it; shown
// by CrossPlatformApi::showFileDialog, so that tests can answer it.
struct FileDialogRequest
{
    enum Kind { OpenFile, ExistingDirectory };
    Kind kind = OpenFile;
    QWidget* parent = nullptr;
    QString caption;
    QString directory;
    QString filter;   // "Description (*.x);;All (*)" style, OpenFile only
};

// The basic services of the suite, written for Linux: file-system access on
// Latin-1 byte strings, system folders, message boxes, opening documents and
// starting programs. All text arguments and results of the std::string
// functions are Latin-1 byte strings.
class CrossPlatformApi
{
public:
    // --- Strings and paths -------------------------------------------------
    // Latin-1 path bytes to the bytes the file system expects (UTF-8 here),
    // and back.
    static std::string fileSystemEncoding(const std::string& latin1Path);
    static std::string fromFileSystemEncoding(const std::string& nativePath);
    static QString toQString(const std::string& latin1Path);

    // strcmp ignoring the case of ASCII letters.
    static int strCmpNoCase(const char* a, const char* b);

    // The C library's _splitpath_s contract: drive (always empty here),
    // directory with its trailing "/", file name, extension with its dot.
    // Components that do not fit their buffers are cut. Returns 0, or EINVAL
    // for a null path.
    static int splitpath_s(const char* path, char* drive, std::size_t driveSize, char* dir,
                           std::size_t dirSize, char* fname, std::size_t fnameSize, char* ext,
                           std::size_t extSize);

    // --- Files and folders -------------------------------------------------
    // Names (not paths) of the entries of a folder that match a wildcard
    // pattern ("*.*" matches every name, with or without a dot); "." and ".."
    // are never listed.
    static std::vector<std::string> getDirectoryEntries(const std::string& folder,
                                                        const std::string& pattern);
    static bool deleteFile(const std::string& path);
    static bool deleteDirectory(const std::string& path);   // an empty folder
    static long long getFileSize(const std::string& path);  // -1 when it cannot be read
    static std::string getUUID();                           // 36 characters, no braces
    static bool localtime_s(struct tm& result, const long& time);
    static void outputDebugString(const std::string& text);

    enum SysFolder {
        SysTemp = 0,        // the temporary folder
        SysLocalAppData,    // $XDG_DATA_HOME
        SysCommonAppData,   // the folder shared by all users
        SysMyDocuments,     // the documents folder
        SysProfile,         // the home folder
        SysLocalConfig,     // $XDG_CONFIG_HOME
        SysLocalState,      // $XDG_STATE_HOME
        SysLocalCache       // $XDG_CACHE_HOME
    };
    // The folder without a trailing "/".
    static std::string getSystemFolder(int sysFolder);

    // 5 for a read-only optical medium (ISO 9660 or UDF), 3 for any other
    // fixed file system, 0 when the path cannot be examined.
    static int getDriveType(const std::string& path);

    // --- INI files (read through cIniFile) ---------------------------------
    static std::vector<std::string> getIniSections(const std::string& path);
    // The entries of a section, each as "key=value".
    static std::vector<std::string> getIniSectionEntries(const std::string& section,
                                                         const std::string& path);
    static std::string getIniString(const std::string& section, const std::string& key,
                                    const std::string& defaultValue, const std::string& path);

    // --- The program's own location ----------------------------------------
    // The running executable (from /proc/self/exe), usable before any Qt
    // object exists. Tests point it elsewhere with overrideExecutablePath;
    // an empty path restores the real one.
    static std::string executablePath();
    static void overrideExecutablePath(const std::string& path);

    // --- Message boxes -----------------------------------------------------
    using MessageBoxHandler = std::function<MessageBoxAnswer(const MessageBoxRequest&)>;
    static MessageBoxAnswer showMessageBox(const MessageBoxRequest& request);
    // Replaces the function that shows boxes (tests record them); an empty
    // handler restores the real one. Returns the handler that was in place.
    // Tests observe the boxes of a launcher process through the environment
    // variable SC_MESSAGE_BOX_LOG: when it names a file, the real handler
    // shows nothing, appends each box to that file as one line "title|text"
    // (UTF-8, line breaks of the text written as \n) and answers with the
    // default button, else the first of the box's buttons.
    static MessageBoxHandler setMessageBoxHandler(MessageBoxHandler handler);

    // --- Standard dialogs -----------------------------------------------------
    // The chosen file or folder, or an empty text when the user cancelled.
    using FileDialogHandler = std::function<QString(const FileDialogRequest&)>;
    static QString showFileDialog(const FileDialogRequest& request);
    static FileDialogHandler setFileDialogHandler(FileDialogHandler handler);

    // --- Opening documents and starting programs -----------------------------
    // Opens a web address or a file:// URL with the desktop's handler: runs
    // xdg-open and waits a few seconds for its verdict. True when it handed
    // the document over (exit status 0), or still runs after the wait, since
    // then it shows the document itself. False when it cannot be started or
    // fails (no program for the document, no browser). The window keeps being
    // painted meanwhile, user input is held back. The text form takes a
    // Latin-1 address.
    static bool openUrl(const QUrl& url);
    static bool openUrl(const std::string& url);
    // Opens a document (Latin-1 path) with the application the desktop
    // associates with it.
    static bool executeAssociatedAppAndOpenFile(const std::string& path);
    // Starts a program detached. program is a Latin-1 path in which
    // backslashes stand for "/"; a bundle folder "X.app" starts the
    // executable inside it. params is split like a shell command line
    // (quotes group). flags is reserved (0). False when the program does not
    // exist or cannot be started.
    static bool exec(const std::string& program, const std::string& params, int flags);

    // Programs of the suite started later find their libraries in folders
    // (a colon-separated list): they are appended to this process's
    // LD_LIBRARY_PATH, which every child inherits. The desktop's handler of
    // documents gets the value this process inherited instead, so that the
    // programs it starts never load the suite's libraries.
    static void appendChildLibraryPath(const QString& folders);

    // Tests replace how URLs are opened and how detached programs are
    // started; an empty handler restores the real one. Each returns the
    // handler that was in place.
    using UrlOpener = std::function<bool(const QUrl&)>;
    static UrlOpener setUrlOpener(UrlOpener opener);
    using DetachedStarter = std::function<bool(const QString& program, const QStringList& arguments)>;
    static DetachedStarter setDetachedStarter(DetachedStarter starter);
    // Every detached start of the program goes through here.
    static bool startDetached(const QString& program, const QStringList& arguments);

    // A box with text and title (Latin-1) in the style numbering of the
    // suite: 0 a plain box with OK. Returns the button pressed.
    static int messageBox(const std::string& text, const std::string& title, unsigned style);
};
