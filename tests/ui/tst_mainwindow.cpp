#include "ActionPage.h"
#include "OnlineUpdate.h"
#include "PixmapManager.h"
#include "SelectionButton.h"
#include "StartCenter.h"
#include "TestMain.h"
#include "UiSettings.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFontMetrics>
#include <QLabel>
#include <QMenu>
#include <QRegularExpression>
#include <QTest>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>

#include <memory>
#include <set>

#ifndef SC_DEMO_ORV
#error "SC_DEMO_ORV must name the built demo tax program"
#endif

namespace {

constexpr int processTimeoutMs = 20000;

const char* const modeNames[] = {"normal", "vorweg", "ermaess", "einur", "einurvor", "fest"};
const char* const buttonNames[] = {"BtnNormal", "BtnVorweg", "BtnErmaess", "BtnEinur", "BtnEinurVor", "BtnFest"};
const char* const pageNames[] = {"pageNormal", "pageVorweg", "pageErmaess", "pageEinur", "pageEinurVor", "pageFest"};

const QString brokenInstallation = QStringLiteral(
    "Fehlerhafte Installation|Ihre Installation ist fehlerhaft!\n\nDie Orvane-Erklärung kann nicht gestartet "
    "werden.\nInstallieren Sie das Programm erneut.");

SelectionButton* modeButton(const StartCenter& window, int mode)
{
    return window.findChild<SelectionButton*>(QLatin1String(buttonNames[mode]));
}

ActionPage* modePage(const StartCenter& window, int mode)
{
    return window.findChild<ActionPage*>(QLatin1String(pageNames[mode]));
}

int checkedMode(const StartCenter& window)
{
    int checked = -1;
    for (int mode = 0; mode < 6; ++mode) {
        if (modeButton(window, mode)->isChecked()) {
            if (checked != -1)
                return -2;   // more than one
            checked = mode;
        }
    }
    return checked;
}

std::string currentModus()
{
    return cNvWinIni::theInstance()->getModus();
}

QStringList objectNames(const QList<QAction*>& actions)
{
    QStringList names;
    for (const QAction* action : actions)
        names << action->objectName();
    return names;
}

} // namespace

// The main window in a throw-away copy of the sample installation, with the
// demo tax program built by this project as the tax program (windowless).
class TestMainWindow : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void modeButtonsSwitchSettingsAndSlideThePage();
    void missingModeFileIsReportedAndTheModeKept();
    void selectionButtonLayoutAndHover();
    void restoredModeAndSavingAtExit_data();
    void restoredModeAndSavingAtExit();
    void editionAndProductCodeDecideTheToolBar_data();
    void editionAndProductCodeDecideTheToolBar();
    void toolTipsComeFromTheHelpTexts();
    void activationTokenTravelsAsLastArgument();

    void argumentListsOfTheStartSlots();
    void brokenInstallationIsReportedAndNothingHides();
    void onStartBehaviour();
    void launcherComesBackOnlyAfterTheLastProgramEnds();
    void launcherComesBackAfterACrash();
    void newCaseFileIsRecommendedAfterTheTaxProgramSavedIt();

private:
    std::unique_ptr<StartCenter> shownWindow();
    void setEnv(const char* name, const QByteArray& value);
    // Sets the value of the first line "key=..." of the installation's main
    // configuration file and opens the settings again.
    bool configure(const char* key, const QByteArray& value);
    // A setting of the user, as the options dialog writes it.
    static bool setUserSetting(const char* key, const char* value);
    void openSettings();
    QList<QStringList> loggedStarts() const;
    QString orvPath() const;

    std::unique_ptr<TempInstallation> m_install;
    std::unique_ptr<MessageBoxRecorder> m_boxes;
    std::set<QByteArray> m_environment;
};

void TestMainWindow::init()
{
    m_install = std::make_unique<TempInstallation>();
    QVERIFY(m_install->copyDemoResources());
    QVERIFY(QDir().mkpath(QFileInfo(orvPath()).path()));
    QVERIFY(QFile::copy(QStringLiteral(SC_DEMO_ORV), orvPath()));
    setEnv("ORV_DEMO_HEADLESS", "1");
    setEnv("ORV_DEMO_ARGS_LOG", (m_install->root() + QStringLiteral("/arguments.log")).toLocal8Bit());
    openSettings();
    m_boxes = std::make_unique<MessageBoxRecorder>();
}

