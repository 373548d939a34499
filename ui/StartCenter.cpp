#include "StartCenter.h"

#include "ActionPage.h"
#include "ApplicationInfo.h"
#include "CommandLine.h"
#include "ConfigText.h"
#include "Configuration.h"
#include "CrossPlatformApi.h"
#include "Exceptions.h"
#include "FirstPaint.h"
#include "NvWinIni.h"
#include "OnlineUpdate.h"
#include "OptionsDialog.h"
#include "SelectionButton.h"
#include "UiLogging.h"
#include "WordWrap.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QProcess>
#include <QScreen>

#include <iterator>
#include <utility>

namespace {

constexpr int updatePollIntervalMs = 500;
const QString activationTokenPrefix = QStringLiteral("--xdg-activation-token=");

int settingInt(const char* section, const char* key, int defaultValue)
{
    return cConfiguration::theInstance()->GetInt(section, key, defaultValue);
}

// The wait cursor for the lifetime of the object.
class WaitCursor
{
public:
    WaitCursor() { QGuiApplication::setOverrideCursor(Qt::WaitCursor); }
    ~WaitCursor() { QGuiApplication::restoreOverrideCursor(); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;
};

// Switches the layered settings to the mode; a mode that the installation
// does not configure is reported and leaves the previous mode in place.
bool switchSettingsTo(int mode, QWidget* parent)
{
    try {
        cNvWinIni::theInstance()->setModus(Ui_MainWindow::modeName(mode));
        return true;
    } catch (const xNvException& error) {
        MessageBoxRequest box;
        box.icon = QMessageBox::Critical;
        box.title = QStringLiteral("Fehler");
        box.text = QString::fromLatin1(error.what());
        box.parent = parent;
        CrossPlatformApi::showMessageBox(box);
        return false;
    }
}

// Plays through the sound program beside the launcher (sound/StartSound.cpp).
// The program is a child of owner: it ends when owner goes, and so does the
// sound. Why a sound stayed silent is told on startcenter.sound.
void playThroughSoundProgram(const QString& path, QObject* owner)
{
    static const char* const reasons[] = {"played", "wrong arguments", "no sound server",
                                          "no playable WAVE file", "the sound server refused the sound"};
    auto* program = new QProcess(owner);
    program->setProgram(QCoreApplication::applicationDirPath() + QStringLiteral("/startsound"));
    program->setArguments({path});
    program->setStandardOutputFile(QProcess::nullDevice());
    program->setStandardErrorFile(QProcess::nullDevice());
    QObject::connect(program, &QProcess::finished, program, [program, path](int status, QProcess::ExitStatus exit) {
        if (exit == QProcess::NormalExit && status > 0 && status < int(std::size(reasons)))
            qCDebug(lcSound) << "start sound left out:" << reasons[status] << path;
        program->deleteLater();
    });
    QObject::connect(program, &QProcess::errorOccurred, program, [program](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            qCDebug(lcSound) << "the sound program did not start:" << program->errorString();
            program->deleteLater();
        }
    });
    program->start();
}

StartCenter::StartSoundPlayer& startSoundPlayer()
{
    static StartCenter::StartSoundPlayer player = playThroughSoundProgram;
    return player;
}

} // namespace

StartCenter::StartCenter(QWidget* parent, Qt::WindowFlags flags)
    : QMainWindow(parent, flags)
{
    switchSettingsTo(Ui_MainWindow::ModeNormal, nullptr);

    OnlineUpdate* onlineUpdate = OnlineUpdate::theInstance();
    if (onlineUpdate->needAutoVersionCheck()) {
        onlineUpdate->startBackgroundCheck(0);
        connect(&m_updateTimer, &QTimer::timeout, this, &StartCenter::checkUpdateResult);
        m_updateTimer.start(updatePollIntervalMs);
    }

    initVersionMap();
    m_ui.setupUi(this, getVersionType());
    setAcceptDrops(true);
    m_recentFilesWriter.setMaxThreadCount(1);

    // Centred on the default screen; its origin is left out on purpose, as
    // the launcher has always placed itself.
    if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        const QRect area = screen->geometry();
        const QSize size = sizeHint();
        move((area.right() + 1 - size.width() - area.left()) / 2,
             (area.bottom() + 1 - size.height() - area.top()) / 2);
    }

    const quint16 mode = settingInt("StartCenter", "RestoreModus", 1) == 1
        ? quint16(settingInt("StartCenter", "Modus", 0))
        : 0;
    switch (mode) {
    case Ui_MainWindow::ModeVorweg:
        buttonVorwegClicked();
        break;
    case Ui_MainWindow::ModeErmaess:
        buttonErmaessClicked();
        break;
    case Ui_MainWindow::ModeEinur:
        buttonEinurClicked();
        break;
    case Ui_MainWindow::ModeEinurVor:
        buttonEinurVorClicked();
        break;
    case Ui_MainWindow::ModeFest:
        buttonFestClicked();
        break;
    default:
        buttonNormalClicked();
        break;
    }

    playStartSound();
}

