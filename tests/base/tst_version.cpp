#include "BundleInfo.h"
#include "TempInstallation.h"
#include "TestMain.h"
#include "VersionInfo.h"

#include <QTest>

namespace {

QByteArray infoPlist(const QByteArray& entries)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\">\n<dict>\n" + entries + "</dict>\n</plist>\n";
}

std::string latin1(const QString& text)
{
    return text.toLatin1().toStdString();
}

} // namespace

class VersionTests : public QObject
{
    Q_OBJECT

private slots:
    void bundleInfo()
    {
        TempInstallation installation;
        QVERIFY(installation.writeFile(
            "Start-Center.app/Contents/Info.plist",
            infoPlist("<key>CFBundleIdentifier</key><string>de.example.startcenter</string>\n"
                      "<key>LSItems</key><array><string>nicht oben</string></array>\n"
                      "<key>CFBundleName</key>\n<string>Start-Center</string>\n"
                      "<key>NSHumanReadableCopyright</key><string>\u00A9 2012 F\u00FCr \u20AC</string>\n")));

        const BundleInfo bundle = BundleInfo::forPath(latin1(installation.executablePath()));
        QVERIFY(bundle.isValid());
        QCOMPARE(bundle.bundlePath(), latin1(installation.bundleDir()));
        QCOMPARE(bundle.value("CFBundleName"), std::string("Start-Center"));
        QCOMPARE(bundle.value("NSHumanReadableCopyright"), std::string("\xA9 2012 F\xFCr ?"));
        QCOMPARE(bundle.value("LSItems"), std::string());
        QCOMPARE(bundle.value("Missing"), std::string());
        QCOMPARE(mainBundleIdentifier(), std::string("de.example.startcenter"));
        QCOMPARE(mainBundlePath(), latin1(installation.bundleDir()));

        // Broken files give empty values; a folder outside any bundle gives none.
        QVERIFY(installation.writeFile("Broken.app/Contents/Info.plist",
                                       "<plist><dict><key>CFBundleName</key><string>X</dict>"));
        const BundleInfo broken = BundleInfo::forPath(latin1(installation.root() + "/Broken.app"));
        QVERIFY(broken.isValid());
        QCOMPARE(broken.value("CFBundleName"), std::string());
        QVERIFY(installation.writeFile("Other.app/Contents/Info.plist", "kein XML"));
        QCOMPARE(BundleInfo::forPath(latin1(installation.root() + "/Other.app")).value("CFBundleName"),
                 std::string());
        QVERIFY(!BundleInfo::forPath(latin1(installation.home())).isValid());
        QVERIFY(!BundleInfo::forPath(std::string()).isValid());
    }

    void versionFields()
    {
        TempInstallation installation;
        QVERIFY(installation.writeFile(
            "Tool.app/Contents/Info.plist",
            infoPlist("<key>CFBundleVersion</key><string>2012.1.345.6</string>"
                      "<key>CFBundleName</key><string>Werkzeug</string>")));
        QVERIFY(installation.writeFile("Tool.app/Contents/MacOS/Tool", "binary"));

        VersionInfo info(latin1(installation.root() + "/Tool.app/Contents/MacOS/Tool").c_str());
        QVERIFY(info.hasInfo());
        QCOMPARE(info.getProductName(), std::string("Werkzeug"));
        QCOMPARE(info.getStringFileInfo("Version"), std::string("2012.1.345.6"));
        QCOMPARE(info.getProductBuild(), std::string("Build-345"));
        QCOMPARE(info.getProductVersion(), std::string("Build-345"));

        int a = -1, b = -1, c = -1, d = -1;
        QVERIFY(info.getFileVersion(a, b, c, d));
        QCOMPARE(QList<int>({a, b, c, d}), QList<int>({2012, 1, 345, 6}));
        QCOMPARE(info.getFileVersionAsString(), std::string("2012.1.345.6"));

        // The running program's bundle (the temporary installation) has no plist.
        VersionInfo running;
        QVERIFY(!running.hasInfo());
        QVERIFY(!running.getFileVersion(a, b, c, d));
        QCOMPARE(a, 2012);
    }

    void compareVersions()
    {
        QCOMPARE(VersionInfo::asString(12, 0, 3, 4), std::string("12.0.3.4"));
        QCOMPARE(VersionInfo::compare("12.0.3.4", "12.0.10.1"), -1);
        QCOMPARE(VersionInfo::compare("12.1", "12.0.99.99"), 1);
        QCOMPARE(VersionInfo::compare("12.0.3.4", "12.0.3.4"), 0);
        QCOMPARE(VersionInfo::compare(1, 2, 3, 4, 1, 2, 3, 5), -1);
    }
};

SC_TEST(VersionTests)
#include "tst_version.moc"