void TestMainWindow::cleanup()
{
    QVERIFY2(m_boxes->boxes.isEmpty(), qPrintable(m_boxes->boxes.join(QLatin1Char('\n'))));
    m_boxes.reset();
    OnlineUpdate::resetInstance();
    PixmapManager::resetInstance();
    resetSettingsSingletons();
    for (const QByteArray& name : m_environment)
        qunsetenv(name.constData());
    m_environment.clear();
    m_install.reset();
}

QString TestMainWindow::orvPath() const
{
    return m_install->resourcesDir() + QStringLiteral("ORV.app/Contents/MacOS/ORV");
}

void TestMainWindow::setEnv(const char* name, const QByteArray& value)
{
    m_environment.insert(name);
    qputenv(name, value);
}

// The settings come up as the launcher's start-up brings them up.
void TestMainWindow::openSettings()
{
    OnlineUpdate::resetInstance();
    PixmapManager::resetInstance();
    resetSettingsSingletons();
    const std::string globalIni = cApplicationInfo::theInstance()->getFilenameInAppDir(cszNvWinIniName);
    FolderManager::theInstance()->parseSection(globalIni, "DirectorySymbols");
    FolderManager::theInstance()->parseSection(globalIni, "DirectoryDefs");
    cNvWinIni::theInstance()->enableCache(false);
    QVERIFY(cNvWinIni::theInstance()->setGlobalIniName(cszNvWinIniName));
    cNvWinIni::theInstance()->setModus("normal");
}

bool TestMainWindow::configure(const char* key, const QByteArray& value)
{
    QString content = QString::fromLatin1(m_install->readFile(m_install->resourcesDir() + QStringLiteral("ORVKonf.ini")));
    const QRegularExpression line(QStringLiteral("^%1=[^\\r\\n]*").arg(QLatin1String(key)),
                                  QRegularExpression::MultilineOption);
    if (!content.contains(line))
        return false;
    content.replace(line, QLatin1String(key) + QLatin1Char('=') + QString::fromLatin1(value));
    if (!m_install->writeResource(QStringLiteral("ORVKonf.ini"), content.toLatin1()))
        return false;
    openSettings();
    return true;
}

bool TestMainWindow::setUserSetting(const char* key, const char* value)
{
    return cNvWinIni::theInstance()->WriteString("StartCenter", key, value);
}

std::unique_ptr<StartCenter> TestMainWindow::shownWindow()
{
    auto window = std::make_unique<StartCenter>(nullptr, Qt::WindowFlags());
    window->show();
    if (!QTest::qWaitForWindowExposed(window.get()))
        return nullptr;
    return window;
}

QList<QStringList> TestMainWindow::loggedStarts() const
{
    QList<QStringList> starts;
    const QString log = QString::fromUtf8(m_install->readFile(m_install->root() + QStringLiteral("/arguments.log")));
    for (const QString& line : log.split(QLatin1Char('\n'), Qt::SkipEmptyParts))
        starts << line.split(QLatin1Char('\t'));
    return starts;
}

void TestMainWindow::modeButtonsSwitchSettingsAndSlideThePage()
{
    const auto window = shownWindow();
    QVERIFY(window);
    QCOMPARE(checkedMode(*window), 0);
    QCOMPARE(currentModus(), std::string("normal"));
    const QRect visible(0, 0, modePage(*window, 0)->width(), modePage(*window, 0)->height());
    QTRY_COMPARE(modePage(*window, 0)->geometry(), visible);

    for (int mode : {3, 5, 1, 2, 4, 0}) {
        QTest::mouseClick(modeButton(*window, mode), Qt::LeftButton);
        QCOMPARE(checkedMode(*window), mode);
        QCOMPARE(currentModus(), std::string(modeNames[mode]));
        // Every mode brings its own parameter for the tax program.
        QCOMPARE(cConfiguration::theInstance()->GetString("ModusEinstellungen", "Parameter", ""),
                 std::string("-mode=") + modeNames[mode]);
    }

    // The chosen page slides up into view, the page left slides back down.
    QTest::mouseClick(modeButton(*window, 4), Qt::LeftButton);
    QTRY_COMPARE(modePage(*window, 4)->geometry(), visible);
    for (int mode : {0, 1, 2, 3, 5})
        QTRY_VERIFY(modePage(*window, mode)->y() >= visible.height());
}

