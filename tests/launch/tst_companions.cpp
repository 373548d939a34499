#include "../settings/SettingsFixture.h"
#include "Companions.h"
#include "TempInstallation.h"
#include "TestMain.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDir>
#include <QUrl>

#include <memory>

namespace {
QString fileUrl(const QString& path)
{
    return QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded);
}
} // namespace

// The companion actions against the sample installation and against an
// installation whose targets are missing. URLs and program starts are
// recorded instead of reaching the desktop.
class TestCompanions : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void demoInstallationOpensEveryTarget();
    void informationDatabaseStartsWithAdvisorParameters();
    void missingTargetsReportTheirBoxes();

private:
    void loadSettings();
    QString resource(const QString& name) const { return m_install->resourcesDir() + name; }
    bool writeProgram(const QString& path) const;

    std::unique_ptr<TempInstallation> m_install;
    std::unique_ptr<MessageBoxRecorder> m_boxes;
    QStringList m_opened;          // URLs, fully encoded
    QList<QStringList> m_started;  // program followed by its arguments
    bool m_openSucceeds = true;
    CrossPlatformApi::UrlOpener m_previousOpener;
    CrossPlatformApi::DetachedStarter m_previousStarter;
};

void TestCompanions::init()
{
    m_install = std::make_unique<TempInstallation>();
    m_boxes = std::make_unique<MessageBoxRecorder>();
    resetSettingsSingletons();
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

void TestCompanions::cleanup()
{
    CrossPlatformApi::setUrlOpener(m_previousOpener);
    CrossPlatformApi::setDetachedStarter(m_previousStarter);
    resetSettingsSingletons();
    m_boxes.reset();
    m_install.reset();
}

void TestCompanions::loadSettings()
{
    const std::string konf = resource(QStringLiteral("ORVKonf.ini")).toStdString();
    FolderManager::theInstance()->parseSection(konf, "DirectorySymbols");
    FolderManager::theInstance()->parseSection(konf, "DirectoryDefs");
    QVERIFY(cNvWinIni::theInstance()->setGlobalIniName(cszNvWinIniName));
    cNvWinIni::theInstance()->setModus("normal");
}

bool TestCompanions::writeProgram(const QString& path) const
{
    return m_install->writeFile(path, "#!/bin/sh\n")
           && QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

void TestCompanions::demoInstallationOpensEveryTarget()
{
    QVERIFY(m_install->copyDemoResources());
    QVERIFY(m_install->writeFile(QStringLiteral("Start-Center.app/Contents/Info.plist"),
                                 "<plist><dict><key>CFBundleIdentifier</key><string>de.marvendo.startcenter</string>"
                                 "</dict></plist>"));
    const QString reportTool = resource(QStringLiteral("Report Tools.app/Contents/MacOS/Report Tools"));
    QVERIFY(writeProgram(reportTool));
    loadSettings();
    // The tax-case folder as the file list stores it: below "<HomeDataDir>".
    const QString taxFolder = fromLatin1(cNvWinIni::theInstance()->getHomeDataPath()) + QStringLiteral("2011");
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
    QStringList expectedUrls{fileUrl(resource(QStringLiteral("handbuch.html"))),
                             QStringLiteral("https://www.marvendo.example/"),
                             fileUrl(taxFolder),
                             QStringLiteral("https://support.marvendo.example/netviewer"),
                             QStringLiteral("https://www.orvane-berater.example/business/"),
                             QStringLiteral("https://www.marvendo.example/"),
                             QStringLiteral("https://www.lexavo.example/mietrecht/")};

    // Without a file manager on the session bus the bundle's folder opens.
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || !bus.interface()->isServiceRegistered(QStringLiteral("org.freedesktop.FileManager1"))) {
        QVERIFY(Companions::openProgramFolder());
        expectedUrls << fileUrl(m_install->root());
    }

    // The advisor's address with topic and user filled in.
    QVERIFY(m_install->writeResource(QStringLiteral("berater.ini"),
                                     "[Online]\nBusiness=https://berater.example/frage?thema=<TOPIC>&kunde=<USER>\n"
                                     "User=M\xFCller & S\xF6hne\n"));
    QVERIFY(Companions::startMarvendoBusinessOnline(QStringLiteral("Miete & Pacht")));
    expectedUrls << QStringLiteral("https://berater.example/frage?thema=Miete%20%26%20Pacht&kunde=M%C3%BCller%20%26%20S%C3%B6hne");

    QCOMPARE(m_opened, expectedUrls);
    QCOMPARE(m_started, (QList<QStringList>{{QStringLiteral("xdg-open"), resource(QStringLiteral("help/KURSEL.htm"))},
                                            {reportTool}}));
    QCOMPARE(m_boxes->boxes, QStringList());
}

void TestCompanions::informationDatabaseStartsWithAdvisorParameters()
{
    QVERIFY(m_install->copyDemoResources());
    loadSettings();
    QVERIFY(!Companions::isInfoManInstalled());
    QVERIFY(!Companions::startInfoMan(QStringLiteral("-d Marvendo -k")));
    QCOMPARE(m_boxes->boxes, QStringList{QStringLiteral("Ihr Plus: Der Steuerberater|Bitte installieren Sie den Steuerberater!")});

    // The reference file names the program with a folder symbol.
    const QString shared = m_install->root() + QStringLiteral("/shared/");
    QVERIFY(m_install->writeFile(shared + QStringLiteral("Marvendo/Lumidex2/LumidexRef.ini"),
                                 "[Lumidex]\nPath=<COMMON_APPDATA>/Lumidex.app\n"));
    const QString program = shared + QStringLiteral("Lumidex.app/Contents/MacOS/Lumidex");
    QVERIFY(writeProgram(program));
    QCOMPARE(Companions::infoManPath(), shared + QStringLiteral("Lumidex.app"));

    QVERIFY(Companions::openBeraterPlus());
    QVERIFY(Companions::openBeraterNebenk());
    QVERIFY(Companions::openInfoManLink(QStringLiteral("-d Marvendo -t \"Miete und Pacht\"")));
    QCOMPARE(m_started, (QList<QStringList>{{program, "-d", "Marvendo", "-k"},
                                            {program, "-d", "DomveraORV", "-k"},
                                            {program, "-d", "Marvendo", "-t", "Miete und Pacht"}}));
    QVERIFY(m_opened.isEmpty());

    QVERIFY(QFile::setPermissions(program, QFile::ReadOwner));
    QVERIFY(!Companions::openBeraterPlus());
    QCOMPARE(m_boxes->boxes.value(1), QStringLiteral("Ihr Plus: Der Steuerberater|Fehler beim Starten des "
                                                     "Steuerberaters!\nDer Steuerberater kann nicht gestartet werden."));
}

void TestCompanions::missingTargetsReportTheirBoxes()
{
    const QByteArray root = m_install->root().toLocal8Bit();
    QVERIFY(m_install->writeResource(QStringLiteral("ORVKonf.ini"),
                                     "[Settings]\nUserSettings=" + root + "/user\nHomeDataDir=" + root + "/data\n"
                                     "[Modus]\nnormal=normal.ini\n[Files]\nLastWorkDir=" + root + "/gel\xF6scht\n"
                                     "[Addons]\nHandbuch=fehlt.pdf\n"));
    QVERIFY(m_install->writeResource(QStringLiteral("normal.ini"), "[Start]\n"));
    loadSettings();
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

    const QString marvendo = QStringLiteral("Marvendo im Internet|Fehler beim Öffnen der Marvendo-Internet-Seite!\n"
                                            "Die Marvendo Internet-Seite kann nicht geöffnet werden.");
    const QStringList expected{
        QStringLiteral("Handbuch öffnen|Fehler beim Öffnen des Handbuchs!\nDas Handbuch kann nicht geöffnet werden."),
        QStringLiteral("Kursel|Fehler beim Öffnen des Kursel!\nDer Kompass kann nicht geöffnet werden."),
        marvendo,
        QStringLiteral("Steuerfallordner Öffnen|Der Ordner »") + m_install->root()
            + QStringLiteral("/gelöscht« konnte nicht geöffnet werden."),
        QStringLiteral("Report Erstellen|Fehler beim Öffnen des Report-Programms!\nDas Support-Tool zum Erfassen "
                       "eines Reports kann nicht geöffnet werden."),
        QStringLiteral("Netviewer Starten|Fehler beim Versuch, den NetViewer zu laden!\nDie Adresse zum Download des "
                       "NetViewers ist nicht konfiguriert."),
        QStringLiteral("Netviewer Starten|Fehler beim Öffnen der NetViewer-Internet-Seite!\nDie Seite zur Umleitung "
                       "auf den NetViewer-Download kann nicht geöffnet werden."),
        QStringLiteral("Marvendo-Business|Fehler beim Öffnen der Marvendo-Business-Internet-Seite!\nDie Seite der "
                       "Online-Beratung kann nicht geöffnet werden."),
        marvendo,
        QStringLiteral("Lexavo im Internet|Fehler beim Öffnen der Lexavo-Internet-Seite!\nDie Lexavo Internet-Seite "
                       "kann nicht geöffnet werden.")};
    QCOMPARE(m_boxes->boxes, expected);
    // Missing files and folders are not handed to the desktop at all; only
    // the web addresses were tried.
    QVERIFY(m_started.isEmpty());
    for (const QString& url : std::as_const(m_opened))
        QVERIFY2(url.startsWith(QLatin1String("https://")), qPrintable(url));
}

SC_TEST(TestCompanions)
#include "tst_companions.moc"
