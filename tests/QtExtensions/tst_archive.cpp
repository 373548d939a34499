#include "Archive.h"
#include "TempInstallation.h"
#include "TestMain.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QTest>

#include <bzlib.h>

#include <cstdint>

namespace {

QByteArray u32(std::uint32_t value)
{
    return QByteArray(reinterpret_cast<const char*>(&value), sizeof value);
}

// One entry, field by field, so that tests can also build damaged ones.
QByteArray entry(std::uint32_t method, const QByteArray& name, const QByteArray& data,
                 std::uint32_t uncompressedSize)
{
    return u32(method) + u32(std::uint32_t(name.size() + 1)) + name + '\0' + u32(uncompressedSize)
         + u32(std::uint32_t(data.size())) + data;
}

QByteArray storedEntry(const QByteArray& name, const QByteArray& data)
{
    return entry(compression::stored, name, data, std::uint32_t(data.size()));
}

QByteArray bzip2(const QByteArray& data)
{
    QByteArray out(int(data.size() * 1.02 + 600), '\0');
    unsigned int length = unsigned(out.size());
    BZ2_bzBuffToBuffCompress(out.data(), &length, const_cast<char*>(data.constData()), unsigned(data.size()),
                             9, 0, 30);
    return out.left(int(length));
}

QByteArray bytes(const cBuffer& buffer)
{
    return QByteArray(buffer.GetBuffer(), int(buffer.GetBufferLength()));
}

QByteArray noise(int size)
{
    QByteArray data(size, '\0');
    for (char& c : data)
        c = char(QRandomGenerator::global()->bounded(256));
    return data;
}

std::vector<std::string> names(std::initializer_list<const char*> list)
{
    return std::vector<std::string>(list.begin(), list.end());
}

// Overwrites bytes of a file in place.
void patch(const QString& path, qint64 offset, const QByteArray& data)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.seek(offset));
    QCOMPARE(file.write(data), data.size());
}

}

class ArchiveTest : public QObject
{
    Q_OBJECT

private:
    TempInstallation m_installation;
    QString m_path;   // a container of the entries b, a, c (in that order)
    const QByteArray m_b = storedEntry("b", "bee");
    const QByteArray m_a = entry(compression::bzip2, "a", bzip2("alpha alpha alpha"), 17);
    const QByteArray m_c = storedEntry("c", "sea");

    std::string path() const { return m_path.toStdString(); }

private slots:
    void init()
    {
        m_path = m_installation.root() + "/test.cnt";
        QVERIFY(m_installation.writeFile("test.cnt", m_b + m_a + m_c));
    }

    // Names are stored in lower case; compression that does not help falls
    // back to storing unless it is forced.
    void writesEntriesByteForByte()
    {
        const QByteArray text = QByteArray("compressible ").repeated(100);
        const QByteArray random = noise(20000);
        QVERIFY(m_installation.writeFile("src/Hello.TXT", "hello"));
        QVERIFY(m_installation.writeFile("src/text", text));
        QVERIFY(m_installation.writeFile("src/random", random));
        const std::string container = (m_installation.root() + "/written.cnt").toStdString();
        {
            cArchive writer(container, (m_installation.root() + "/src/").toStdString());
            QVERIFY(writer.AddFile("Hello.TXT", "Hello.TXT", compression::stored, false));
            QVERIFY(writer.AddFile("text", "Text", compression::bzip2, false));
            QVERIFY(writer.AddFile("Hello.TXT", "fallback", compression::bzip2, true));
            QVERIFY(writer.AddFile("Hello.TXT", "forced", compression::bzip2, false));
            QVERIFY(writer.AddFile("random", "random", compression::bzip2, true));
            QVERIFY(!writer.AddFile("missing", "missing", compression::stored, true));
        }
        {
            cArchive appender(container, std::string());
            QVERIFY(appender.AddFile((m_installation.root() + "/src/Hello.TXT").toStdString(), "again",
                                     compression::stored, false));
        }
        QCOMPARE(m_installation.readFile(QString::fromStdString(container)),
                 storedEntry("hello.txt", "hello") + entry(compression::bzip2, "text", bzip2(text), 1300)
                     + storedEntry("fallback", "hello") + entry(compression::bzip2, "forced", bzip2("hello"), 5)
                     + storedEntry("random", random) + storedEntry("again", "hello"));

        cArchive reader(container, true);
        QVERIFY(!reader.AddFile("Hello.TXT", "x", compression::stored, false));
        QCOMPARE(bytes(reader.GetFile("TEXT")), text);
    }