void TestMainWindow::missingModeFileIsReportedAndTheModeKept()
{
    // A mode that the installation does not configure.
    QVERIFY(configure("fest", ""));
    const auto window = shownWindow();
    QVERIFY(window);
    window->buttonEinurClicked();

    QTest::mouseClick(modeButton(*window, 5), Qt::LeftButton);
    QCOMPARE(m_boxes->boxes.size(), 1);
    QVERIFY2(m_boxes->boxes.first().startsWith(QStringLiteral("Fehler|")), qPrintable(m_boxes->boxes.first()));
    m_boxes->boxes.clear();
    QCOMPARE(checkedMode(*window), 3);
    QCOMPARE(currentModus(), std::string("einur"));
}

void TestMainWindow::selectionButtonLayoutAndHover()
{
    SelectionButton button;
    button.setText(QStringLiteral("Gewinnermittlung 2011"));
    button.setSubText(QStringLiteral("Umsatz-/Gewerbesteuer"));
    button.resize(280, 62);
    button.show();
    const QRect caption = button.textRect();
    const QRect subCaption = button.subTextRect();
    QVERIFY(caption.left() >= SelectionButton::IconSize);
    QVERIFY(subCaption.top() > caption.bottom());
    QVERIFY(button.rect().contains(caption.united(subCaption)));
    // Caption and sub-caption sit together in the middle of the height.
    QVERIFY(qAbs(caption.top() - (button.height() - 1 - subCaption.bottom())) <= 1);

    button.setFontSize(16);
    QVERIFY(button.textRect().height() > caption.height());
    button.setSubText(QString());
    QVERIFY(button.subTextRect().isNull());

    QEvent enter(QEvent::Enter);
    QCoreApplication::sendEvent(&button, &enter);
    QVERIFY(button.isHovered());
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(&button, &leave);
    QVERIFY(!button.isHovered());
}

void TestMainWindow::restoredModeAndSavingAtExit_data()
{
    QTest::addColumn<QByteArray>("restore");
    QTest::addColumn<QByteArray>("stored");
    QTest::addColumn<int>("startMode");
    QTest::addColumn<QByteArray>("savedAfterChoosingFest");

    QTest::newRow("restored") << QByteArray("1") << QByteArray("3") << 3 << QByteArray("5");
    QTest::newRow("last mode") << QByteArray("1") << QByteArray("5") << 5 << QByteArray("5");
    QTest::newRow("7 is no mode") << QByteArray("1") << QByteArray("7") << 0 << QByteArray("5");
    QTest::newRow("-1 is no mode") << QByteArray("1") << QByteArray("-1") << 0 << QByteArray("5");
    QTest::newRow("not restored, not saved") << QByteArray("0") << QByteArray("4") << 0 << QByteArray("4");
}

void TestMainWindow::restoredModeAndSavingAtExit()
{
    QFETCH(QByteArray, restore);
    QFETCH(QByteArray, stored);
    QFETCH(int, startMode);
    QFETCH(QByteArray, savedAfterChoosingFest);

    QVERIFY(setUserSetting("RestoreModus", restore.constData()));
    QVERIFY(setUserSetting("Modus", stored.constData()));
    {
        const auto window = shownWindow();
        QVERIFY(window);
        QCOMPARE(checkedMode(*window), startMode);
        QCOMPARE(currentModus(), std::string(modeNames[startMode]));
        window->buttonFestClicked();
    }
    QCOMPARE(QByteArray(cNvWinIni::theInstance()->GetString("StartCenter", "Modus", "").c_str()),
             savedAfterChoosingFest);
}

