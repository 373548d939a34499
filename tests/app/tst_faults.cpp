#include "LauncherInstallation.h"
#include "TestMain.h"

#include "../settings/SettingsFixture.h"
#include "ActionPage.h"
#include "OnlineUpdate.h"
#include "PixmapManager.h"
#include "SelectionButton.h"
#include "SharedHelpers.h"
#include "StartCenter.h"

#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QTest>
#include <QToolButton>

#include <cstring>

#include <sys/stat.h>
#include <utility>

namespace {

QByteArray randomBytes(quint32 seed, int size)
{
    QRandomGenerator random(seed);
    QByteArray bytes(size, Qt::Uninitialized);
    for (char& byte : bytes)
        byte = char(random.bounded(256));
    return bytes;
}

// An image container of two pictures the launcher shows: the first shorter
// than it claims to unpack to, the second packed with a compression method
// that does not exist.
QByteArray containerWithFalseEntries()
{
    const auto word = [](quint32 value) {
        QByteArray bytes(4, Qt::Uninitialized);
        std::memcpy(bytes.data(), &value, 4);
        return bytes;
    };
    return word(0) + word(11) + QByteArray("sc_new.png", 11) + word(1000) + word(4) + "abcd"   //
           + word(7) + word(12) + QByteArray("sc_open.png", 12) + word(4) + word(4) + "abcd";
}

// Replaces the value of the first line "key=..." of a Latin-1 file.
bool setIniValue(const TempInstallation& installation, const QString& file, const QByteArray& key,
                 const QByteArray& value)
{
    QByteArray content = installation.readFile(installation.resourcesDir() + file);
    const QRegularExpression line(QStringLiteral("^%1=[^\\r\\n]*").arg(QString::fromLatin1(key)),
                                  QRegularExpression::MultilineOption);
    const QRegularExpressionMatch match = line.match(QString::fromLatin1(content));
    if (!match.hasMatch())
        return false;
    content.replace(match.capturedStart(), match.capturedLength(), key + '=' + value);
    return installation.writeResource(file, content);
}

} // namespace

// The launcher with broken files of its installation and of the user, and a
// data folder that goes away under it: it reports what the user must know,
// once, and keeps running.
class FaultsTest : public QObject
{
    Q_OBJECT

private slots:
    void corruptImageContainerAndColourFile_data()
    {
        QTest::addColumn<QByteArray>("container");
        QTest::addColumn<QByteArray>("colours");
        QTest::addColumn<QString>("expectedBox");

        QTest::newRow("garbage, colours in a circle")
            << randomBytes(17, 64 * 1024)
            << QByteArray("[ColorDefs]\nNebel=Papier+5\nPapier=Nebel-5\nTinte=Tinte\nWeiss=255,255,255\n"
                          "[ApplicationColors]\nDefaultBkg=Nebel\nBackground=Papier\nNormalText=Tinte\n"
                          "Light=Weiss+\nDark=,,\n")
            << QStringLiteral("Color Manager|Die maximale verschachtelungstiefe wurde erreicht.\\nAktuelle Farbe: ");
        QTest::newRow("false entries, binary colour file")
            << containerWithFalseEntries() << randomBytes(23, 8 * 1024)
            << QStringLiteral("Color Manager|Die Farbe >>");
        QTest::newRow("cut off container, colours without their definitions")
            << QByteArray() << QByteArray("[ApplicationColors]\nDefaultBkg=Nirgends\nBackground=Woanders-10\n")
            << QStringLiteral("Color Manager|Die Farbe >>Nirgends<< wurde nicht gefunden");
    }

