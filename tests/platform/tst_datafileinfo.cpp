#include "DMDataFileInfo.h"
#include "TempInstallation.h"
#include "TestMain.h"

#include <QDir>
#include <QTest>

class DataFileInfoTest : public QObject
{
    Q_OBJECT

private:
    // Writes the case file and reads it; the reader keeps the values.
    bool read(DMDataFileInfo& info, const QByteArray& content)
    {
        const QString name = QStringLiteral("case.est11");
        if (!m_installation.writeFile(name, content))
            return false;
        return info.readFile(QDir(m_installation.root()).filePath(name).toLatin1().toStdString());
    }

    TempInstallation m_installation;

private slots:
    void readsPersonAndComment()
    {
        DMDataFileInfo info;
        QVERIFY(read(info, "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<Steuerfall Modus=\"normal\">\n"
                           "<Person>J\xFCrgen Wei\xDF" "bach</Person>\n"
                           "<Kommentar>Zeile 1\r\nZeile <b>2</b></Kommentar>\n</Steuerfall>\n"));
        QCOMPARE(info.getStringValue("Person"), std::string("J\xFCrgen Wei\xDF" "bach"));
        QCOMPARE(info.getStringValue("Kommentar"), std::string("Zeile 1\r\nZeile <b>2</b>"));
        QCOMPARE(info.getStringValue("Steuerjahr"), std::string("?"));

        // One element is enough; the missing one reads "?", an empty one "".
        QVERIFY(read(info, "<Kommentar>nur Kommentar</Kommentar>"));
        QCOMPARE(info.getStringValue("Person"), std::string("?"));
        QCOMPARE(info.getStringValue("Kommentar"), std::string("nur Kommentar"));
        QVERIFY(read(info, "<Person></Person>"));
        QCOMPARE(info.getStringValue("Person"), std::string());
        QCOMPARE(info.getStringValue("Kommentar"), std::string("?"));
    }

    void refusesFilesWithoutValues()
    {
        DMDataFileInfo info;
        QVERIFY(read(info, "<Person>Erika</Person>"));

        // A failed read forgets the values of the file read before.
        QVERIFY(!read(info, "<Steuerfall><Feld Nr=\"1\">2</Feld></Steuerfall>"));
        QCOMPARE(info.getStringValue("Person"), std::string("?"));
        QVERIFY(!read(info, QByteArray()));
        QVERIFY(!read(info, "<Person>ohne Ende"));

        QByteArray binary(4096, '\0');
        for (int i = 0; i < binary.size(); ++i)
            binary[i] = char((i * 7919) % 256);
        QVERIFY(!read(info, binary));
        // NUL bytes before the element do not hide it.
        QVERIFY(read(info, binary + "<Person>Hans</Person>"));
        QCOMPARE(info.getStringValue("Person"), std::string("Hans"));

        QVERIFY(!info.readFile(m_installation.root().toStdString() + "/missing.est11"));
        QVERIFY(!info.readFile(m_installation.root().toStdString()));
        QVERIFY(!info.readFile(std::string()));
    }

    void scansOnlyTheHeadOfHugeFiles()
    {
        DMDataFileInfo info;
        const QByteArray padding(int(DMDataFileInfo::scannedSize) - 40, ' ');
        QVERIFY(read(info, padding + "<Person>vorn</Person><Kommentar>hinten</Kommentar>"
                               + QByteArray(1 << 20, 'x')));
        QCOMPARE(info.getStringValue("Person"), std::string("vorn"));
        // The comment's closing tag lies beyond the scanned head.
        QCOMPARE(info.getStringValue("Kommentar"), std::string("?"));

        QVERIFY(!read(info, QByteArray(int(DMDataFileInfo::scannedSize), 'x')
                                + "<Person>zu weit</Person>"));
    }
};

SC_TEST(DataFileInfoTest)
#include "tst_datafileinfo.moc"