void TestMainWindow::editionAndProductCodeDecideTheToolBar_data()
{
    QTest::addColumn<QByteArray>("edition");
    QTest::addColumn<QByteArray>("productCode");
    QTest::addColumn<QStringList>("toolBar");
    QTest::addColumn<QStringList>("supportMenu");

    const QStringList common{QStringLiteral("actionHandbuch"), QStringLiteral("actionSupport"),
                             QStringLiteral("actionOnlineUpdate"), QStringLiteral("actionOptionen")};
    const QStringList support{QStringLiteral("actionNetViewet"), QStringLiteral("actionProgFolder"),
                              QStringLiteral("actionTaxFolder")};
    const QStringList withUninstall = support + QStringList{QStringLiteral("actionUninstall")};
    const QByteArray code("ORV-2012-DE-1765");

    QTest::newRow("ORV") << QByteArray("ORV") << code << QStringList{QStringLiteral("actionKursel")} + common
                         << withUninstall;
    QTest::newRow("ORVPlus") << QByteArray("ORVPlus") << code
                             << QStringList{QStringLiteral("actionBeraterPlus")} + common << withUninstall;
    QTest::newRow("ORVBusiness") << QByteArray("ORVBusiness") << code
                                 << QStringList{QStringLiteral("actionBerater")} + common << withUninstall;
    QTest::newRow("ORVLehrer") << QByteArray("ORVLehrer") << code
                               << QStringList{QStringLiteral("actionBeraterPlus")} + common << withUninstall;
    QTest::newRow("ORVVermieter") << QByteArray("ORVVermieter") << code << common << withUninstall;
    QTest::newRow("unknown edition, no product code")
        << QByteArray("ORVUnbekannt") << QByteArray() << QStringList{QStringLiteral("actionKursel")} + common
        << support;
}

void TestMainWindow::editionAndProductCodeDecideTheToolBar()
{
    QFETCH(QByteArray, edition);
    QFETCH(QByteArray, productCode);
    QFETCH(QStringList, toolBar);
    QFETCH(QStringList, supportMenu);

    QVERIFY(configure("ProductSubType", edition));
    QVERIFY(configure("ProductCode", productCode));
    const auto window = shownWindow();
    QVERIFY(window);

    auto* bar = window->findChild<QToolBar*>(QStringLiteral("toolBar"));
    QVERIFY(bar);
    QCOMPARE(window->toolBarArea(bar), Qt::BottomToolBarArea);
    QCOMPARE(objectNames(bar->actions()), toolBar);
    auto* supportAction = window->findChild<QAction*>(QStringLiteral("actionSupport"));
    QCOMPARE(objectNames(supportAction->menu()->actions()), supportMenu);
    auto* supportButton = qobject_cast<QToolButton*>(bar->widgetForAction(supportAction));
    QCOMPARE(supportButton->popupMode(), QToolButton::InstantPopup);

    // No update program in this installation: its action is out of reach.
    auto* onlineUpdate = window->findChild<QAction*>(QStringLiteral("actionOnlineUpdate"));
    QVERIFY(!onlineUpdate->isVisible());
    QVERIFY(!onlineUpdate->isEnabled());

    // Every action exists under its name, the report action in no bar or menu.
    for (const char* name : {"actionBeraterPlus", "actionBerater", "actionKursel", "actionHandbuch", "actionSupport",
                             "actionOnlineUpdate", "actionOptionen", "actionReport", "actionNetViewet",
                             "actionProgFolder", "actionTaxFolder", "actionUninstall", "actionOnlineStart",
                             "actionOnlineConfig"})
        QVERIFY2(window->findChild<QAction*>(QLatin1String(name)), name);
    QVERIFY(window->findChild<QAction*>(QStringLiteral("actionReport"))->associatedObjects().isEmpty());
}

void TestMainWindow::toolTipsComeFromTheHelpTexts()
{
    const auto window = shownWindow();
    QVERIFY(window);
    QCOMPARE(modeButton(*window, 3)->toolTip(),
             QString::fromLatin1(cNvWinIni::theInstance()->GetString("StartCenter.HelpText", "einur", "").c_str()));
    QCOMPARE(modeButton(*window, 3)->text(), QStringLiteral("Gewinnermittlung 2011"));
    QCOMPARE(modeButton(*window, 3)->subText(), QStringLiteral("Umsatz-/Gewerbesteuer"));

    // Action tips are wrapped to 210 pixels in the window font.
    const QString options = window->findChild<QAction*>(QStringLiteral("actionOptionen"))->toolTip();
    const QString help = QString::fromLatin1(
        cNvWinIni::theInstance()->GetString("StartCenter.HelpText", "Konfiguration", "").c_str());
    QVERIFY(options.count(QLatin1Char('\n')) >= 2);
    QCOMPARE(QString(options).replace(QLatin1Char('\n'), QLatin1Char(' ')).remove(QLatin1Char(' ')),
             QString(help).remove(QLatin1Char(' ')));
    const QFontMetrics metrics(window->font());
    for (const QString& line : options.split(QLatin1Char('\n')))
        QVERIFY2(metrics.horizontalAdvance(line) <= 210, qPrintable(line));
    // The companion web service's tip is keyed by its domain.
    QVERIFY(!window->findChild<QAction*>(QStringLiteral("actionBerater"))->toolTip().isEmpty());
}

