#include "TestMain.h"
#include "WaveFile.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <string>

namespace {

std::string littleEndian(std::uint32_t value, int width)
{
    std::string bytes;
    for (int i = 0; i < width; ++i)
        bytes += char((value >> (8 * i)) & 0xFF);
    return bytes;
}

std::string chunk(const std::string& id, const std::string& body, std::uint32_t declaredLength)
{
    return id + littleEndian(declaredLength, 4) + body + (body.size() % 2 ? std::string(1, '\0') : std::string());
}

std::string chunk(const std::string& id, const std::string& body)
{
    return chunk(id, body, std::uint32_t(body.size()));
}

std::string format(std::uint16_t tag, int channels, std::uint32_t rate, int bits, int blockAlign = -1)
{
    const int align = blockAlign >= 0 ? blockAlign : channels * bits / 8;
    return chunk("fmt ", littleEndian(tag, 2) + littleEndian(std::uint32_t(channels), 2) + littleEndian(rate, 4)
                             + littleEndian(rate * std::uint32_t(align), 4) + littleEndian(std::uint32_t(align), 2)
                             + littleEndian(std::uint32_t(bits), 2));
}

std::string wave(const std::string& chunks)
{
    return "RIFF" + littleEndian(std::uint32_t(chunks.size() + 4), 4) + "WAVE" + chunks;
}

} // namespace

// The start sound's file reader, on the files a broken or hostile
// installation may ship.
class TestWaveFile : public QObject
{
    Q_OBJECT

private slots:
    void readsFormatAndWholeFramesOnly();
    void soundProgramTellsWhyItStayedSilent();
};

void TestWaveFile::readsFormatAndWholeFramesOnly()
{
    // Stereo 16 bit after an odd-length chunk (padded), with half a frame at the end.
    const auto stereo = parseWave(wave(chunk("LIST", "abc") + format(1, 2, 44100, 16) + chunk("data", "0123456")));
    QVERIFY(stereo);
    QCOMPARE(int(stereo->encoding), int(WaveSound::Encoding::Signed16));
    QCOMPARE(stereo->channels, 2);
    QCOMPARE(stereo->sampleRate, 44100u);
    QCOMPARE(stereo->samples, std::string("0123"));

    // 8 bit mono; a data chunk that claims more than the file holds gives what is there.
    const auto cut = parseWave(wave(format(1, 1, 8000, 8) + chunk("data", "xyz", 0xFFFFFFFF).substr(0, 11)));
    QVERIFY(cut);
    QCOMPARE(int(cut->encoding), int(WaveSound::Encoding::Unsigned8));
    QCOMPARE(cut->samples, std::string("xyz"));

    // The extensible header names its real format; floats are played as such.
    std::string extensible = format(0xFFFE, 1, 48000, 32);
    extensible = chunk("fmt ", extensible.substr(8) + littleEndian(22, 2) + littleEndian(32, 2) + littleEndian(4, 4)
                                   + littleEndian(3, 2) + std::string(14, '\0'));
    const auto floats = parseWave(wave(extensible + chunk("data", "abcd")));
    QVERIFY(floats);
    QCOMPARE(int(floats->encoding), int(WaveSound::Encoding::Float32));

    // Everything else is refused.
    const std::string refused[] = {
        "",
        "RIFF",
        wave(chunk("data", "abcd") + format(1, 1, 8000, 8)),              // samples before their format
        wave(format(2, 1, 8000, 4) + chunk("data", "abcd")),              // compressed (ADPCM)
        wave(format(1, 0, 8000, 16) + chunk("data", "abcd")),             // no channels
        wave(format(1, 1, 0, 16) + chunk("data", "abcd")),                // no sample rate
        wave(format(1, 2, 8000, 16, 1) + chunk("data", "abcd")),          // frames of the wrong size
        wave(format(1, 1, 8000, 12) + chunk("data", "abcd")),             // 12 bit
        wave(format(1, 2, 8000, 16) + chunk("data", "ab")),               // less than one frame
        wave(format(1, 1, 8000, 8) + chunk("junk", "", 0xFFFFFFF0)),      // a chunk past the end
        wave(format(1, 1, 8000, 8)),                                      // no samples
        "RIFX" + wave(format(1, 1, 8000, 8) + chunk("data", "ab")).substr(4),   // big-endian
    };
    for (const std::string& bytes : refused)
        QVERIFY2(!parseWave(bytes), QByteArray::fromStdString(bytes).toHex().constData());
}

// The launcher logs why a start sound stayed silent from the sound program's
// exit status: each reason has its own.
void TestWaveFile::soundProgramTellsWhyItStayedSilent()
{
    QTemporaryDir folder;
    QVERIFY(folder.isValid());
    const QString playable = folder.filePath(QStringLiteral("start.wav"));
    const QString text = folder.filePath(QStringLiteral("notes.txt"));
    for (const auto& [path, content] :
         {std::pair(playable, wave(format(1, 1, 8000, 8) + chunk("data", std::string(800, '\x80')))),
          std::pair(text, std::string("kein Klang"))}) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content.data(), qint64(content.size()));
    }

    const auto exitStatus = [&](const QStringList& arguments, const QString& server) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), folder.path());   // no server socket there
        environment.remove(QStringLiteral("PULSE_SERVER"));
        if (!server.isEmpty())
            environment.insert(QStringLiteral("PULSE_SERVER"), server);
        QProcess program;
        program.setProcessEnvironment(environment);
        program.start(QStringLiteral(SC_START_SOUND), arguments);
        return program.waitForFinished(10000) && program.exitStatus() == QProcess::NormalExit ? program.exitCode()
                                                                                                  : -1;
    };
    const QString noServer = QStringLiteral("unix:") + folder.filePath(QStringLiteral("missing"));
    QCOMPARE(exitStatus({}, noServer), 1);
    QCOMPARE(exitStatus({playable, text}, noServer), 1);
    QCOMPARE(exitStatus({playable}, QString()), 2);
    QCOMPARE(exitStatus({text}, noServer), 3);
    QCOMPARE(exitStatus({folder.path()}, noServer), 3);
    QCOMPARE(exitStatus({playable}, noServer), 4);
}

SC_TEST(TestWaveFile)

#include "tst_wavefile.moc"
