#include "SettingsFixture.h"
#include "TempInstallation.h"
#include "TestMain.h"

#include "IniFile.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>
#include <QTest>

#include <memory>

#ifndef SC_DEMO_PICTURES_DIR
#error "SC_DEMO_PICTURES_DIR must name the folder of the painted pictures"
#endif

// The sample installation of demo/ read with the program's own INI reader and
// settings: every file the launcher needs is there, consistent and in Latin-1.
class TestDemoInstallation : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_install = std::make_unique<SettingsSandbox>();
        QVERIFY(m_install->copyDemoResources());
    }

    void cleanup() { m_install.reset(); }

    void textFilesAreLatin1()
    {
        int checked = 0;
        QDirIterator it(m_install->resourcesDir(), {QStringLiteral("*.ini"), QStringLiteral("*.urc"),
                                                     QStringLiteral("*.htm"), QStringLiteral("*.html")},
                        QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next();
            const QByteArray data = m_install->readFile(path);
            ++checked;
            // A UTF-8 umlaut is a lead byte followed by a continuation byte,
            // which in Latin-1 text would read as "Ã¤" and the like.
            for (int i = 0; i + 1 < data.size(); ++i) {
                const auto lead = uchar(data[i]);
                const auto next = uchar(data[i + 1]);
                if (lead >= 0xC2 && lead <= 0xF4 && (next & 0xC0) == 0x80)
                    QFAIL(qPrintable(QStringLiteral("UTF-8 sequence in %1 at byte %2").arg(path).arg(i)));
            }
            for (const QByteArray& line : data.split('\n'))
                QVERIFY2(line.size() < 4096, qPrintable(path));   // the reader stops at longer lines
        }
        QVERIFY(checked >= 12);
    }

    void everyValidModeHasItsSettings()
    {
        const QStringList modes = validModes();
        QCOMPARE(modes, QStringList({"normal", "vorweg", "ermaess", "einur", "einurvor", "fest"}));
        cIniFile konf(resource("ORVKonf.ini"), false, false);
        QSet<QString> patterns;
        for (const QString& mode : modes) {
            const std::string file = konf.GetString("Modus", mode.toLatin1().constData(), "");
            QVERIFY2(!file.empty(), qPrintable(mode));
            QVERIFY2(QFileInfo::exists(m_install->resourcesDir() + fromLatin1(file)), file.c_str());

            cIniFile modeIni(resource(file.c_str()), false, false);
            QVERIFY2(!modeIni.GetString("ModusEinstellungen", "Parameter", "").empty(), file.c_str());
            // Description and pattern, with no ";" (which would start a comment).
            const QStringList open = fromLatin1(modeIni.GetString("FileExtensions", "Open", "")).split(QLatin1Char('|'));
            QCOMPARE(open.size(), 2);
            QVERIFY2(open.at(1).startsWith(QLatin1String("*.")), file.c_str());
            patterns.insert(open.at(1));
        }
        QCOMPARE(patterns.size(), modes.size());   // each mode lists only its own case files
    }

    void everyColourIsDefinedAndResolves()
    {
        cIniFile konf(resource("ORVKonf.ini"), false, false);
        const std::string colourFile = konf.GetString("ApplicationColors", "ColorDefsIni", "");
        QCOMPARE(colourFile, std::string("ColorDefs.ini"));
        cIniFile colours(resource(colourFile.c_str()), false, false);

        // Every colour of the file; those the launcher asks for at start-up
        // and misses would show up as boxes in the start-up tests.
        const cIniFile::KeyMap* section = colours.FindSection("applicationcolors");
        QVERIFY(section && section->size() > 40);
        for (const auto& entry : *section) {
            const std::string name(entry.first);
            const char* key = name.c_str();
            // Follow the references through "ColorDefs" down to an RGB triple,
            // dropping the lightness operator of each step.
            QString value = fromLatin1(colours.GetString("ApplicationColors", key, "")).trimmed();
            int depth = 0;
            while (!value.isEmpty() && !value.contains(QLatin1Char(','))) {
                QVERIFY2(++depth <= 16, key);
                const qsizetype op = value.indexOf(QRegularExpression(QStringLiteral("[+-]")));
                const QString name = (op < 0 ? value : value.left(op)).trimmed();
                value = fromLatin1(colours.GetString("ColorDefs", name.toLatin1().constData(), "")).trimmed();
            }
            const QStringList rgb = value.split(QLatin1Char(','));
            QVERIFY2(rgb.size() == 3, key);
            for (const QString& part : rgb) {
                bool ok = false;
                const int channel = part.trimmed().toInt(&ok);
                QVERIFY2(ok && channel >= 0 && channel <= 255, key);
            }
        }
    }

    void everyPictureExists()
    {
        // The container's entry names are lower case; loose files keep their case.
        const QDir container(QStringLiteral(SC_DEMO_PICTURES_DIR "/container"));
        const QDir loose(QStringLiteral(SC_DEMO_PICTURES_DIR "/media"));
        QSet<QString> pictures;
        for (const QString& file : container.entryList({QStringLiteral("*.png")}, QDir::Files))
            pictures.insert(file.toLower());
        for (const QString& file : loose.entryList({QStringLiteral("*.png")}, QDir::Files)) {
            pictures.insert(file);
            QVERIFY2(container.exists(file), "a loose picture replaces a container entry");
        }

        QStringList wanted = {
            "sc_header", "sc_divider", "normal", "vorweg", "ermaess", "einur", "einurvor", "fest",
            "sc_berater-small", "onlineberater_blau-small", "kompass-small", "handbuch", "support", "online-small",
            "optionen", "menu_report", "netviewer-small", "folder-closed-small", "cd", "menu_online", "online_konfig",
            "sc_new", "sc_open", "InspDatenuebernahme", "tool_home-small", "neu-small", "hilfe_Datenuebernahme",
            "oeffnen-small", "sc_weitere", "home", "sc_overview"};
        cIniFile info(resource("media/images.ini"), false, false);
        for (const std::string& section : info.GetSections()) {
            const std::string pic = info.GetString(section.c_str(), "pic", "");
            if (!pic.empty())
                wanted << fromLatin1(pic);
        }
        for (const QString& name : wanted) {
            const QString file = name + QStringLiteral(".png");
            QVERIFY2(pictures.contains(file) || pictures.contains(file.toLower()), qPrintable(name));
        }
    }

    // The folders follow the XDG variables (their defaults when unset); the
    // folders the launcher makes are private, folders it finds stay as they are.
    void userFoldersFollowXdgAndArePrivate()
    {
        const QString home = m_install->home();
        const QString config = m_install->root() + QStringLiteral("/xdg config");
        const QString state = m_install->root() + QStringLiteral("/xdg state");
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(config));
        qputenv("XDG_STATE_HOME", QFile::encodeName(state));
        const QString documents = fromLatin1(CrossPlatformApi::getSystemFolder(CrossPlatformApi::SysMyDocuments));
        QVERIFY(QDir().mkpath(documents));
        QVERIFY(QFile::setPermissions(documents, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner
                                                     | QFile::ReadOther | QFile::ExeOther));
        const QFile::Permissions documentsBefore = QFileInfo(documents).permissions();

        const std::string konf = resource("ORVKonf.ini");
        FolderManager::theInstance()->parseSection(konf, "DirectorySymbols");
        FolderManager::theInstance()->parseSection(konf, "DirectoryDefs");
        cNvWinIni* settings = cNvWinIni::theInstance();
        QVERIFY(settings->setGlobalIniName(cszNvWinIniName));
        QVERIFY(FolderManager::theInstance()->ensureFolderExists("<COMMONSETTINGS>"));
        QVERIFY(FolderManager::theInstance()->ensureFolderExists("<COMMONLOGFILES>"));

        QCOMPARE(fromLatin1(settings->getUserSettingsPath()), config + QStringLiteral("/Marvendo/ORV17/Start-Center/"));
        QCOMPARE(fromLatin1(settings->getHomeDataPath()), documents + QStringLiteral("/Orvane Steuerf\u00E4lle/"));

        // Every mode opens; the first switch applies default.ini once.
        for (const QString& mode : validModes()) {
            settings->setModus(mode.toStdString());
            QVERIFY(!settings->GetString("ModusEinstellungen", "Parameter", "").empty());
        }
        QCOMPARE(settings->GetInt("Settings", "SetDefaultSettings", 1), 0);
        QCOMPARE(settings->GetString("StartCenter", "OnORVStart", ""), std::string("Minimize"));
        QVERIFY(settings->IsInUserGlobalIni("StartCenter", "OnORVStart"));
        QCOMPARE(m_install->boxes.boxes, QStringList());

        const auto privateFolder = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadUser
                                 | QFile::WriteUser | QFile::ExeUser;
        const auto privateFile = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser;
        for (const QString& folder : {config + QStringLiteral("/Marvendo"), config + QStringLiteral("/Marvendo/ORV17/Start-Center"),
                                      documents + QStringLiteral("/Orvane Steuerf\u00E4lle"),
                                      home + QStringLiteral("/.local/share/Marvendo/Orvane/Settings"),
                                      state + QStringLiteral("/Marvendo/Orvane/Logfiles")})
            QVERIFY2(QFileInfo(folder).isDir() && QFileInfo(folder).permissions() == privateFolder, qPrintable(folder));
        const QString userIni = fromLatin1(settings->getUserGlobalIniPath());
        QVERIFY2(QFileInfo(userIni).permissions() == privateFile, qPrintable(userIni));
        QCOMPARE(QFileInfo(documents).permissions(), documentsBefore);

        // Unset, the variables fall back to their folders below the home folder.
        qunsetenv("XDG_CONFIG_HOME");
        qunsetenv("XDG_STATE_HOME");
        resetSettingsSingletons();
        FolderManager::theInstance()->parseSection(konf, "DirectorySymbols");
        FolderManager::theInstance()->parseSection(konf, "DirectoryDefs");
        QVERIFY(cNvWinIni::theInstance()->setGlobalIniName(cszNvWinIniName));
        QCOMPARE(fromLatin1(cNvWinIni::theInstance()->getUserSettingsPath()),
                 home + QStringLiteral("/.config/Marvendo/ORV17/Start-Center/"));
        QVERIFY(FolderManager::theInstance()->ensureFolderExists("<COMMONLOGFILES>"));
        QVERIFY(QFileInfo(home + QStringLiteral("/.local/state/Marvendo/Orvane/Logfiles")).isDir());
    }

private:
    std::string resource(const char* name) const
    {
        return (m_install->resourcesDir() + QLatin1String(name)).toStdString();
    }
    QStringList validModes()
    {
        cIniFile konf(resource("ORVKonf.ini"), false, false);
        return fromLatin1(konf.GetString("Modes", "ValidModes", "")).split(QLatin1Char(','));
    }

    std::unique_ptr<SettingsSandbox> m_install;
};

SC_TEST(TestDemoInstallation)
#include "tst_demoinstallation.moc"
