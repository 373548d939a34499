#include "ActionPage.h"
#include "Archive.h"
#include "CommandLine.h"
#include "OnlineUpdate.h"
#include "PixmapManager.h"
#include "SCListView.h"
#include "SelectionButton.h"
#include "StartCenter.h"
#include "TestMain.h"
#include "UiSettings.h"

#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFontMetrics>
#include <QHelpEvent>
#include <QImage>
#include <QDragEnterEvent>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QTest>
#include <QTimer>
#include <QToolBar>
#include <QUrl>
#include <QToolButton>
#include <QTreeWidget>

#include <algorithm>
#include <memory>
#include <set>

#include <fcntl.h>
#include <unistd.h>

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

// A control as the tests name it: a tool bar button by its action.
QString controlName(const QWidget* control)
{
    if (const auto* button = qobject_cast<const QToolButton*>(control); button && button->defaultAction())
        return button->defaultAction()->objectName();
    return control ? control->objectName() : QStringLiteral("(no focus)");
}

// The controls that Tab visits from the chosen mode's button on, until the
// focus comes back to it.
QStringList tabWalk(StartCenter& window)
{
    QWidget* first = modeButton(window, checkedMode(window));
    first->setFocus(Qt::TabFocusReason);
    QStringList visited;
    do {
        visited << controlName(window.focusWidget());
        QTest::keyClick(window.focusWidget(), Qt::Key_Tab);
    } while (window.focusWidget() != first && visited.size() < 40);
    return visited;
}

// The shown controls in the order the eye meets them: the mode column (one
// stop, the arrow keys move within it), the page's recommended action, its
// other actions left to right, the folder buttons, the search field, the list
// and its buttons, the tool bar.
QStringList visualOrder(const StartCenter& window, const ActionPage& page)
{
    const auto usable = [](const QWidget* control) { return control->isVisible() && control->isEnabled(); };
    QStringList order{QLatin1String(buttonNames[checkedMode(window)])};
    order << page.actionButton(page.recommendedAction())->objectName();
    QList<QToolButton*> others;
    for (auto action : {ActionPage::ActionNew, ActionPage::ActionOther, ActionPage::ActionConvert, ActionPage::ActionLast})
        if (action != page.recommendedAction() && usable(page.actionButton(action)))
            others << page.actionButton(action);
    std::sort(others.begin(), others.end(), [](QWidget* a, QWidget* b) { return a->x() < b->x(); });
    for (const QToolButton* button : others)
        order << button->objectName();
    for (const char* name : {"changeFolderButton", "homeButton", "searchField", "fileView", "openButton", "overviewButton"})
        if (usable(page.findChild<QWidget*>(QLatin1String(name))))
            order << QLatin1String(name);
    for (const QAction* action : window.findChild<QToolBar*>(QStringLiteral("toolBar"))->actions())
        if (action->isVisible())
            order << action->objectName();
    return order;
}

// What a page shows: the texts, enabled and visible states of its labels and
// buttons, and the rows of its lists.
QStringList pageContent(const ActionPage* page)
{
    QStringList content;
    const auto state = [](const QWidget* widget) {
        return QStringLiteral("%1/%2").arg(widget->isEnabled()).arg(widget->isVisible());
    };
    for (const QLabel* label : page->findChildren<QLabel*>())
        content << label->objectName() + QLatin1Char(':') + label->text() + state(label);
    for (const QAbstractButton* button : page->findChildren<QAbstractButton*>())
        content << button->objectName() + QLatin1Char(':') + button->text() + state(button);
    for (const QTreeWidget* tree : page->findChildren<QTreeWidget*>())
        for (int row = 0; row < tree->topLevelItemCount(); ++row)
            content << tree->topLevelItem(row)->text(0);
    return content;
}

