#include "DMDataFileInfo.h"
#include "TempInstallation.h"
#include "TestMain.h"

#include <QTest>

class DataFileInfoTest : public QObject
{
    Q_OBJECT

private slots:
    void readsValuesFromTheHeadOfTheFile()
    {
        TempInstallation installation;
        DMDataFileInfo info;
        const std::string path = installation.root().toStdString() + "/case.est11";
        const auto read = [&](const QByteArray& content) {
            return installation.writeFile(QStringLiteral("case.est11"), content) && info.readFile(path);
        };

        QVERIFY(read("<Steuerfall><Person>J\xFCrgen</Person><Kommentar>1\r\n<b>2</b></Kommentar>"));
        QCOMPARE(info.getStringValue("Person"), std::string("J\xFCrgen"));
        QCOMPARE(info.getStringValue("Kommentar"), std::string("1\r\n<b>2</b>"));
        // One value is enough; a missing one reads "?", an empty one "".
        QVERIFY(read(QByteArray(9, '\0') + "<Person></Person>"));
        QCOMPARE(info.getStringValue("Person"), std::string());
        QCOMPARE(info.getStringValue("Kommentar"), std::string("?"));

        // Only the first 64 KiB count.
        const QByteArray head(int(DMDataFileInfo::scannedSize) - 30, ' ');
        QVERIFY(read(head + "<Person>A</Person><Kommentar>B</Kommentar>" + QByteArray(1 << 20, 'x')));
        QCOMPARE(info.getStringValue("Kommentar"), std::string("?"));
        QVERIFY(!read(head + QByteArray(30, ' ') + "<Person>A</Person>"));

        // A file that is missing or holds no values leaves none of the file before.
        QVERIFY(read("<Person>A</Person>"));
        QVERIFY(!info.readFile(path + ".fehlt"));
        QCOMPARE(info.getStringValue("Person"), std::string("?"));
        QVERIFY(!info.readFile(installation.root().toStdString()));
        QVERIFY(!read(QByteArray()));
        QVERIFY(!read("<Person>ohne Ende"));
        QVERIFY(!read(QByteArray("\x89PNG\r\n\x1a\n\x00\x00\x00\rIHDR\xff\xfe", 18)));
    }
};

SC_TEST(DataFileInfoTest)
#include "tst_datafileinfo.moc"