    void corruptImageContainerAndColourFile()
    {
        QFETCH(QByteArray, container);
        QFETCH(QByteArray, colours);
        QFETCH(QString, expectedBox);

        LauncherInstallation installation;
        QVERIFY(installation.isReady());
        const QString containerFile = QStringLiteral("media/images_mac.cnt");
        if (container.isEmpty()) {
            const QByteArray real = installation.readFile(installation.resourcesDir() + containerFile);
            QVERIFY(real.size() > 1000);
            container = real.left(real.size() / 2 + 7);
        }
        QVERIFY(installation.writeResource(containerFile, container));
        QVERIFY(installation.writeResource(QStringLiteral("ColorDefs.ini"), colours));

        const auto launcher = installation.start();
        QVERIFY2(launcher->waitForOutput("start-up complete"), launcher->output().constData());
        // Still alive: the interrupt handler ends it with 1.
        QVERIFY(launcher->interrupt());
        QCOMPARE(launcher->waitForExitCode(), 1);

        const QStringList boxes = installation.boxes();
        QVERIFY2(!boxes.filter(expectedBox).isEmpty(), qPrintable(boxes.join(QLatin1Char('\n'))));
        QCOMPARE(boxes.filter(QRegularExpression(QStringLiteral("^Color Manager\\|"))), boxes);
        // Each colour is reported once (the colours above fail with texts of
        // their own).
        QStringList unique = boxes;
        unique.removeDuplicates();
        QCOMPARE(boxes, unique);
    }

    // A settings folder below a regular file cannot be made, also not by the
    // administrator: the start reports it once and keeps the settings in a
    // private folder of the user's own, not in the shared temporary folder.
    void unusableSettingsFolderIsReportedOnce()
    {
        LauncherInstallation installation;
        QVERIFY(installation.isReady());
        QVERIFY(installation.writeFile(QStringLiteral("blocker"), "a file, not a folder"));
        QVERIFY(setIniValue(installation, QStringLiteral("ORVKonf.ini"), "UserSettings",
                            installation.root().toLatin1() + "/blocker/settings"));

        const auto launcher = installation.start();
        QVERIFY2(launcher->waitForOutput("start-up complete"), launcher->output().constData());
        QVERIFY(launcher->interrupt());

        const QString fallback = installation.home() + QStringLiteral("/.cache/startcenter");
        QCOMPARE(installation.boxes(),
                 QStringList(QStringLiteral("Fehler|Der Konfigurationspfad <%1/blocker/settings/> konnte nicht "
                                            "gefunden werden.\\nDie eigenen Einstellungen werden gespeichert im "
                                            "Verzeichnis <%2/>.")
                                 .arg(installation.root(), fallback)));
        // The one-time defaults of the first start were stored there.
        QVERIFY(installation.readFile(fallback + QStringLiteral("/ORVKonf.user.ini")).contains("setdefaultsettings=0\r\n"));
    }

    // Installed files with endless tails or in the shape of a FIFO or a
    // device: the launcher starts in its usual memory with the settings
    // before the tails.
    void hostileInstalledFilesStartNormally()
    {
        LauncherInstallation installation;
        QVERIFY(installation.isReady());
        const QString resources = installation.resourcesDir();
        const auto appendSparseTail = [&](const QString& name, qint64 size) {
            QFile file(resources + name);
            return file.open(QIODevice::Append) && file.write(QByteArray(1, '\0')) == 1 && file.resize(size);
        };
        if (!appendSparseTail(QStringLiteral("ORVKonf.ini"), qint64(100) << 30)
            || !appendSparseTail(QStringLiteral("ColorDefs.ini"), qint64(2) << 30))
            QSKIP("no sparse files of 100 GB on this file system");
        QVERIFY(QFile::remove(resources + QStringLiteral("default.ini")));
        QVERIFY(::mkfifo(QFile::encodeName(resources + QStringLiteral("default.ini")).constData(), 0600) == 0);
        QVERIFY(QFile::remove(resources + QStringLiteral("qt_de.qm")) || !QFile::exists(resources + QStringLiteral("qt_de.qm")));
        QVERIFY(QFile::link(QStringLiteral("/dev/zero"), resources + QStringLiteral("qt_de.qm")));
        const QString container = resources + QStringLiteral("media/images_mac.cnt");
        QVERIFY(QFile::remove(container));
        QVERIFY(::mkfifo(QFile::encodeName(container).constData(), 0600) == 0);

        const auto launcher = installation.start();
        QVERIFY2(launcher->waitForOutput("start-up complete"), launcher->output().constData());
        const double peakMiB = launcher->peakResidentMiB();
        QVERIFY(launcher->interrupt());
        QVERIFY2(peakMiB > 0 && peakMiB < 400, qPrintable(QStringLiteral("peak %1 MiB").arg(peakMiB)));
        QCOMPARE(installation.boxes(), QStringList());
    }

