#include "ActionPage.h"
#include "CommandLine.h"
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
#include <QDragEnterEvent>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QRegularExpression>
#include <QTest>
#include <QTimer>
#include <QToolBar>
#include <QUrl>
#include <QToolButton>

#include <algorithm>
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

SelectionButton* modeButton(const StartCenter& window, int mode)
{
    return window.findChild<SelectionButton*>(QLatin1String(buttonNames[mode]));
}

ActionPage* modePage(const StartCenter& window, int mode)
{
    return window.findChild<ActionPage*>(QLatin1String(pageNames[mode]));
}

// The one checked mode button (-2 when several are checked, -1 for none).
int checkedMode(const StartCenter& window)
{
    int checked = -1;
    for (int mode = 0; mode < 6; ++mode)
        if (modeButton(window, mode)->isChecked())
            checked = checked == -1 ? mode : -2;
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

const QStringList startNew{QStringLiteral("-n")};

// An empty file at path, with its folders.
bool createFile(const QString& path)
{
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly);
}

} // namespace

// The main window in a throw-away copy of the sample installation, with the
// demo tax program built by this project as the tax program (windowless).
class TestMainWindow : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TempInstallation> m_install;
    std::unique_ptr<MessageBoxRecorder> m_boxes;
    std::set<QByteArray> m_environment;

    QString orvPath() const { return m_install->resourcesDir() + QStringLiteral("ORV.app/Contents/MacOS/ORV"); }

    void setEnv(const char* name, const QByteArray& value)
    {
        m_environment.insert(name);
        qputenv(name, value);
    }

    void openSettings()
    {
        OnlineUpdate::resetInstance();
        PixmapManager::resetInstance();
        QVERIFY(openInstalledSettings());
    }

    // Sets the value of the line "key=..." of the installation's main
    // configuration file and opens the settings again.
    bool configure(const char* key, const QByteArray& value)
    {
        QString content = QString::fromLatin1(m_install->readFile(m_install->resourcesDir() + "ORVKonf.ini"));
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

    // A setting of the user, as the options dialog writes it.
    static bool setUserSetting(const char* key, const char* value)
    {
        return cNvWinIni::theInstance()->WriteString("StartCenter", key, value);
    }

    static std::unique_ptr<StartCenter> shownWindow()
    {
        auto window = std::make_unique<StartCenter>(nullptr, Qt::WindowFlags());
        window->show();
        return QTest::qWaitForWindowExposed(window.get()) ? std::move(window) : nullptr;
    }

    // The arguments of every start of the demo tax program so far.
    QList<QStringList> loggedStarts() const
    {
        QList<QStringList> starts;
        const QString log = QString::fromUtf8(m_install->readFile(m_install->root() + "/arguments.log"));
        for (const QString& line : log.split(QLatin1Char('\n'), Qt::SkipEmptyParts))
            starts << line.split(QLatin1Char('\t'));
        return starts;
    }

private slots:
    void init()
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

    void cleanup()
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

    void modeButtonsSwitchSettingsAndSlideThePage()
    {
        QVERIFY(configure("fest", ""));   // a mode the installation does not configure
        const auto window = shownWindow();
        QVERIFY(window);
        QCOMPARE(checkedMode(*window), 0);
        QCOMPARE(currentModus(), std::string("normal"));
        const QRect visible(0, 0, modePage(*window, 0)->width(), modePage(*window, 0)->height());
        QTRY_COMPARE(modePage(*window, 0)->geometry(), visible);

        for (int mode : {3, 1, 2, 0, 4}) {
            QTest::mouseClick(modeButton(*window, mode), Qt::LeftButton);
            QCOMPARE(checkedMode(*window), mode);
            QCOMPARE(currentModus(), std::string(modeNames[mode]));
            // Every mode brings its own parameter for the tax program.
            QCOMPARE(cConfiguration::theInstance()->GetString("ModusEinstellungen", "Parameter", ""),
                     std::string("-mode=") + modeNames[mode]);
        }
        // The chosen page slides up into view, the page left slides back down.
        QTRY_COMPARE(modePage(*window, 4)->geometry(), visible);
        for (int mode : {0, 1, 2, 3, 5})
            QTRY_VERIFY(modePage(*window, mode)->y() >= visible.height());

        // The unconfigured mode is reported and the current one kept.
        QTest::mouseClick(modeButton(*window, 5), Qt::LeftButton);
        QCOMPARE(m_boxes->boxes.size(), 1);
        QVERIFY2(m_boxes->boxes.takeFirst().startsWith(QStringLiteral("Fehler|")), "box title");
        QCOMPARE(checkedMode(*window), 4);
        QCOMPARE(currentModus(), std::string("einurvor"));
    }

    void selectionButtonLayout()
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
        button.setSubText(QString());
        QVERIFY(button.subTextRect().isNull());
    }

    void restoredModeAndSavingAtExit_data()
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

    void restoredModeAndSavingAtExit()
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
        QCOMPARE(QByteArray::fromStdString(cNvWinIni::theInstance()->GetString("StartCenter", "Modus", "")),
                 savedAfterChoosingFest);
    }

    void editionAndProductCodeDecideTheToolBar_data()
    {
        QTest::addColumn<QByteArray>("edition");
        QTest::addColumn<QByteArray>("productCode");
        QTest::addColumn<QString>("firstAction");
        QTest::addColumn<bool>("uninstall");
        const QByteArray code("ORV-2012-DE-1765");
        QTest::newRow("ORV") << QByteArray("ORV") << code << QStringLiteral("actionKursel") << true;
        QTest::newRow("ORVPlus") << QByteArray("ORVPlus") << code << QStringLiteral("actionBeraterPlus") << true;
        QTest::newRow("ORVBusiness") << QByteArray("ORVBusiness") << code << QStringLiteral("actionBerater") << true;
        QTest::newRow("ORVLehrer") << QByteArray("ORVLehrer") << code << QStringLiteral("actionBeraterPlus") << true;
        QTest::newRow("ORVVermieter") << QByteArray("ORVVermieter") << code << QString() << true;
        QTest::newRow("unknown, no product code")
            << QByteArray("ORVUnbekannt") << QByteArray() << QStringLiteral("actionKursel") << false;
    }

    void editionAndProductCodeDecideTheToolBar()
    {
        QFETCH(QByteArray, edition);
        QFETCH(QByteArray, productCode);
        QFETCH(QString, firstAction);
        QFETCH(bool, uninstall);
        QVERIFY(configure("ProductSubType", edition));
        QVERIFY(configure("ProductCode", productCode));
        const auto window = shownWindow();
        QVERIFY(window);

        auto* bar = window->findChild<QToolBar*>(QStringLiteral("toolBar"));
        QCOMPARE(window->toolBarArea(bar), Qt::BottomToolBarArea);
        QStringList toolBar{QStringLiteral("actionHandbuch"), QStringLiteral("actionSupport"),
                            QStringLiteral("actionOnlineUpdate"), QStringLiteral("actionOptionen")};
        if (!firstAction.isEmpty())
            toolBar.prepend(firstAction);
        QCOMPARE(objectNames(bar->actions()), toolBar);
        QStringList supportMenu{QStringLiteral("actionNetViewet"), QStringLiteral("actionProgFolder"),
                                QStringLiteral("actionTaxFolder")};
        if (uninstall)
            supportMenu << QStringLiteral("actionUninstall");
        QCOMPARE(objectNames(window->findChild<QAction*>(QStringLiteral("actionSupport"))->menu()->actions()),
                 supportMenu);

        // No update program in this installation: its action is out of reach.
        auto* onlineUpdate = window->findChild<QAction*>(QStringLiteral("actionOnlineUpdate"));
        QVERIFY(!onlineUpdate->isVisible() && !onlineUpdate->isEnabled());
        // The report action exists, but in no bar or menu.
        auto* report = window->findChild<QAction*>(QStringLiteral("actionReport"));
        QVERIFY(report && report->associatedObjects().isEmpty());
    }

    void toolTipsComeFromTheHelpTexts()
    {
        const auto window = shownWindow();
        QVERIFY(window);
        const auto helpText = [](const char* key) {
            return fromLatin1(cNvWinIni::theInstance()->GetString("StartCenter.HelpText", key, ""));
        };
        QCOMPARE(modeButton(*window, 3)->toolTip(), helpText("einur"));

        // Action tips are wrapped to 210 pixels in the window font.
        const QString options = window->findChild<QAction*>(QStringLiteral("actionOptionen"))->toolTip();
        QCOMPARE(QString(options).remove(QLatin1Char('\n')).remove(QLatin1Char(' ')),
                 helpText("Konfiguration").remove(QLatin1Char(' ')));
        QVERIFY(options.count(QLatin1Char('\n')) >= 2);
        const QFontMetrics metrics(window->font());
        for (const QString& line : options.split(QLatin1Char('\n')))
            QVERIFY2(metrics.horizontalAdvance(line) <= 210, qPrintable(line));
        // The companion web service's tip is keyed by its domain.
        QVERIFY(!window->findChild<QAction*>(QStringLiteral("actionBerater"))->toolTip().isEmpty());
    }

    void activationTokenTravelsAsLastArgument()
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

    void argumentListsOfTheStartSlots()
    {
        // Any behaviour but "Minimize" and "Terminate" leaves the window as it is.
        QVERIFY(setUserSetting("OnORVStart", "Irgendwas"));
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

        const QString normal = QStringLiteral("-mode=normal");
        const QList<QStringList> expected{{normal, QStringLiteral("-n")},
                                          {normal, file},
                                          {normal, QStringLiteral("-c")},
                                          {normal, QStringLiteral("-c"), file},
                                          {QStringLiteral("-mode=einur"), QStringLiteral("-n")}};
        QCOMPARE(loggedStarts(), expected);
        QVERIFY(window->isVisible());
    }

    void brokenInstallationIsReportedAndNothingHides()
    {
        const auto window = shownWindow();
        QVERIFY(window);

        // Not executable, missing, not configured: the same box, the window stays.
        QVERIFY(QFile::setPermissions(orvPath(), QFile::ReadOwner | QFile::WriteOwner));
        QVERIFY(!window->startORVWithParam(startNew));
        QVERIFY(QFile::remove(orvPath()));
        QVERIFY(!window->startORVWithParam(startNew));
        QVERIFY(configure("ORVExecutable", ""));
        QVERIFY(!window->startORVWithParam(startNew));

        const QString box = QStringLiteral(
            "Fehlerhafte Installation|Ihre Installation ist fehlerhaft!\n\nDie Orvane-Erklärung kann nicht "
            "gestartet werden.\nInstallieren Sie das Programm erneut.");
        QCOMPARE(m_boxes->boxes, QStringList(3, box));
        m_boxes->boxes.clear();
        QCOMPARE(window->runningCount(), 0);
        QVERIFY(window->isVisible());
        QVERIFY(loggedStarts().isEmpty());
    }

    void onStartBehaviour()
    {
        const auto window = shownWindow();
        QVERIFY(window);
        setEnv("ORV_DEMO_DELAY_MS", "300");

        // "Terminate" ends the launcher's event loop with 0; the program still runs.
        QVERIFY(setUserSetting("OnORVStart", "Terminate"));
        bool started = false;
        QTimer::singleShot(0, window.get(), [&] { started = window->startORVWithParam(startNew); });
        QTimer timeout;
        timeout.callOnTimeout([] { QCoreApplication::exit(1); });
        timeout.start(processTimeoutMs);
        QCOMPARE(QCoreApplication::exec(), 0);
        QVERIFY(started);
        QCOMPARE(window->runningCount(), 1);
        QVERIFY(window->isVisible());
        QTRY_COMPARE_WITH_TIMEOUT(window->runningCount(), 0, processTimeoutMs);
    }

    // A minimized launcher hides while a program runs and comes back, normal,
    // after the last one ended; a crash ends a program like any other end.
    void launcherComesBackOnlyAfterTheLastProgramEnds()
    {
        const auto window = shownWindow();
        QVERIFY(window);
        window->showMinimized();

        setEnv("ORV_DEMO_DELAY_MS", "2500");
        QVERIFY(window->startORVWithParam(startNew));
        QVERIFY(!window->isVisible());
        setEnv("ORV_DEMO_DELAY_MS", "200");
        setEnv("ORV_DEMO_CRASH", "1");
        QVERIFY(window->startORVWithParam(startNew));
        QCOMPARE(window->runningCount(), 2);

        QTRY_COMPARE_WITH_TIMEOUT(window->runningCount(), 1, processTimeoutMs);
        QVERIFY(!window->isVisible());
        QTRY_COMPARE_WITH_TIMEOUT(window->runningCount(), 0, processTimeoutMs);
        QVERIFY(window->isVisible());
        QVERIFY(!window->isMinimized());
    }

    // The launcher's whole round trip: recommend, start, hide, save, come back,
    // recommend what was saved.
    void newCaseFileIsRecommendedAfterTheTaxProgramSavedIt()
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
        QCOMPARE(loggedStarts(), (QList<QStringList>{{QStringLiteral("-mode=normal"), QStringLiteral("-n")}}));

        const QString saved = fromLatin1(cNvWinIni::theInstance()->getHomeDataPath())
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

    // From the command line, a later start or the desktop: each file opens in
    // the first mode that claims its name, whatever its case; what cannot be
    // opened is named in one box, and a flood opens only its first file.
    void caseFilesFromOutsideOpenInTheirMode()
    {
        QVERIFY(setUserSetting("OnORVStart", "NoChange"));
        const QString folder = m_install->root() + QStringLiteral("/Fälle von \"außen\"/");
        const QString income = folder + QStringLiteral("$(echo) 'Müller' 2011.est11");
        const QString profit = folder + QStringLiteral("-TISCHLEREI 2011.EUR11");
        const QString note = folder + QStringLiteral("notiz.txt");
        QVERIFY(createFile(income) && createFile(profit) && createFile(note));
        QVERIFY(QDir().mkpath(folder + QStringLiteral("Ordner.est11")));
        auto window = shownWindow();
        QVERIFY(window);
        const auto waitForPrograms = [&] { QTRY_COMPARE_WITH_TIMEOUT(window->runningCount(), 0, processTimeoutMs); };

        window->openCaseFiles({income, folder + QStringLiteral("fehlt.est11"), folder + QStringLiteral("Ordner.est11"),
                               note, profit});
        waitForPrograms();
        QCOMPARE(m_boxes->boxes.size(), 1);
        const QStringList problems = m_boxes->boxes.takeFirst().split(QStringLiteral("\n\n"));
        QCOMPARE(problems.size(), 3);
        QVERIFY(problems[0].startsWith(QStringLiteral("Steuerfall öffnen|Die Datei »") + folder + QStringLiteral("fehlt.est11« wurde nicht gefunden")));
        QCOMPARE(problems[1], QStringLiteral("»") + folder + QStringLiteral("Ordner.est11« ist ein Verzeichnis und kein Steuerfall."));
        QVERIFY(problems[2].startsWith(QStringLiteral("Die Datei »") + note + QStringLiteral("« ist kein Steuerfall")));
        QCOMPARE(checkedMode(*window), 3);

        QStringList flood(500, profit);
        flood[0] = income;
        window->openCaseFiles(flood);
        waitForPrograms();
        QCOMPARE(m_boxes->boxes.size(), 1);
        QVERIFY(m_boxes->boxes.takeFirst().contains(QStringLiteral("499 Dateien wurden nicht geöffnet")));

        window->followCommandLine(CommandLine::parse({QStringLiteral("startcenter"), QStringLiteral("--new"),
                                                      QStringLiteral("vorweg")}, StartCenter::modeNames()));
        waitForPrograms();
        // Programs started together log in the order they come up.
        QList<QStringList> starts = loggedStarts();
        std::sort(starts.begin(), starts.end());
        QCOMPARE(starts, (QList<QStringList>{{QStringLiteral("-mode=einur"), profit},
                                             {QStringLiteral("-mode=normal"), income},
                                             {QStringLiteral("-mode=normal"), income},
                                             {QStringLiteral("-mode=vorweg"), QStringLiteral("-n")}}));

        // Opened files reach the desktop's recently used list (written once
        // the window is gone at the latest).
        window.reset();
        const QByteArray recent = m_install->readFile(m_install->home() + QStringLiteral("/.local/share/recently-used.xbel"));
        QVERIFY(recent.contains(QUrl::fromLocalFile(income).toEncoded()));
        QVERIFY(recent.contains(QUrl::fromLocalFile(profit).toEncoded()));
    }

    void dropsOpenCaseFilesAndRefuseTheRest()
    {
        QVERIFY(setUserSetting("OnORVStart", "NoChange"));
        const QString folder = m_install->root() + QStringLiteral("/drop/");
        const QString income = folder + QStringLiteral("Fall 2011.est11");
        const QString note = folder + QStringLiteral("notiz.txt");
        QVERIFY(createFile(income) && createFile(note));
        const auto window = shownWindow();
        QVERIFY(window);

        const auto dragged = [](const QList<QUrl>& urls) {
            auto data = std::make_unique<QMimeData>();
            if (urls.isEmpty())
                data->setText(QStringLiteral("Text"));
            else
                data->setUrls(urls);
            return data;
        };
        const auto accepted = [&](const QList<QUrl>& urls) {
            const auto data = dragged(urls);
            QDragEnterEvent enter(QPoint(20, 20), Qt::CopyAction, data.get(), Qt::LeftButton, Qt::NoModifier);
            QCoreApplication::sendEvent(window.get(), &enter);
            QDragMoveEvent move(QPoint(30, 30), Qt::CopyAction, data.get(), Qt::LeftButton, Qt::NoModifier);
            QCoreApplication::sendEvent(window.get(), &move);
            return enter.isAccepted() && move.isAccepted();
        };
        QVERIFY(accepted({QUrl::fromLocalFile(income)}));
        // A folder, another file, a web address or plain text spoil the drag.
        QVERIFY(!accepted({QUrl::fromLocalFile(income), QUrl::fromLocalFile(folder)}));
        QVERIFY(!accepted({QUrl::fromLocalFile(note)}));
        QVERIFY(!accepted({QUrl(QStringLiteral("https://www.example.org/Fall 2011.est11"))}));
        QVERIFY(!accepted({}));

        const auto data = dragged({QUrl::fromLocalFile(income)});
        QDropEvent drop(QPointF(20, 20), Qt::CopyAction, data.get(), Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(window.get(), &drop);
        QVERIFY(drop.isAccepted());
        QTRY_COMPARE_WITH_TIMEOUT(loggedStarts().size(), 1, processTimeoutMs);
        QCOMPARE(loggedStarts().first(), (QStringList{QStringLiteral("-mode=normal"), income}));
        QTRY_COMPARE_WITH_TIMEOUT(window->runningCount(), 0, processTimeoutMs);
    }
};

SC_TEST(TestMainWindow)
#include "tst_mainwindow.moc"
