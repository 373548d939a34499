#include "../ui/UiSettings.h"
#include "Companions.h"
#include "StartCenter.h"
#include "TempInstallation.h"
#include "TestMain.h"

#include <QAction>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDir>
#include <QElapsedTimer>
#include <QStandardPaths>
#include <QTimer>
#include <QUrl>

#include <memory>

namespace {
QString fileUrl(const QString& path)
{
    return QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded);
}

// The boxes of failed opens, "title|text".
const QString manualBox = "Handbuch öffnen|Fehler beim Öffnen des Handbuchs!\nDas Handbuch kann nicht geöffnet werden.";
const QString taxbookBox = "Kursel|Fehler beim Öffnen des Kursel!\nDer Kompass kann nicht geöffnet werden.";
const QString marvendoBox = "Marvendo im Internet|Fehler beim Öffnen der Marvendo-Internet-Seite!\n"
                            "Die Marvendo Internet-Seite kann nicht geöffnet werden.";
const QString netViewerBox = "Netviewer Starten|Fehler beim Öffnen der NetViewer-Internet-Seite!\nDie Seite zur "
                             "Umleitung auf den NetViewer-Download kann nicht geöffnet werden.";
} // namespace

// The companion actions against the sample installation and against an
// installation whose targets are missing. URLs and program starts are
// recorded instead of reaching the desktop.
class TestCompanions : public QObject
{
    Q_OBJECT

private:
    QString resource(const QString& name) const { return m_install->resourcesDir() + name; }

    std::unique_ptr<TempInstallation> m_install;
    std::unique_ptr<MessageBoxRecorder> m_boxes;
    QStringList m_opened;          // URLs, fully encoded
    QList<QStringList> m_started;  // program followed by its arguments
    bool m_openSucceeds = true;
    CrossPlatformApi::UrlOpener m_previousOpener;
    CrossPlatformApi::DetachedStarter m_previousStarter;

    // The sample installation with the launcher's bundle identifier, its
    // settings opened.
    void loadDemo()
    {
        QVERIFY(m_install->copyDemoResources());
        QVERIFY(m_install->writeFile("Start-Center.app/Contents/Info.plist",
                                     "<plist><dict><key>CFBundleIdentifier</key><string>de.marvendo.startcenter</string>"
                                     "</dict></plist>"));
        QVERIFY(openInstalledSettings());
    }

