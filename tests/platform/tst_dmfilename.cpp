#include "DMFileName.h"
#include "TempInstallation.h"
#include "TestMain.h"

#include <QDir>
#include <QTest>

namespace {
std::string composed(const std::string& path)
{
    return DMFileName(path).compose();
}

DMFileEnvironment& environment()
{
    return DMFileName::getGlobalFileEnvironment();
}
} // namespace

class DMFileNameTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        DMFileName::resetGlobalFileEnvironment();
        environment().setBaseDir("/opt/app/Resources/");
    }

    void cleanupTestCase() { DMFileName::resetGlobalFileEnvironment(); }

    void expandsSymbols()
    {
        environment().setSymbol("COMMON_APPDATA", "/var/shared");
        environment().setSymbol("COMPANY", "Marvendo");
        environment().setSymbol("COMMONSETTINGS", "<COMMON_APPDATA>/<COMPANY>/Settings/");
        environment().setSymbol("Relative", "data\\in base");
        QCOMPARE(composed("<COMMONSETTINGS>statistics.ini"), std::string("/var/shared/Marvendo/Settings/statistics.ini"));
        QCOMPARE(composed("<COMMONSETTINGS>"), std::string("/var/shared/Marvendo/Settings/"));
        QCOMPARE(composed("<Relative>/x"), std::string("/opt/app/Resources/data/in base/x"));
        QCOMPARE(composed("sub\\file.ini"), std::string("/opt/app/Resources/sub/file.ini"));
        QCOMPARE(composed("/a<b/c"), std::string("/a<b/c"));
        QCOMPARE(composed("%HOME%/Steuer"), std::string("%HOME%/Steuer"));

        // Undefined symbols, including ones that differ only by case, empty the whole path.
        QCOMPARE(composed("<commonsettings>x.ini"), std::string());
        QCOMPARE(composed("/a/<>/b"), std::string());
        environment().setSymbol("Broken", "<Missing>/x");
        QCOMPARE(composed("/ok/<Broken>"), std::string());
    }

    void runawaySymbolsGiveAnEmptyPath()
    {
        environment().setSymbol("Self", "/x/<Self>");
        environment().setSymbol("Ping", "<Pong>");
        environment().setSymbol("Pong", "<Ping>");
        QCOMPARE(composed("<Self>"), std::string());
        QCOMPARE(composed("<Ping>"), std::string());

        // S1 refers to S2 ... S16 refers to S17, the last one is a folder.
        for (int i = 1; i <= 17; ++i)
            environment().setSymbol("S" + std::to_string(i), "<S" + std::to_string(i + 1) + ">");
        environment().setSymbol("S18", "/deep");
        QCOMPARE(composed("<S3>/x"), std::string("/deep/x"));   // 16 nested expansions
        QCOMPARE(composed("<S2>/x"), std::string());            // 17

        // Each level refers to the one below a thousand times: only a path
        // expander that expands every symbol once finishes this.
        std::string wide;
        for (int i = 0; i < 1000; ++i)
            wide += "<W0>";
        environment().setSymbol("W0", "");
        for (int level = 1; level <= 12; ++level) {
            std::string value = wide;
            for (std::size_t at = 0; (at = value.find("<W0>", at)) != std::string::npos; at += 4)
                value.replace(at + 2, 1, std::to_string(level - 1));
            environment().setSymbol("W" + std::to_string(level), value);
        }
        QCOMPARE(composed("/<W12>"), std::string("/"));
        environment().setSymbol("W0", "x");
        QCOMPARE(composed("/<W12>"), std::string());   // far too long to be a path
    }

    void makesPathsAbsoluteAndNormal()
    {
        environment().setSymbol("HomeDataDir", "/home/u/Steuer");
        DMFileName name("<HomeDataDir>/2011");
        QVERIFY(name.makeAbsPath(false));
        QCOMPARE(name.asParmeterisedString(), std::string("<HomeDataDir>/2011"));
        QVERIFY(name.makeAbsPath(true));
        QCOMPARE(name.asParmeterisedString(), std::string("/home/u/Steuer/2011"));

        name.setFullPath("handbuch.pdf");
        QVERIFY(name.makeAbsPath(false));
        QCOMPARE(name.normalizedString(), std::string("/opt/app/Resources/handbuch.pdf"));
        name.setFullPath("<Undefined>/x");
        QVERIFY(!name.makeAbsPath(true));

        const struct { const char* path; const char* normal; } cases[] = {
            {"/a/./b//c/../d/", "/a/b/d/"}, {"\\a\\..\\..\\b", "/b"}, {"/..", "/"},
            {"a/../../b", "../b"},          {"a/..", "."},             {"/", "/"},
        };
        for (const auto& c : cases)
            QCOMPARE(DMFileName(c.path).normalizedString(), std::string(c.normal));
    }

    void parameterisedFoldersComposeBack()
    {
        TempInstallation installation;
        const std::string root = QDir(installation.root()).canonicalPath().toStdString();
        environment().setSymbol("ROOT", root);
        environment().setSymbol("HomeDataDir", "<ROOT>/Steuerf\xE4lle");
        const std::string home = root + "/Steuerf\xE4lle";

        for (const std::string rest : {"", "/", "/2011", "/2011/", "/mit Leer zeichen/M\xE4rz",
                                       "/a/../b", "/./x//y/"}) {
            DMFileName name(home + rest);
            QVERIFY(name.makeRelPath());
            const std::string stored = name.asParmeterisedString();
            QVERIFY2(stored.rfind("<HomeDataDir>", 0) == 0, stored.c_str());
            QCOMPARE(composed(stored), composed(home + rest));
        }
        QCOMPARE(composed(home + "/./x//y/"), home + "/x/y/");

        for (const std::string& outside : {root, root + "/Steuerf\xE4lle2/x", home + "/../other", std::string("/")}) {
            DMFileName name(outside);
            QVERIFY(!name.makeRelPath());
            QCOMPARE(name.asParmeterisedString(), composed(outside));
        }

        // A symbol that is no folder leaves every path absolute.
        environment().setSymbol("HomeDataDir", "%HOME%/Steuer");
        DMFileName name(home);
        QVERIFY(!name.makeRelPath());
        QCOMPARE(name.asParmeterisedString(), home);

        QVERIFY(QDir().mkpath(QString::fromLatin1(home.c_str()) + QStringLiteral("/2011")));
        QVERIFY(DMFileName("<ROOT>/Steuerf\xE4lle/2011/").exists());
        QVERIFY(!DMFileName("<ROOT>/Steuerf\xE4lle/2012").exists());
        QVERIFY(!DMFileName("<Undefined>").exists());
    }
};

SC_TEST(DMFileNameTest)
#include "tst_dmfilename.moc"