void TestMainWindow::activationTokenTravelsAsLastArgument()
{
    const QStringList command{QStringLiteral("Start-Center"), QStringLiteral("--x")};
    qunsetenv("XDG_ACTIVATION_TOKEN");
    QCOMPARE(StartCenter::guardArguments(command), command);

    setEnv("XDG_ACTIVATION_TOKEN", "token-123");
    QStringList registered = StartCenter::guardArguments(command);
    QCOMPARE(registered.size(), command.size() + 1);
    QCOMPARE(StartCenter::takeActivationToken(registered), QStringLiteral("token-123"));
    QCOMPARE(registered, command);

    // Only the last argument can carry the token.
    QStringList tokenFirst = StartCenter::guardArguments({}) + QStringList{QStringLiteral("--x")};
    QCOMPARE(StartCenter::takeActivationToken(tokenFirst), QString());
    QCOMPARE(tokenFirst.size(), 2);
}

void TestMainWindow::argumentListsOfTheStartSlots()
{
    QVERIFY(setUserSetting("OnORVStart", "NoChange"));
    // A test harness prefix without its preload program: started directly.
    setEnv("SQUISH_PREFIX", m_install->root().toLocal8Bit() + "/squish");
    const auto window = shownWindow();
    QVERIFY(window);
    const QString file = m_install->home() + QStringLiteral("/Documents/Fall 2011.est11");

    const auto startAndWait = [&](const std::function<void()>& start) {
        start();
        QTRY_COMPARE_WITH_TIMEOUT(window->runningCount(), 0, processTimeoutMs);
    };
    startAndWait([&] { window->startORV(); });
    startAndWait([&] { window->startORV(file); });
    startAndWait([&] { window->startConvert(); });
    startAndWait([&] { window->startConvert(file); });
    window->buttonEinurClicked();
    startAndWait([&] { QTest::mouseDClick(modeButton(*window, 3), Qt::LeftButton); });

    const QList<QStringList> expected{
        {QStringLiteral("-mode=normal"), QStringLiteral("-n")},
        {QStringLiteral("-mode=normal"), file},
        {QStringLiteral("-mode=normal"), QStringLiteral("-c")},
        {QStringLiteral("-mode=normal"), QStringLiteral("-c"), file},
        {QStringLiteral("-mode=einur"), QStringLiteral("-n")},
    };
    QCOMPARE(loggedStarts(), expected);
    QVERIFY(window->isVisible());
}

void TestMainWindow::brokenInstallationIsReportedAndNothingHides()
{
    const auto window = shownWindow();
    QVERIFY(window);

    // Not executable, then missing: the same box, the window stays.
    QVERIFY(QFile::setPermissions(orvPath(), QFile::ReadOwner | QFile::WriteOwner));
    QVERIFY(!window->startORVWithParam({QStringLiteral("-n")}));
    QVERIFY(QFile::remove(orvPath()));
    QVERIFY(!window->startORVWithParam({QStringLiteral("-n")}));
    QVERIFY(configure("ORVExecutable", ""));
    QVERIFY(!window->startORVWithParam({QStringLiteral("-n")}));

    QCOMPARE(m_boxes->boxes, QStringList(3, brokenInstallation));
    m_boxes->boxes.clear();
    QCOMPARE(window->runningCount(), 0);
    QVERIFY(window->isVisible());
    QVERIFY(loggedStarts().isEmpty());
}

