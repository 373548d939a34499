#pragma once

#include "KDSingleApplicationGuard.h"
#include "Ui_MainWindow.h"

#include <QMainWindow>
#include <QProcess>
#include <QStringList>
#include <QThreadPool>
#include <QTimer>

#include <functional>
#include <map>

class CommandLine;

// The launcher's main window: six mode buttons, one page per mode, a header
// picture and a tool bar. Choosing a mode switches the layered settings to
// that mode; the pages' actions start the tax program.
//
// The slots are implemented by topic:
//   StartCenter.cpp            window, modes, options, activation
//   StartCenterLaunch.cpp      starting and watching the tax program
//   StartCenterOpen.cpp        case files from outside: command line, later starts, drag and drop
//   StartCenterUpdate.cpp      online update
//   StartCenterCompanions.cpp  manual, help, web pages, folders, support tools, advisors
//   StartCenterUninstall.cpp   removing the installation
class StartCenter : public QMainWindow
{
    Q_OBJECT

public:
    explicit StartCenter(QWidget* parent = nullptr, Qt::WindowFlags flags = {});
    ~StartCenter() override;

    void initVersionMap();
    // The edition number of "Application"/"ProductSubType"; an unknown name
    // is added to the map as edition 0.
    int getVersionType();

    // Starts the tax program with the mode parameter followed by params;
    // true when it started.
    bool startORVWithParam(const QStringList& params);
    // Tax programs started and not yet finished.
    int runningCount() const { return m_runningCount; }

    // The internal names of the modes, in the order of the mode buttons: the
    // modes the command line's --new accepts.
    static QStringList modeNames();
    // Does what a command line asks of the running launcher, at its first
    // start and when a later start hands over: a new case of a mode, then
    // the files.
    void followCommandLine(const CommandLine& commandLine);
    // Opens case files from outside the launcher: each in the mode that
    // claims it, as "open another case file" does. Files that cannot be
    // opened are named in one box; so are files beyond a flood, of which only
    // the first is opened, and files lost on the way (incomplete).
    void openCaseFiles(const QStringList& files, bool incomplete = false);

    // Breaks text into lines no wider than width pixels in font, joined with
    // "<br>" when html is set, otherwise with line feeds.
    static QString doWordWrap(const QString& text, int width, const QFont& font, bool html);

    // The argument list a start registers with the single-instance guard:
    // the command line, followed by the desktop's activation token when this
    // process got one (XDG_ACTIVATION_TOKEN, Wayland), so that the running
    // instance may take the focus on its behalf.
    static QStringList guardArguments(const QStringList& arguments);
    // Removes the activation token added by guardArguments from arguments
    // and returns it; empty when there is none.
    static QString takeActivationToken(QStringList& arguments);

    // The information database (advisor plus).
    bool startInfoMan(const QString& params);
    QString infoManPath() const;
    bool isInfoManInstalled() const;

    // Plays the start sound file; the sound may live as a child of owner.
    // The default loads the sound module beside the launcher. Replaceable, so
    // that tests see when and what would play; returns the previous player.
    using StartSoundPlayer = std::function<void(const QString& path, QObject* owner)>;
    static StartSoundPlayer setStartSoundPlayer(StartSoundPlayer player);

    // Asks whether to install the newer version now; ends the launcher when
    // the update is started.
    void askStartOnlineUpdate();

public slots:
    void openBeraterPlus();
    void openBeraterNebenk();
    void openBerater();
    void openTaxbook();
    void openManual();
    void showOptions();
    void startReportTool();
    void startNetViewer();
    void openProgramFolder();
    void openTaxFolder();
    void startUninstall();
    void startOnlineUpdate();
    bool showOnlineConfiguration();
    void setNormal() {}
    void setVorweg() {}
    void setErmaess() {}
    void setEinur() {}
    void setEinurVor() {}
    void setFest() {}
    void buttonNormalClicked();
    void buttonVorwegClicked();
    void buttonErmaessClicked();
    void buttonEinurClicked();
    void buttonEinurVorClicked();
    void buttonFestClicked();
    void startORV();
    void startORV(const QString& file);
    void startConvert();
    void startConvert(const QString& file);
    void orvFinished(int exitCode, QProcess::ExitStatus exitStatus);
    void activateMainWindow();
    // Another start of the launcher: takes over its activation token, then
    // activateMainWindow(), then follows its command line.
    void activateForInstance(const KDSingleApplicationGuard::Instance& instance);
    void openInfoManLink(const QString& link);
    void showMarvendo();
    void checkUpdateResult();

protected:
    // Enter presses the focused button as Space does: outside dialogs Qt's
    // buttons leave Enter to their window.
    void keyPressEvent(QKeyEvent* event) override;
    // Case files dropped on the window open as from the command line;
    // anything else is refused, so the drag shows the forbidden cursor.
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    // Adds a file the tax program was started with to the desktop's list of
    // recently used files, off the UI thread.
    void addToRecentFiles(const QString& file);
    // The work of the six click handlers.
    void chooseMode(int mode);
    void playStartSound();

    std::map<QString, int> m_versionMap;
    quint16 m_mode = 0;
    Ui_MainWindow m_ui;
    int m_runningCount = 0;
    QTimer m_updateTimer;
    // One writer for the recently used list; waits for it when the window goes.
    QThreadPool m_recentFilesWriter;
    bool m_dragAccepted = false;
};
