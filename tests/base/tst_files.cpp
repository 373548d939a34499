#include "Exceptions.h"
#include "File.h"
#include "TempInstallation.h"
#include "TestMain.h"
#include "ValidatedBuffer.h"

#include <QFile>
#include <QTest>

#include <functional>

#include <sys/stat.h>

namespace {

// The text of the xNvMessageExc that action throws; "" when it throws none.
std::string thrownText(const std::function<void()>& action)
{
    try {
        action();
    } catch (const xNvMessageExc& e) {
        return e.what();
    }
    return std::string();
}

} // namespace

class FileTests : public QObject
{
    Q_OBJECT

private slots:
    void bufferBounds()
    {
        ValidatedBuffer buffer(10, 'x');
        QCOMPARE(thrownText([&] { buffer = "123456789"; }), std::string());
        QCOMPARE(std::string(buffer), std::string("123456789"));
        QCOMPARE(thrownText([&] { buffer = "1234567890"; }), std::string(cszSourceTooLong));

        QCOMPARE(thrownText([&] { buffer[9] = 'z'; }), std::string());
        QCOMPARE(thrownText([&] { buffer[10u] = 'z'; }), std::string("Index ung\xFCltig"));
        QCOMPARE(thrownText([&] { buffer[-1] = 'z'; }), std::string("Index ung\xFCltig"));
        QVERIFY(buffer.isValid());

        QVERIFY(!buffer.set("abcdefghijk", 11));
        QVERIFY(buffer.set("abc", 3));
        QCOMPARE(buffer[2], 'c');

        // A string that fills the buffer still ends at the guard's zero byte.
        ValidatedBuffer text(std::string("abc"));
        QCOMPARE(text.getSize(), 4u);
        text[3] = 'd';
        QCOMPARE(std::string(text.getConst()), std::string("abcd"));

        QVERIFY(buffer.changeSize(3));
        QCOMPARE(std::string(buffer.getConst(), 3), std::string(3, '\0'));
    }

    void overrunIsReported()
    {
        auto* buffer = new ValidatedBuffer(8);
        buffer->get()[8] = 'X';
        QVERIFY(!buffer->isValid());
        QCOMPARE(thrownText([&] { delete buffer; }), std::string("Pufferung\xFCltig"));

        ValidatedBuffer repaired(4);
        repaired.get()[5] = 'X';
        QVERIFY(!repaired.forceValid());
        QVERIFY(repaired.isValid());
        repaired.get()[4] = 'X';
        QVERIFY(!repaired.clearBuffer());
        QVERIFY(repaired.isValid());
        QCOMPARE(repaired.getSize(), 0u);
    }

    void readAndWrite()
    {
        TempInstallation installation;
        const std::string path = (installation.root() + "/Gr\u00FC\u00DFe.txt").toLatin1().toStdString();
        cFile file(path);
        QVERIFY(!file.Exists());
        QCOMPARE(file.GetFilelength(), 0);
        QCOMPARE(file.GetModificationTimestamp(), 0);
        std::string text = "unchanged";
        QCOMPARE(file.ReadIntoString(text), 0);
        QCOMPARE(text, std::string("unchanged"));

        QVERIFY(file.WriteFromString(std::string("vor\0nach", 8)));
        QVERIFY(QFile::exists(installation.root() + "/Gr\u00FC\u00DFe.txt"));   // UTF-8 on disk
        QVERIFY(file.Exists());
        QCOMPARE(file.GetFilelength(), 8);
        QVERIFY(file.GetModificationTimestamp() > 0);
        QCOMPARE(file.ReadIntoString(text), 8);
        QCOMPARE(text, std::string("vor"));

        ValidatedBuffer buffer;
        QCOMPARE(file.readIntoBuffer(buffer), 8);
        QCOMPARE(std::string(buffer.getConst(), buffer.getSize()), std::string("vor\0nach", 8));
        QVERIFY(buffer.isValid());

        // A FIFO or an endless device is neither waited for nor read.
        const std::string fifo = (installation.root() + "/fifo").toStdString();
        QVERIFY(::mkfifo(fifo.c_str(), 0600) == 0);
        for (const std::string& path : {fifo, std::string("/dev/zero")}) {
            text = "unchanged";
            QCOMPARE(cFile(path).ReadIntoString(text), 0);
            QCOMPARE(text, std::string("unchanged"));
            QCOMPARE(cFile(path).readIntoBuffer(buffer), 0);
        }
        QCOMPARE(cFile(fifo).GetFilelength(), 0);

        QVERIFY(file.Remove());
        QVERIFY(!file.Exists());
        QVERIFY(!file.Remove());
        QVERIFY(!cFile(installation.root().toStdString() + "/missing/x.txt").WriteFromString("x"));
    }

    void truncateLogFile()
    {
        TempInstallation installation;
        const std::string path = installation.root().toStdString() + "/log.txt";
        std::string log;
        for (int line = 0; log.size() < 5000; ++line)
            log += "Zeile " + std::to_string(line) + " " + std::string(line % 37, '-') + "\n";
        log.resize(5000);
        cFile file(path);
        QVERIFY(file.WriteFromString(log));

        file.truncateFileBeginning(6000, 0, true);
        QCOMPARE(file.GetFilelength(), 5000);

        file.truncateFileBeginning(1000, 0, true);
        std::string kept;
        file.ReadIntoString(kept);
        QVERIFY(kept.compare(0, 6, "[...]\n") == 0);
        const std::string tail = kept.substr(6);
        QVERIFY(tail.size() <= 1000 && tail.size() > 900);
        QCOMPARE(log.substr(log.size() - tail.size()), tail);
        QCOMPARE(log[log.size() - tail.size() - 1], '\n');
        QVERIFY(!cFile(path + ".tmp").Exists());

        QVERIFY(file.WriteFromString(log));
        file.truncateFileBeginning(4000, 100, false);
        QCOMPARE(file.ReadIntoString(kept), 100);
        QCOMPARE(kept, log.substr(4900));
    }
};

SC_TEST(FileTests)
#include "tst_files.moc"