StartCenter::~StartCenter()
{
    if (settingInt("StartCenter", "RestoreModus", 1) == 1)
        cConfiguration::theInstance()->Write("StartCenter", "Modus", int(m_mode));
}

void StartCenter::initVersionMap()
{
    m_versionMap = {
        {QStringLiteral("ORV"), 0},         {QStringLiteral("ORVPlus"), 1},
        {QStringLiteral("ORVBusiness"), 2}, {QStringLiteral("ORVLehrer"), 3},
        {QStringLiteral("ORVWebSeller"), 4}, {QStringLiteral("ORVVermieter"), 5},
    };
}

int StartCenter::getVersionType()
{
    const QString edition = configText("Application", "ProductSubType", "ORV");
    return m_versionMap.emplace(edition, 0).first->second;
}

// The sound file is "Sounds"/"SoundDir" (relative to the application
// folder) followed directly by "Sounds"/"StartCenter". A missing file or a
// machine without sound output stays silent. The sound program starts only
// after the window's first frame, so the window never waits for it, and the
// sound system lives in that program, not in the launcher.
void StartCenter::playStartSound()
{
    if (settingInt("Sounds", "StartJingle", 1) != 1)
        return;
    QString folder = configText("Sounds", "SoundDir");
    const QString file = configText("Sounds", "StartCenter");
    if (folder.isEmpty() || file.isEmpty())
        return;
    if (QDir::isRelativePath(folder))
        folder.prepend(QString::fromLatin1(cApplicationInfo::theInstance()->getAppDir().c_str()));
    const QString path = folder + file;
    if (!QFileInfo(path).isFile())
        return;

    runAfterFirstPaint(this, [this, path] { startSoundPlayer()(path, this); });
}

StartCenter::StartSoundPlayer StartCenter::setStartSoundPlayer(StartSoundPlayer player)
{
    return std::exchange(startSoundPlayer(), std::move(player));
}

void StartCenter::chooseMode(int mode)
{
    const WaitCursor waitCursor;
    if (!switchSettingsTo(mode, this)) {
        m_ui.modeButton(m_mode)->setChecked(true);
        return;
    }
    m_mode = quint16(mode);
    m_ui.showMode(mode);
}

void StartCenter::buttonNormalClicked()
{
    chooseMode(Ui_MainWindow::ModeNormal);
}

void StartCenter::buttonVorwegClicked()
{
    chooseMode(Ui_MainWindow::ModeVorweg);
}

void StartCenter::buttonErmaessClicked()
{
    chooseMode(Ui_MainWindow::ModeErmaess);
}

void StartCenter::buttonEinurClicked()
{
    chooseMode(Ui_MainWindow::ModeEinur);
}

void StartCenter::buttonEinurVorClicked()
{
    chooseMode(Ui_MainWindow::ModeEinurVor);
}

void StartCenter::buttonFestClicked()
{
    chooseMode(Ui_MainWindow::ModeFest);
}

void StartCenter::keyPressEvent(QKeyEvent* event)
{
    const bool enter = (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
                       && !(event->modifiers() & ~Qt::KeypadModifier);
    auto* button = qobject_cast<QAbstractButton*>(focusWidget());
    if (enter && button && button->isEnabled()) {
        button->click();
        return;
    }
    QMainWindow::keyPressEvent(event);
}

void StartCenter::showOptions()
{
    OptionsDialog dialog(this, {});
    dialog.exec();
}

// A window hidden while the tax program runs comes back as well: the user
// asked for the launcher by starting it again.
void StartCenter::activateMainWindow()
{
    if (isMinimized() || isHidden())
        showNormal();
    raise();
    activateWindow();
    qCDebug(lcMainWindow) << "main window activated";
}

void StartCenter::activateForInstance(const KDSingleApplicationGuard::Instance& instance)
{
    QStringList arguments = instance.arguments();
    const QString token = takeActivationToken(arguments);
    // Qt's Wayland support takes the token from the environment when the
    // window asks to be activated.
    if (!token.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
    activateMainWindow();
    // The later start's request is followed once the guard's report is
    // over, so that a box cannot run inside it.
    const CommandLine commandLine = CommandLine::parse(arguments, modeNames(), instance.areArgumentsTruncated());
    QMetaObject::invokeMethod(this, [this, commandLine] { followCommandLine(commandLine); }, Qt::QueuedConnection);
}

QStringList StartCenter::guardArguments(const QStringList& arguments)
{
    const QString token = qEnvironmentVariable("XDG_ACTIVATION_TOKEN");
    if (token.isEmpty())
        return arguments;
    return QStringList(arguments) << activationTokenPrefix + token;
}

QString StartCenter::takeActivationToken(QStringList& arguments)
{
    if (arguments.isEmpty() || !arguments.constLast().startsWith(activationTokenPrefix))
        return QString();
    return arguments.takeLast().mid(activationTokenPrefix.size());
}

QString StartCenter::doWordWrap(const QString& text, int width, const QFont& font, bool html)
{
    return wordWrap(text, width, font, html);
}