    void scansLazilyAndResumes()
    {
        cArchive archive(path(), true);
        QCOMPARE(bytes(archive.GetFile("B")), QByteArray("bee"));
        QCOMPARE(archive.GetFilenames(false), names({"b"}));

        // Damage b: finding a must resume after b instead of starting over.
        patch(m_path, 4, u32(0xFFFFFFF0));
        QCOMPARE(bytes(archive.GetFile("a")), QByteArray("alpha alpha alpha"));
        QCOMPARE(archive.GetFilenames(false), names({"a", "b"}));
        QCOMPARE(bytes(archive.GetFile("b")), QByteArray("bee"));   // kept in memory

        // A missing name scans to the end once; later asks use the index.
        patch(m_path, 4, u32(2));
        cArchive scanned(path(), true);
        QVERIFY(!scanned.GetFile("missing").GetBuffer());
        QCOMPARE(scanned.GetFilenames(false), names({"a", "b", "c"}));
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::Append));
        file.write(storedEntry("late", "added") + storedEntry("B", "second b"));
        file.close();
        QVERIFY(!scanned.GetFile("late").GetBuffer());
        cArchive fresh(path(), true);
        fresh.readAll();
        QCOMPARE(bytes(fresh.GetFile("late")), QByteArray("added"));
        QCOMPARE(bytes(fresh.GetFile("b")), QByteArray("bee"));   // the first of a name counts
    }

    void withoutKeepDataEveryRequestReadsTheFile()
    {
        cArchive dropping(path(), false);
        cArchive keeping(path(), true);
        keeping.readAll();
        QCOMPARE(bytes(dropping.GetFile("c")), QByteArray("sea"));

        // New data for c and a damaged b: only a reader that seeks straight
        // to c and reads it again sees the change.
        patch(m_path, m_b.size() + m_a.size() + m_c.size() - 3, "SEA");
        patch(m_path, 4, u32(0xFFFFFFF0));
        QCOMPARE(bytes(dropping.GetFile("C")), QByteArray("SEA"));
        QCOMPARE(bytes(keeping.GetFile("c")), QByteArray("sea"));
        QCOMPARE(bytes(keeping.GetFile("a")), QByteArray("alpha alpha alpha"));

        cArchive indexOnly(path(), false);
        indexOnly.readAll();
        QCOMPARE(indexOnly.GetFilenames(false), names({}));   // b's damage ends the scan at once
    }

    void damagedFilesGiveEmptyBuffers_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QByteArray>("readable");   // the entry "ok" if it can still be read
        QTest::addColumn<int>("entries");           // in the index after a full scan

        const QByteArray ok = storedEntry("ok", "fine");
        const QByteArray bad = entry(compression::bzip2, "bad", bzip2("twelve bytes"), 12);
        QTest::newRow("empty") << QByteArray() << QByteArray() << 0;
        QTest::newRow("truncated header") << ok + bad.left(10) << QByteArray("fine") << 1;
        QTest::newRow("truncated data") << ok + bad.chopped(1) << QByteArray("fine") << 1;
        QTest::newRow("zero bytes") << QByteArray(64, '\0') << QByteArray() << 1;   // "#ERROR"
        QTest::newRow("stored size past the end")
            << u32(0) + u32(2) + "x" + '\0' + u32(5) + u32(0xFFFFFFF0) + "12345" + ok << QByteArray() << 0;
        QTest::newRow("huge uncompressed size")
            << entry(compression::stored, "big", "x", 0x10000001) + ok << QByteArray() << 0;
        QTest::newRow("huge name length") << u32(0) + u32(0xFFFFFFFF) + QByteArray(100, 'n') << QByteArray() << 0;
        QTest::newRow("unknown method") << entry(7, "odd", "x", 1) + ok << QByteArray() << 0;
        QTest::newRow("recorded size too large")
            << entry(compression::bzip2, "bad", bzip2("twelve bytes"), 13) + ok << QByteArray("fine") << 2;
        QTest::newRow("recorded size too small")
            << entry(compression::bzip2, "bad", bzip2("twelve bytes"), 11) + ok << QByteArray("fine") << 2;
        QTest::newRow("not bzip2") << entry(compression::bzip2, "bad", "BZh9garbage", 12) + ok
                                   << QByteArray("fine") << 2;
    }

    void damagedFilesGiveEmptyBuffers()
    {
        QFETCH(QByteArray, content);
        QFETCH(QByteArray, readable);
        QFETCH(int, entries);
        QVERIFY(m_installation.writeFile("test.cnt", content));

        cArchive indexed(path(), true);
        QCOMPARE(int(indexed.GetFilenames(true).size()), entries);
        QCOMPARE(bytes(indexed.GetFile("ok")), readable);
        cArchive archive(path(), true);
        QVERIFY(!archive.GetFile("bad").GetBuffer());
        QVERIFY(!archive.GetFile("big").GetBuffer());
        QCOMPARE(bytes(archive.GetFile("ok")), readable);
        QVERIFY(!cArchive(path() + ".missing", true).GetFile("ok").GetBuffer());
    }

    void toolRoundTrip()
    {
        const QString tool = QStringLiteral(SC_CNTTOOL);
        const QString root = m_installation.root();
        const QMap<QString, QByteArray> files{{"empty", ""},
                                              {"Mixed.Case", "small"},
                                              {"noise.bin", noise(100000)},
                                              {"text.txt", QByteArray("line of text\n").repeated(20000)}};
        QStringList createArgs{"create", root + "/tool.cnt"};
        for (auto it = files.begin(); it != files.end(); ++it) {
            QVERIFY(m_installation.writeFile("in/" + it.key(), it.value()));
            createArgs << root + "/in/" + it.key();
        }
        const auto run = [&tool](const QStringList& args) {
            QProcess process;
            process.start(tool, args);
            process.waitForFinished();
            const bool ok = process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
            return std::make_pair(ok, process.readAllStandardOutput() + process.readAllStandardError());
        };

        // Twice: the second run must replace the container, not append to it.
        QVERIFY(run(createArgs).first);
        QVERIFY(run(createArgs).first);
        const auto listed = run({"list", root + "/tool.cnt"});
        QVERIFY(listed.first);
        QCOMPARE(listed.second,
                 QByteArray("mixed.case\tstored\t5\t5\nempty\tstored\t0\t0\nnoise.bin\tstored\t100000\t100000\n"
                            "text.txt\tbzip2\t260000\t")
                     + QByteArray::number(bzip2(files["text.txt"]).size()) + "\n");

        QVERIFY(run({"extract", root + "/tool.cnt", root + "/out"}).first);
        for (auto it = files.begin(); it != files.end(); ++it)
            QCOMPARE(m_installation.readFile("out/" + it.key().toLower()), it.value());
        QCOMPARE(QDir(root + "/out").entryList(QDir::Files).size(), files.size());

        QVERIFY(run({"create", "--store", root + "/stored.cnt", root + "/in/text.txt"}).first);
        QVERIFY(run({"list", root + "/stored.cnt"}).second.startsWith("text.txt\tstored\t260000\t260000\n"));

        // Failures: a message and a failing exit status, never a half container.
        const auto missing = run({"create", root + "/bad.cnt", root + "/in/empty", root + "/in/nothing"});
        QVERIFY(!missing.first && missing.second.contains("nothing"));
        QVERIFY(!QFile::exists(root + "/bad.cnt"));
        QVERIFY(!run({"create", root + "/no/such/folder.cnt", root + "/in/empty"}).first);
        QVERIFY(!run({"extract", root + "/tool.cnt", root + "/out", "unknown"}).first);
        QVERIFY(!run({"list"}).first);
        QVERIFY(m_installation.writeFile("damaged.cnt", storedEntry("ok", "fine") + "\x01\x00"));
        QVERIFY(run({"list", root + "/damaged.cnt"}).second.contains("damaged"));
        QVERIFY(m_installation.writeFile("evil.cnt", storedEntry("../evil", "x")));
        QVERIFY(!run({"extract", root + "/evil.cnt", root + "/out"}).first);
        QVERIFY(!QFile::exists(root + "/evil"));
    }
};

SC_TEST(ArchiveTest)
#include "tst_archive.moc"
