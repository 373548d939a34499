#include "OptionsDialog.h"

#include "ApplicationInfo.h"
#include "BundleInfo.h"
#include "Configuration.h"
#include "CrossPlatformApi.h"
#include "NvWinIni.h"
#include "VersionInfo.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QFrame>
#include <QLabel>
#include <QRadioButton>
#include <QVBoxLayout>

namespace {

const char sectSounds[] = "Sounds";
const char keyStartJingle[] = "StartJingle";
const char sectStartCenter[] = "StartCenter";
const char keyRestoreModus[] = "RestoreModus";
const char keyOnORVStart[] = "OnORVStart";
const char keyORVExecutable[] = "ORVExecutable";
const char sectStart[] = "Start";
const char keyVersionCheckEvery[] = "VersionCheckEvery";

const QString minimize = QStringLiteral("Minimize");
const QString terminate = QStringLiteral("Terminate");
const QString noChange = QStringLiteral("NoChange");

const char versionFile[] = "orv.vif";
const char fallbackBuild[] = "Build-17065";

cConfiguration* config()
{
    return cConfiguration::theInstance();
}

void writeSwitch(const char* section, const char* key, bool on)
{
    config()->Write(section, key, on ? 1 : 0);
}

QLabel* createHeading(const QString& text, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    QFont font = label->font();
    font.setBold(true);
    label->setFont(font);
    return label;
}

// The controls under a heading, indented so that the heading leads the group.
QVBoxLayout* addGroup(QVBoxLayout* parentLayout, QLabel* heading)
{
    parentLayout->addWidget(heading);
    auto* group = new QVBoxLayout;
    group->setContentsMargins(16, 2, 0, 0);
    group->setSpacing(4);
    parentLayout->addLayout(group);
    return group;
}

// Checks the button without reporting it, also when the check is taken away
// from every button of the exclusive group.
void setCheckedQuietly(QAbstractButton* button, bool checked)
{
    const QSignalBlocker blocker(button);
    const bool exclusive = button->autoExclusive();
    button->setAutoExclusive(false);
    button->setChecked(checked);
    button->setAutoExclusive(exclusive);
}

} // namespace

OptionsDialog::OptionsDialog(QWidget* parent, Qt::WindowFlags flags)
    : QDialog(parent, flags)
{
    setWindowTitle(QStringLiteral("Optionen"));
    createControls();
    loadValues();
    connectControls();
}

void OptionsDialog::createControls()
{
    m_pMainLayout = new QVBoxLayout(this);
    m_pMainLayout->setObjectName(QStringLiteral("m_pMainLayout"));
    m_pMainLayout->setSizeConstraint(QLayout::SetFixedSize);
    m_pMainLayout->setContentsMargins(18, 16, 18, 12);
    m_pMainLayout->setSpacing(6);
    m_pMainLayout->addStrut(300);   // wider than the texts need, so the buttons keep clear of the edge

    QVBoxLayout* start =
        addGroup(m_pMainLayout, createHeading(QStringLiteral("Beim Aufruf des Start-Centers"), this));
    m_pPlaySound = new QCheckBox(QStringLiteral("Sound abspielen"), this);
    m_pLastMode = new QCheckBox(QStringLiteral("zuletzt aktiven Modus auswählen"), this);
    m_pVersionCheck = new QCheckBox(QStringLiteral("Versionsprüfung durchführen"), this);
    start->addWidget(m_pPlaySound);
    start->addWidget(m_pLastMode);
    start->addWidget(m_pVersionCheck);

    m_pMainLayout->addSpacing(10);
    QLabel* onStartHeading =
        createHeading(QStringLiteral("Beim Start der Orvane-Erklärung<br>oder des Online-Updates"), this);
    onStartHeading->setTextFormat(Qt::RichText);
    QVBoxLayout* onStart = addGroup(m_pMainLayout, onStartHeading);
    m_pMinimizeSC = new QRadioButton(QStringLiteral("Start-Center verbergen"), this);
    m_pCloseSC = new QRadioButton(QStringLiteral("Start-Center beenden"), this);
    m_pNoChange = new QRadioButton(QStringLiteral("Start-Center nicht verändern"), this);
    onStart->addWidget(m_pMinimizeSC);
    onStart->addWidget(m_pCloseSC);
    onStart->addWidget(m_pNoChange);

    m_pMainLayout->addSpacing(10);
    auto* line = new QFrame(this);
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    m_pMainLayout->addWidget(line);

    m_pVersion = new QLabel(getVersionString(), this);
    m_pVersion->setObjectName(QStringLiteral("VersionText"));
    m_pVersion->setTextFormat(Qt::PlainText);
    m_pVersion->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_pVersion->setForegroundRole(QPalette::PlaceholderText);
    m_pMainLayout->addWidget(m_pVersion);

    m_pMainLayout->addSpacing(6);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &OptionsDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &OptionsDialog::reject);
    m_pMainLayout->addWidget(buttons);
}