    // The user's data folder deleted while the launcher shows it: the page
    // falls back to a fresh start, and the tax program makes the folder
    // again when it saves.
    void vanishedHomeDataFolder()
    {
        LauncherInstallation installation;
        QVERIFY(installation.isReady());
        // The tax program saves without a window, a second later than the
        // launcher read its settings (their times count in seconds).
        const std::pair<const char*, QByteArray> environment[] = {
            {"ORV_DEMO_HEADLESS", "1"},
            {"ORV_DEMO_DELAY_MS", "1100"},
            {"ORV_DEMO_PERSON", "Erika Musterfrau"},
            {"SC_MESSAGE_BOX_LOG", installation.boxLogPath().toLocal8Bit()}};
        for (const auto& [name, value] : environment)
            qputenv(name, value);
        const auto restoreEnvironment = qScopeGuard([&] {
            for (const auto& variable : environment)
                qunsetenv(variable.first);
        });
        QVERIFY(openSettings());
        const auto closeSettings = qScopeGuard([] {
            OnlineUpdate::resetInstance();
            PixmapManager::resetInstance();
            resetSettingsSingletons();
        });
        MessageBoxRecorder boxes;

        const QString home = QDir::cleanPath(fromLatin1(cApplicationInfo::theInstance()->getHomeDataPath()));
        const QString lastFile = home + QStringLiteral("/Lea Schäfer 2011.est11");
        QVERIFY(installation.writeFile(QDir(installation.root()).relativeFilePath(lastFile), "<Steuerfall/>"));
        QVERIFY(cNvWinIni::theInstance()->WriteString("MRUFiles", "0", lastFile.toLatin1().constData()));

        StartCenter window(nullptr, Qt::WindowFlags());
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        auto* page = window.findChild<ActionPage*>(QStringLiteral("pageNormal"));
        QVERIFY(page);
        QCOMPARE(page->recommendedAction(), ActionPage::ActionLast);

        QVERIFY(QDir(home).removeRecursively());
        QTest::mouseClick(window.findChild<SelectionButton*>(QStringLiteral("BtnEinur")), Qt::LeftButton);
        QTest::mouseClick(window.findChild<SelectionButton*>(QStringLiteral("BtnNormal")), Qt::LeftButton);
        QCOMPARE(page->recommendedAction(), ActionPage::ActionNew);
        QVERIFY(!page->actionButton(ActionPage::ActionLast)->isEnabled());
        QCOMPARE(QDir::cleanPath(page->lastWorkDir()), QDir::cleanPath(home));
        QTRY_VERIFY(page->findChild<QLabel*>(QStringLiteral("emptyFolderLabel"))->text().contains(home));
        QVERIFY(!page->findChild<QPushButton*>(QStringLiteral("overviewButton"))->isEnabled());
        QVERIFY(boxes.boxes.isEmpty());

        QTest::mouseClick(page->actionButton(ActionPage::ActionNew), Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(window.runningCount() == 0 && window.isVisible(), LauncherProcess::Timeout);
        const QString saved = home + QStringLiteral("/Erika Musterfrau 2011.est11");
        QVERIFY(QFileInfo(saved).isFile());
        QCOMPARE(QDir::cleanPath(page->getLastFilePath()), saved);
        QCOMPARE(page->recommendedAction(), ActionPage::ActionLast);
        QTRY_VERIFY(page->findChild<QPushButton*>(QStringLiteral("overviewButton"))->isEnabled());
        QCOMPARE(boxes.boxes, QStringList());
        QCOMPARE(installation.boxes(), QStringList());   // those of the tax program
    }

private:
    // The settings as the launcher's start-up opens them.
    static bool openSettings()
    {
        OnlineUpdate::resetInstance();
        PixmapManager::resetInstance();
        resetSettingsSingletons();
        if (!openInstallationSettings())
            return false;
        cNvWinIni::theInstance()->setModus("normal");
        return true;
    }
};

SC_TEST(FaultsTest)
#include "tst_faults.moc"