    bool writeProgram(const QString& path) const
    {
        return m_install->writeFile(path, "#!/bin/sh\n")
               && QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

private slots:
    void init()
    {
        m_install = std::make_unique<TempInstallation>();
        m_boxes = std::make_unique<MessageBoxRecorder>();
        m_opened.clear();
        m_started.clear();
        m_openSucceeds = true;
        m_previousOpener = CrossPlatformApi::setUrlOpener([this](const QUrl& url) {
            m_opened << url.toString(QUrl::FullyEncoded);
            return m_openSucceeds;
        });
        m_previousStarter = CrossPlatformApi::setDetachedStarter([this](const QString& program, const QStringList& args) {
            m_started << (QStringList{program} + args);
            return true;
        });
    }

    void cleanup()
    {
        CrossPlatformApi::setUrlOpener(m_previousOpener);
        CrossPlatformApi::setDetachedStarter(m_previousStarter);
        resetSettingsSingletons();
        m_boxes.reset();
        m_install.reset();
    }

    void demoInstallationOpensEveryTarget()
    {
        loadDemo();
        const QString reportTool = resource("Report Tools.app/Contents/MacOS/Report Tools");
        QVERIFY(writeProgram(reportTool));
        // The tax-case folder as the file list stores it: below "<HomeDataDir>".
        const QString taxFolder = fromLatin1(cNvWinIni::theInstance()->getHomeDataPath()) + "2011";
        QVERIFY(QDir().mkpath(taxFolder));
        QVERIFY(cNvWinIni::theInstance()->WriteString("Files", "LastWorkDir", "<HomeDataDir>/2011"));

        QVERIFY(Companions::openManual());
        QVERIFY(Companions::openTaxbook());
        QVERIFY(Companions::showMarvendo());
        QVERIFY(Companions::openTaxFolder());
        QVERIFY(Companions::startReportTool());
        QVERIFY(Companions::startNetViewer());
        QVERIFY(Companions::startMarvendoBusinessOnline(QString()));
        QVERIFY(Companions::openBeraterPlus());
        QVERIFY(Companions::openBeraterNebenk());
        QStringList expectedUrls{fileUrl(resource("handbuch.html")),
                                 fileUrl(resource("help/KURSEL.htm")),
                                 "https://www.marvendo.example/",
                                 fileUrl(taxFolder),
                                 "https://support.marvendo.example/netviewer",
                                 "https://www.orvane-berater.example/business/",
                                 "https://www.marvendo.example/",
                                 "https://www.lexavo.example/mietrecht/"};

        // Without a file manager on the session bus the bundle's folder
        // opens; a file manager that does not answer is not waited for.
        const QDBusConnection bus = QDBusConnection::sessionBus();
        if (!bus.isConnected() || !bus.interface()->isServiceRegistered("org.freedesktop.FileManager1")) {
            QElapsedTimer call;
            call.start();
            QVERIFY(Companions::openProgramFolder());
            QVERIFY2(call.elapsed() < 1000, qPrintable(QString::number(call.elapsed())));
            QTRY_VERIFY_WITH_TIMEOUT(m_opened.contains(fileUrl(m_install->root())), 10000);
            expectedUrls << fileUrl(m_install->root());
        }

        // The advisor's address with topic and user filled in.
        QVERIFY(m_install->writeResource("berater.ini",
                                         "[Online]\nBusiness=https://berater.example/frage?thema=<TOPIC>&kunde=<USER>\n"
                                         "User=M\xFCller & S\xF6hne\n"));
        QVERIFY(Companions::startMarvendoBusinessOnline("Miete & Pacht"));
        expectedUrls << "https://berater.example/frage?thema=Miete%20%26%20Pacht"
                                       "&kunde=M%C3%BCller%20%26%20S%C3%B6hne";

        QCOMPARE(m_opened, expectedUrls);
        QCOMPARE(m_started, QList<QStringList>{{reportTool}});
        QCOMPARE(m_boxes->boxes, QStringList());
    }

    void informationDatabaseStartsWithAdvisorParameters()
    {
        loadDemo();
        QVERIFY(!Companions::isInfoManInstalled());
        QVERIFY(!Companions::startInfoMan("-d Marvendo -k"));
        const QString title = "Ihr Plus: Der Steuerberater|";
        QCOMPARE(m_boxes->boxes, QStringList{title + "Bitte installieren Sie den Steuerberater!"});

        // The reference file names the program with a folder symbol.
        const QString shared = m_install->root() + "/shared/";
        QVERIFY(m_install->writeFile(shared + "Marvendo/Lumidex2/LumidexRef.ini",
                                     "[Lumidex]\nPath=<COMMON_APPDATA>/Lumidex.app\n"));
        const QString program = shared + "Lumidex.app/Contents/MacOS/Lumidex";
        QVERIFY(writeProgram(program));
        QCOMPARE(Companions::infoManPath(), shared + "Lumidex.app");

        QVERIFY(Companions::openBeraterPlus());
        QVERIFY(Companions::openBeraterNebenk());
        QVERIFY(Companions::openInfoManLink("-d Marvendo -t \"Miete und Pacht\""));
        QCOMPARE(m_started, (QList<QStringList>{{program, "-d", "Marvendo", "-k"},
                                                {program, "-d", "DomveraORV", "-k"},
                                                {program, "-d", "Marvendo", "-t", "Miete und Pacht"}}));
        QVERIFY(m_opened.isEmpty());

        QVERIFY(QFile::setPermissions(program, QFile::ReadOwner));
        QVERIFY(!Companions::openBeraterPlus());
        QCOMPARE(m_boxes->boxes.value(1), title + "Fehler beim Starten des Steuerberaters!\n"
                                                                 "Der Steuerberater kann nicht gestartet werden.");
    }

    void missingTargetsReportTheirBoxes()
    {
        const QByteArray root = m_install->root().toLocal8Bit();
        QVERIFY(m_install->writeResource("ORVKonf.ini",
                                         "[Settings]\nUserSettings=" + root + "/user\nHomeDataDir=" + root + "/data\n"
                                         "[Modus]\nnormal=normal.ini\n[Files]\nLastWorkDir=" + root + "/gel\xF6scht\n"
                                         "[Addons]\nHandbuch=fehlt.pdf\n"));
        QVERIFY(m_install->writeResource("normal.ini", "[Start]\n"));
        QVERIFY(openInstalledSettings());
        m_openSucceeds = false;

        QVERIFY(!Companions::openManual());
        QVERIFY(!Companions::openTaxbook());
        QVERIFY(!Companions::showMarvendo());
        QVERIFY(!Companions::openTaxFolder());
        QVERIFY(!Companions::startReportTool());
        QVERIFY(!Companions::startNetViewer());
        QVERIFY(cNvWinIni::theInstance()->WriteString("Support", "NetViewerURL", "https://netviewer.example/"));
        QVERIFY(!Companions::startNetViewer());
        QVERIFY(!Companions::startMarvendoBusinessOnline(QString()));
        QVERIFY(!Companions::openBeraterPlus());
        QVERIFY(!Companions::openBeraterNebenk());

        const QStringList expected{
            manualBox,
            taxbookBox,
            marvendoBox,
            "Steuerfallordner Öffnen|Der Ordner »" + m_install->root()
                + "/gelöscht« konnte nicht geöffnet werden.",
            "Report Erstellen|Fehler beim Öffnen des Report-Programms!\nDas Support-Tool zum Erfassen "
                           "eines Reports kann nicht geöffnet werden.",
            "Netviewer Starten|Fehler beim Versuch, den NetViewer zu laden!\nDie Adresse zum Download des "
                           "NetViewers ist nicht konfiguriert.",
            netViewerBox,
            "Marvendo-Business|Fehler beim Öffnen der Marvendo-Business-Internet-Seite!\nDie Seite der "
                           "Online-Beratung kann nicht geöffnet werden.",
            marvendoBox,
            "Lexavo im Internet|Fehler beim Öffnen der Lexavo-Internet-Seite!\nDie Lexavo Internet-Seite "
                           "kann nicht geöffnet werden."};
        QCOMPARE(m_boxes->boxes, expected);
        // Missing files and folders are not handed to the desktop at all; only
        // the web addresses were tried.
        QVERIFY(m_started.isEmpty());
        for (const QString& url : std::as_const(m_opened))
            QVERIFY2(url.startsWith(QLatin1String("https://")), qPrintable(url));
    }

    // The desktop's opener run for real: a stand-in xdg-open that fails,
    // succeeds, or shows the document itself and keeps running.
    void desktopOpenerDecidesOverTheBox()
    {
        loadDemo();
        CrossPlatformApi::setUrlOpener({});
        const QString log = m_install->root() + "/opened.log";
        const auto useOpener = [&](const QByteArray& ending) {
            QVERIFY(m_install->addStandInProgram("xdg-open", "echo \"$1\" >> '" + log.toLocal8Bit() + "'\n" + ending));
        };

        useOpener("exit 3");   // no program for the document
        QVERIFY(!Companions::openManual());
        QVERIFY(!Companions::openTaxbook());
        QVERIFY(!Companions::showMarvendo());
        QVERIFY(!Companions::startNetViewer());
        QCOMPARE(m_boxes->boxes, (QStringList{manualBox, taxbookBox, marvendoBox, netViewerBox}));
        // Files go to the opener as paths.
        QCOMPARE(QString::fromUtf8(m_install->readFile(log)).split('\n', Qt::SkipEmptyParts),
                 (QStringList{resource("handbuch.html"), resource("help/KURSEL.htm"), "https://www.marvendo.example/",
                              "https://support.marvendo.example/netviewer"}));

        m_boxes->boxes.clear();
        useOpener("exit 0");
        QVERIFY(Companions::openManual());
        useOpener("sleep 20");
        QElapsedTimer clock;
        clock.start();
        QVERIFY(Companions::showMarvendo());
        QVERIFY(clock.elapsed() < 15000);
        QVERIFY(QFile::remove(m_install->root() + "/bin/xdg-open"));
        if (QStandardPaths::findExecutable("xdg-open").isEmpty()) {
            QVERIFY(!Companions::showMarvendo());
            QCOMPARE(m_boxes->boxes, QStringList{marvendoBox});
        }
        m_boxes->boxes.clear();
    }

    void windowActionsReachTheirTargets()
    {
        loadDemo();
        MessageBoxAnswer answer;
        CrossPlatformApi::setMessageBoxHandler([&answer](const MessageBoxRequest&) { return answer; });

        StartCenter window;
        const auto trigger = [&window](const char* name) {
            QAction* action = window.findChild<QAction*>(QLatin1String(name));
            QVERIFY2(action, name);
            action->trigger();
        };
        trigger("actionHandbuch");
        trigger("actionKursel");
        trigger("actionNetViewet");
        QCOMPARE(m_opened, (QStringList{fileUrl(resource("handbuch.html")), fileUrl(resource("help/KURSEL.htm")),
                                        "https://support.marvendo.example/netviewer"}));
        QCOMPARE(m_started.size(), 0);

        // Declining the uninstallation changes nothing; accepting it removes
        // the installation and ends the event loop with status 0.
        QVERIFY(m_install->addStandInProgram("dpkg-query", "exit 1"));
        answer.button = QMessageBox::Cancel;
        trigger("actionUninstall");
        QVERIFY(QFileInfo::exists(m_install->bundleDir()));
        answer.button = QMessageBox::Ok;
        QTimer::singleShot(0, &window, [&trigger] { trigger("actionUninstall"); });
        QTimer timeUp;
        connect(&timeUp, &QTimer::timeout, [] { QCoreApplication::exit(7); });
        timeUp.start(5000);
        QCOMPARE(QCoreApplication::exec(), 0);
        QVERIFY(!QFileInfo::exists(m_install->bundleDir()));
    }
};

SC_TEST(TestCompanions)
#include "tst_companions.moc"