void OptionsDialog::connectControls()
{
    connect(m_pPlaySound, &QCheckBox::toggled, this, &OptionsDialog::onPlaySoundToggled);
    connect(m_pLastMode, &QCheckBox::toggled, this, &OptionsDialog::onLastModeToggled);
    connect(m_pVersionCheck, &QCheckBox::toggled, this, &OptionsDialog::onVersionCheckToggled);
    connect(m_pMinimizeSC, &QRadioButton::toggled, this, &OptionsDialog::onMinimizeSCToggled);
    connect(m_pCloseSC, &QRadioButton::toggled, this, &OptionsDialog::onCloseSCToggled);
    connect(m_pNoChange, &QRadioButton::toggled, this, &OptionsDialog::onNoChangeToggled);
}

void OptionsDialog::loadValues()
{
    setCheckedQuietly(m_pPlaySound, config()->GetInt(sectSounds, keyStartJingle, 1) == 1);
    setCheckedQuietly(m_pLastMode, config()->GetInt(sectStartCenter, keyRestoreModus, 1) == 1);
    setCheckedQuietly(m_pVersionCheck, config()->GetInt(sectStart, keyVersionCheckEvery, 1) != 0);

    // The dialog proposes "Minimize" for a missing setting, although the
    // launcher itself then changes nothing: hiding is the behaviour offered
    // to the user first.
    const QString behaviour = QString::fromLatin1(
        config()->GetString(sectStartCenter, keyOnORVStart, minimize.toLatin1().constData()).c_str());
    setCheckedQuietly(m_pMinimizeSC, behaviour == minimize);
    setCheckedQuietly(m_pCloseSC, behaviour == terminate);
    setCheckedQuietly(m_pNoChange, behaviour == noChange);
}

void OptionsDialog::writeCloseBehaviour(const QString& behaviour)
{
    config()->Write(sectStartCenter, keyOnORVStart, behaviour.toLatin1().constData());
}

void OptionsDialog::accept()
{
    const cNvWinIni::BulkWrite oneWritePerFile(*cNvWinIni::theInstance());
    writeSwitch(sectSounds, keyStartJingle, m_pPlaySound->isChecked());
    writeSwitch(sectStartCenter, keyRestoreModus, m_pLastMode->isChecked());
    writeSwitch(sectStart, keyVersionCheckEvery, m_pVersionCheck->isChecked());
    if (m_pMinimizeSC->isChecked())
        writeCloseBehaviour(minimize);
    else if (m_pCloseSC->isChecked())
        writeCloseBehaviour(terminate);
    else
        writeCloseBehaviour(noChange);
    QDialog::accept();
}

void OptionsDialog::onPlaySoundToggled(bool checked)
{
    writeSwitch(sectSounds, keyStartJingle, checked);
}

void OptionsDialog::onLastModeToggled(bool checked)
{
    writeSwitch(sectStartCenter, keyRestoreModus, checked);
}

// Storing 1 means a version check at every start.
void OptionsDialog::onVersionCheckToggled(bool checked)
{
    writeSwitch(sectStart, keyVersionCheckEvery, checked);
}

void OptionsDialog::onMinimizeSCToggled(bool checked)
{
    if (checked)
        writeCloseBehaviour(minimize);
}

void OptionsDialog::onCloseSCToggled(bool checked)
{
    if (checked)
        writeCloseBehaviour(terminate);
}

void OptionsDialog::onNoChangeToggled(bool checked)
{
    if (checked)
        writeCloseBehaviour(noChange);
}

QString OptionsDialog::getVersionString() const
{
    const QString version = orvVersion();
    const QString build = QStringLiteral("Start-Center ") + launcherBuild();
    if (version.isEmpty())
        return build;
    return QString::asprintf("ORV Version %s", version.toUtf8().constData()) + QLatin1Char('\n') + build;
}

QString OptionsDialog::orvVersion()
{
    const cApplicationInfo* app = cApplicationInfo::theInstance();
    const std::string executable =
        app->getFilenameInAppDir(config()->GetString(sectStartCenter, keyORVExecutable, ""));

    // Version information is looked up in the bundle around the executable;
    // a tax program without a bundle of its own would report the launcher's.
    if (QFileInfo(CrossPlatformApi::toQString(executable)).isFile()
        && BundleInfo::forPath(executable).bundlePath() != mainBundlePath()) {
        const std::string version = VersionInfo(executable.c_str()).getProductVersion();
        if (!version.empty())
            return QString::fromLatin1(version.c_str());
    }
    const std::string fileVersion =
        CrossPlatformApi::getIniString("Version", "Version", "", app->getFilenameInAppDir(versionFile));
    return QString::fromLatin1(fileVersion.c_str());
}

QString OptionsDialog::launcherBuild()
{
    const std::string build = VersionInfo().getProductBuild();
    return QString::fromLatin1(build.empty() ? fallbackBuild : build.c_str());
}