class PaintCounter : public QObject
{
public:
    int count = 0;
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Paint)
            ++count;
        return false;
    }
};

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

    static std::unique_ptr<StartCenter> activeWindow()
    {
        auto window = shownWindow();
        return window && QTest::qWaitForWindowActive(window.get()) ? std::move(window) : nullptr;
    }

    // Two case files of the income-tax mode in the home data folder.
    QStringList writeCaseFiles() const
    {
        const QString home = fromLatin1(cNvWinIni::theInstance()->getHomeDataPath());
        const QStringList files{home + QStringLiteral("Fall 1.est11"), home + QStringLiteral("Fall 2.est11")};
        for (const QString& file : files)
            m_install->writeFile(file, "<Fall/>");
        return files;
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
        for (int mode : {0, 1, 2, 3})
            QTRY_VERIFY(modePage(*window, mode)->y() >= visible.height());

        // The unconfigured mode is reported and the current one kept.
        QTest::mouseClick(modeButton(*window, 5), Qt::LeftButton);
        QCOMPARE(m_boxes->boxes.size(), 1);
        QVERIFY2(m_boxes->boxes.takeFirst().startsWith(QStringLiteral("Fehler|")), "box title");
        QCOMPARE(checkedMode(*window), 4);
        QCOMPARE(currentModus(), std::string("einurvor"));
        QVERIFY(!modePage(*window, 5));   // never shown, never built
    }

    // Only the shown page is built at start; every other one is built when
    // its mode is first chosen, and then looks as if built at start.
    void pagesBuiltOnFirstUseMatchPagesBuiltAtStart()
    {
        const auto window = shownWindow();
        QVERIFY(window);
        for (int mode = 1; mode < 6; ++mode)
            QVERIFY2(!modePage(*window, mode), pageNames[mode]);

        for (int mode = 1; mode < 6; ++mode) {
            QTest::mouseClick(modeButton(*window, mode), Qt::LeftButton);
            ActionPage* built = modePage(*window, mode);
            QVERIFY(built);
            QVERIFY(built->isVisibleTo(window.get()));
            QTRY_COMPARE(built->geometry(), QRect(QPoint(), built->size()));

            QVERIFY(setUserSetting("Modus", QByteArray::number(mode).constData()));
            const auto atStart = shownWindow();
            QVERIFY(atStart);
            ActionPage* expected = modePage(*atStart, mode);
            QVERIFY(expected);
            QTRY_COMPARE(expected->geometry(), built->geometry());
            QTRY_COMPARE(pageContent(built), pageContent(expected));
            QCOMPARE(built->recommendedAction(), expected->recommendedAction());
        }
    }

    // The start sound waits for the window's first frame, and plays only
    // when the installation names an existing sound file and the user wants
    // it.
    void startSoundPlaysOnlyAfterTheFirstFrame()
    {
        QVERIFY(m_install->writeResource(QStringLiteral("sounds/start.wav"), "RIFF"));
        struct Play
        {
            QString path;
            bool afterFirstFrame;
        };
        QList<Play> plays;
        PaintCounter paints;
        const StartCenter::StartSoundPlayer previous = StartCenter::setStartSoundPlayer(
            [&](const QString& path, QObject*) { plays.append({path, paints.count > 0}); });
        const auto restorePlayer = qScopeGuard([&] { StartCenter::setStartSoundPlayer(previous); });

        {
            StartCenter window(nullptr, Qt::WindowFlags());
            window.installEventFilter(&paints);
            QTest::qWait(50);
            QVERIFY(plays.isEmpty());   // not while the window is not on screen
            window.show();
            QTRY_COMPARE(plays.size(), 1);
            QVERIFY(plays.first().afterFirstFrame);
            QCOMPARE(QFileInfo(plays.first().path).canonicalFilePath(),
                     QFileInfo(m_install->resourcesDir() + QStringLiteral("sounds/start.wav")).canonicalFilePath());
            window.update();
            QTest::qWait(50);
            QCOMPARE(plays.size(), 1);   // once per start, not per frame
        }

        const auto startsWithoutSound = [&] {
            plays.clear();
            const auto window = shownWindow();
            QTest::qWait(50);
            return window && plays.isEmpty();
        };
        QVERIFY(QFile::remove(m_install->resourcesDir() + QStringLiteral("sounds/start.wav")));
        QVERIFY(startsWithoutSound());
        QVERIFY(m_install->writeResource(QStringLiteral("sounds/start.wav"), "RIFF"));
        QVERIFY(cNvWinIni::theInstance()->WriteString("Sounds", "StartJingle", "0"));
        QVERIFY(startsWithoutSound());
        QVERIFY(cNvWinIni::theInstance()->WriteString("Sounds", "StartJingle", "1"));
        QVERIFY(configure("StartCenter", ""));
        QVERIFY(startsWithoutSound());
    }

    // The header picture fills the header: one of another size (here the
    // offscreen screen's small-screen metrics) is shown scaled to it, not
    // cropped or scaled again at every paint. A picture file that does not
    // decode gives way to the container's picture, as for every picture;
    // without any the header stays empty.
    void headerPictureFillsTheHeader()
    {
        // Opaque, but saved with an alpha channel, as the sample header is:
        // scaled as the pixmap the label used to scale.
        QImage picture(960, 106, QImage::Format_ARGB32);
        picture.fill(Qt::red);
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 480; x < 960; ++x)
                picture.setPixel(x, y, qRgb(x % 7 * 40, y % 5 * 60, 255));
        QByteArray png;
        QBuffer buffer(&png);
        QVERIFY(buffer.open(QIODevice::WriteOnly) && picture.save(&buffer, "PNG"));
        QVERIFY(m_install->writeResource(QStringLiteral("media/sc_header.png"), png));
        openSettings();

        const auto showsPicture = [&picture] {
            auto window = shownWindow();
            QVERIFY(window);
            auto* header = window->findChild<QLabel*>(QStringLiteral("Header"));
            QVERIFY(header);
            QVERIFY(header->size() != picture.size());
            QVERIFY(!header->hasScaledContents());
            const QImage shown = header->pixmap().toImage();
            QCOMPARE(shown.size(), header->size() * header->devicePixelRatioF());
            QCOMPARE(shown, QPixmap::fromImage(picture).toImage().scaled(shown.size(), Qt::IgnoreAspectRatio,
                                                                          Qt::SmoothTransformation));
        };
        showsPicture();

        const QString media = m_install->resourcesDir() + QStringLiteral("media/");
        {
            cArchive container((media + QStringLiteral("images_mac.cnt")).toStdString(), media.toStdString());
            QVERIFY(container.AddFile("sc_header.png", "sc_header.png", compression::stored, false));
        }
        QVERIFY(m_install->writeResource(QStringLiteral("media/sc_header.png"), "no picture"));
        openSettings();
        showsPicture();

        QVERIFY(QFile::remove(media + QStringLiteral("images_mac.cnt")));
        QVERIFY(QFile::remove(media + QStringLiteral("sc_header.png")));
        openSettings();
        auto window = shownWindow();
        QVERIFY(window);
        QVERIFY(window->findChild<QLabel*>(QStringLiteral("Header"))->pixmap().isNull());
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
        button.resize(280, 100);
        QCOMPARE(button.textRect().top(), caption.top() + 19);   // laid out again for the new height
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

        // Action tips are wrapped to 210 pixels in the window font, once a
        // tool button is about to show them.
        auto* optionsAction = window->findChild<QAction*>(QStringLiteral("actionOptionen"));
        QCOMPARE(optionsAction->toolTip(), helpText("Konfiguration"));
        QToolButton* optionsButton = nullptr;
        for (QToolButton* button : window->findChild<QToolBar*>()->findChildren<QToolButton*>())
            if (button->defaultAction() == optionsAction)
                optionsButton = button;
        QVERIFY(optionsButton);
        QHelpEvent hover(QEvent::ToolTip, QPoint(4, 4), optionsButton->mapToGlobal(QPoint(4, 4)));
        QCoreApplication::sendEvent(optionsButton, &hover);
        const QString options = optionsAction->toolTip();
        QCOMPARE(optionsButton->toolTip(), options);
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

        // With its preload program the harness starts the tax program itself.
        QVERIFY(m_install->writeFile(QStringLiteral("squish/bin/dllpreload"),
                                     "#!/bin/sh\necho preload >> \"$ORV_DEMO_ARGS_LOG\"\nexec \"$@\"\n"));
        QVERIFY(QFile::setPermissions(m_install->root() + QStringLiteral("/squish/bin/dllpreload"),
                                      QFile::ReadOwner | QFile::ExeOwner));
        startAndWait([&] { window->startORV(); });
        QCOMPARE(loggedStarts().mid(expected.size()),
                 (QList<QStringList>{{QStringLiteral("preload")}, {QStringLiteral("-mode=einur"), QStringLiteral("-n")}}));
    }

    // An archive from an older system: a name that is not UTF-8 is listed
    // read as Latin-1, and opening it asks to rename it to UTF-8 first.
    void latin1NamesAreRenamedBeforeOpening()
    {
        const auto window = shownWindow();
        QVERIFY(window);
        auto* page = window->findChild<ActionPage*>(QStringLiteral("pageNormal"));
        auto* list = page->findChild<SCListView*>(QStringLiteral("fileView"));
        const QString folder = page->lastWorkDir();
        const QByteArray oldPath = QFile::encodeName(folder) + "M\xFCller 2011.est11";
        const QString newPath = folder + QStringLiteral("Müller 2011.est11");
        const int fd = open(oldPath.constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        QVERIFY(fd >= 0);
        close(fd);
        const auto exists = [](const QByteArray& path) { return access(path.constData(), F_OK) == 0; };
        const auto openLatin1Row = [&] {
            page->updateUI();
            QVERIFY(QTest::qWaitFor([&] { return !list->isListing(); }));
            for (int row = 0; row < list->topLevelItemCount(); ++row) {
                const CaseFolder::Entry* entry = list->entryOf(list->topLevelItem(row));
                if (entry->latin1Name) {
                    QCOMPARE(list->topLevelItem(row)->text(0), QStringLiteral("Müller 2011"));
                    emit list->itemDoubleClicked(list->topLevelItem(row), 0);
                    return;
                }
            }
            QFAIL("the Latin-1 name is not listed");
        };

        // No: the file stays as it is and nothing starts.
        m_boxes->answer = QMessageBox::No;
        openLatin1Row();
        QCOMPARE(m_boxes->boxes.size(), 1);
        QVERIFY(m_boxes->boxes.takeFirst().startsWith(QStringLiteral("Dateiname umwandeln|")));
        QVERIFY(exists(oldPath));

        // Yes, but the UTF-8 name is taken: that file is kept, nothing starts.
        QVERIFY(m_install->writeFile(QDir(m_install->root()).relativeFilePath(newPath), "neu"));
        m_boxes->answer = QMessageBox::Yes;
        openLatin1Row();
        QCOMPARE(m_boxes->boxes.size(), 2);
        m_boxes->boxes.clear();
        QVERIFY(exists(oldPath));
        QCOMPARE(m_install->readFile(newPath), QByteArray("neu"));
        QCOMPARE(window->runningCount(), 0);

        // Yes: renamed and opened under its new name.
        QVERIFY(QFile::remove(newPath));
        openLatin1Row();
        QCOMPARE(m_boxes->boxes.size(), 1);
        m_boxes->boxes.clear();
        QVERIFY(!exists(oldPath));
        QVERIFY(QFileInfo::exists(newPath));
        QTRY_COMPARE_WITH_TIMEOUT(window->runningCount(), 0, processTimeoutMs);
        QCOMPARE(loggedStarts(), (QList<QStringList>{{QStringLiteral("-mode=normal"), newPath}}));
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

    // Tab walks the shown controls in the order they are seen, in every mode
    // once a switch has slid the new page in; pages out of view are hidden.
    void tabVisitsTheShownControlsInVisualOrder()
    {
        writeCaseFiles();
        const auto window = activeWindow();
        QVERIFY(window);
        for (int mode : {0, 3, 1, 5, 2, 4, 0}) {
            modeButton(*window, mode)->setFocus(Qt::TabFocusReason);
            QTest::keyClick(modeButton(*window, mode), Qt::Key_Return);
            ActionPage* page = modePage(*window, mode);
            QTRY_COMPARE(page->pos(), QPoint(0, 0));
            // A page not built yet is not there to take the focus at all.
            for (int other = 0; other < 6; ++other) {
                const ActionPage* otherPage = modePage(*window, other);
                QTRY_VERIFY2(other == mode || !otherPage || !otherPage->isVisible(), pageNames[other]);
            }

            QCOMPARE(tabWalk(*window), visualOrder(*window, *page));
            QTest::keyClick(modeButton(*window, mode), Qt::Key_Backtab);
            QCOMPARE(controlName(window->focusWidget()), QStringLiteral("actionOptionen"));
        }
        QVERIFY(visualOrder(*window, *modePage(*window, 0)).contains(QStringLiteral("fileView")));
    }

    // Space, Enter, mnemonics and shortcuts do what a click does: on the
    // page's actions, on a row of the list, on the tool bar.
    void keysActAsClicks()
    {
        QVERIFY(setUserSetting("OnORVStart", "Irgendwas"));
        const QStringList files = writeCaseFiles();
        QVERIFY(cNvWinIni::theInstance()->WriteString("MRUFiles", "0", files.at(0).toLatin1().constData()));
        QStringList dialogFilters, opened, popups;
        const auto previousDialogs = CrossPlatformApi::setFileDialogHandler([&](const FileDialogRequest& request) {
            dialogFilters << request.filter;
            return QString();
        });
        const auto previousOpener = CrossPlatformApi::setUrlOpener([&](const QUrl& url) {
            opened << url.fileName();
            return true;
        });
        const auto restore = qScopeGuard([&] {
            CrossPlatformApi::setFileDialogHandler(previousDialogs);
            CrossPlatformApi::setUrlOpener(previousOpener);
        });
        // Menus and dialogs run their own loop: each is noted and closed.
        QTimer closer;
        closer.callOnTimeout([&popups] {
            QWidget* popup = QApplication::activePopupWidget() ? QApplication::activePopupWidget()
                                                               : QApplication::activeModalWidget();
            if (popup) {
                popups << QString::fromLatin1(popup->metaObject()->className());
                popup->close();
            }
        });
        closer.start(20);

        const auto window = activeWindow();
        QVERIFY(window);
        const auto press = [&](QWidget* control, Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
            window->activateWindow();   // back from a menu
            QTRY_COMPARE(QApplication::activeWindow(), window.get());
            control->setFocus(Qt::TabFocusReason);
            QTest::keyClick(control, key, modifiers);
            QTRY_COMPARE_WITH_TIMEOUT(window->runningCount(), 0, processTimeoutMs);
        };
        ActionPage* page = modePage(*window, 0);
        QCOMPARE(page->recommendedAction(), ActionPage::ActionLast);
        press(page->actionButton(ActionPage::ActionLast), Qt::Key_Space);
        press(page->actionButton(ActionPage::ActionNew), Qt::Key_Return);
        auto* list = page->findChild<QTreeWidget*>(QStringLiteral("fileView"));
        press(list, Qt::Key_Down);
        press(list, Qt::Key_Enter);
        const QString normal = QStringLiteral("-mode=normal");
        QCOMPARE(loggedStarts(), (QList<QStringList>{{normal, files.at(0)}, {normal, QStringLiteral("-n")},
                                                     {normal, files.at(1)}}));
        // The open dialog offers the mode's case files.
        press(page->actionButton(ActionPage::ActionOther), Qt::Key_Return);
        QCOMPARE(dialogFilters, QStringList(QStringLiteral("Steuererklärungen 2011 (*.est11)")));

        auto* bar = window->findChild<QToolBar*>(QStringLiteral("toolBar"));
        const auto button = [&](const char* action) {
            return bar->widgetForAction(window->findChild<QAction*>(QLatin1String(action)));
        };
        press(button("actionSupport"), Qt::Key_Return);
        press(modeButton(*window, 2), Qt::Key_S, Qt::AltModifier);
        press(button("actionOptionen"), Qt::Key_Space);
        press(modeButton(*window, 0), Qt::Key_Comma, Qt::ControlModifier);
        QCOMPARE(popups, (QStringList{QStringLiteral("QMenu"), QStringLiteral("QMenu"), QStringLiteral("OptionsDialog"),
                                      QStringLiteral("OptionsDialog")}));
        press(button("actionHandbuch"), Qt::Key_Return);
        press(modeButton(*window, 3), Qt::Key_F1);
        QCOMPARE(opened, QStringList(2, QStringLiteral("handbuch.html")));
    }

    // Screen readers get a name on one line for every control that can take
    // the focus, and descriptions without line breaks.
    void everyControlHasAOneLineName()
    {
        const auto window = shownWindow();
        QVERIFY(window);
        for (int mode = 0; mode < 6; ++mode)   // pages are built when first shown
            modeButton(*window, mode)->click();
        int controls = 0;
        for (QWidget* control : window->findChildren<QWidget*>()) {
            if (control->focusPolicy() == Qt::NoFocus || control->focusProxy())
                continue;
            ++controls;
            const QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(control);
            const QString name = accessible->text(QAccessible::Name);
            const QString description = accessible->text(QAccessible::Description);
            const QString where = controlName(control) + QStringLiteral(": ") + name + QStringLiteral(" / ") + description;
            QVERIFY2(name.contains(QRegularExpression(QStringLiteral("\\w"))), qPrintable(where));
            QVERIFY2(!name.contains(QLatin1Char('\n')) && !description.contains(QLatin1Char('\n')), qPrintable(where));
        }
        QVERIFY(controls >= 6 + 6 * 9 + 4);
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