void TestMainWindow::onStartBehaviour()
{
    const auto window = shownWindow();
    QVERIFY(window);
    setEnv("ORV_DEMO_DELAY_MS", "300");

    // "Terminate" ends the launcher's event loop with 0; the program still runs.
    QVERIFY(setUserSetting("OnORVStart", "Terminate"));
    bool started = false;
    QTimer::singleShot(0, window.get(), [&] { started = window->startORVWithParam({QStringLiteral("-n")}); });
    QTimer timeout;
    timeout.callOnTimeout([] { QCoreApplication::exit(1); });
    timeout.start(processTimeoutMs);
    QCOMPARE(QCoreApplication::exec(), 0);
    QVERIFY(started);
    QCOMPARE(window->runningCount(), 1);
    QVERIFY(window->isVisible());
    QTRY_COMPARE_WITH_TIMEOUT(window->runningCount(), 0, processTimeoutMs);

    // Any text but "Minimize" and "Terminate" leaves the window as it is.
    QVERIFY(setUserSetting("OnORVStart", "Irgendwas"));
    QVERIFY(window->startORVWithParam({QStringLiteral("-n")}));
    QVERIFY(window->isVisible());
    QTRY_COMPARE_WITH_TIMEOUT(window->runningCount(), 0, processTimeoutMs);
    QVERIFY(window->isVisible());
}

void TestMainWindow::launcherComesBackOnlyAfterTheLastProgramEnds()
{
    const auto window = shownWindow();
    QVERIFY(window);
    window->showMinimized();

    setEnv("ORV_DEMO_DELAY_MS", "2500");
    QVERIFY(window->startORVWithParam({QStringLiteral("-n")}));
    QVERIFY(!window->isVisible());
    setEnv("ORV_DEMO_DELAY_MS", "200");
    setEnv("ORV_DEMO_EXIT_CODE", "3");
    QVERIFY(window->startORVWithParam({QStringLiteral("-n")}));
    QCOMPARE(window->runningCount(), 2);

    QTRY_COMPARE_WITH_TIMEOUT(window->runningCount(), 1, processTimeoutMs);
    QVERIFY(!window->isVisible());
    QTRY_COMPARE_WITH_TIMEOUT(window->runningCount(), 0, processTimeoutMs);
    QVERIFY(window->isVisible());
    QVERIFY(!window->isMinimized());
}

void TestMainWindow::launcherComesBackAfterACrash()
{
    const auto window = shownWindow();
    QVERIFY(window);
    setEnv("ORV_DEMO_CRASH", "1");
    setEnv("ORV_DEMO_DELAY_MS", "200");
    QVERIFY(window->startORVWithParam({QStringLiteral("-n")}));
    QVERIFY(!window->isVisible());
    QTRY_COMPARE_WITH_TIMEOUT(window->runningCount(), 0, processTimeoutMs);
    QVERIFY(window->isVisible());
}

// The launcher's whole round trip: recommend, start, hide, save, come back,
// recommend what was saved.
void TestMainWindow::newCaseFileIsRecommendedAfterTheTaxProgramSavedIt()
{
    // Saved a second later than anything the launcher read: settings files
    // are re-read when their time in seconds has moved on.
    setEnv("ORV_DEMO_DELAY_MS", "1100");
    setEnv("ORV_DEMO_PERSON", "Erika Musterfrau");
    const auto window = shownWindow();
    QVERIFY(window);
    ActionPage* page = modePage(*window, 0);
    QCOMPARE(page->recommendedAction(), ActionPage::ActionNew);

    QTest::mouseClick(page->actionButton(page->recommendedAction()), Qt::LeftButton);
    QCOMPARE(window->runningCount(), 1);
    QVERIFY(!window->isVisible());

    QTRY_VERIFY_WITH_TIMEOUT(window->isVisible(), processTimeoutMs);
    QCOMPARE(window->runningCount(), 0);
    const QList<QStringList> started{{QStringLiteral("-mode=normal"), QStringLiteral("-n")}};
    QCOMPARE(loggedStarts(), started);

    const QString saved = QString::fromLatin1(cNvWinIni::theInstance()->getHomeDataPath().c_str())
        + QStringLiteral("/Erika Musterfrau 2011.est11");
    QCOMPARE(QFileInfo(page->getLastFilePath()).canonicalFilePath(), QFileInfo(saved).canonicalFilePath());
    QCOMPARE(page->recommendedAction(), ActionPage::ActionLast);
    bool named = false;
    for (const QLabel* label : page->findChildren<QLabel*>())
        named = named || label->text().contains(QStringLiteral("Erika Musterfrau 2011.est11"));
    QVERIFY(named);
    const QByteArray content = m_install->readFile(saved);
    QVERIFY(content.contains("<Person>Erika Musterfrau</Person>"));
    QVERIFY(content.contains("Modus=\"normal\" Steuerjahr=\"2011\""));
}

SC_TEST(TestMainWindow)
#include "tst_mainwindow.moc"
