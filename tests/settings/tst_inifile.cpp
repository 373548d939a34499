#include "SettingsFixture.h"
#include "TempInstallation.h"
#include "TestMain.h"

#include "CrossPlatformApi.h"
#include "Exceptions.h"
#include "IniFile.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <csignal>
#include <functional>
#include <memory>
#include <random>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utime.h>

// cIniFile against real files in a throw-away installation.
class TestIniFile : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void parseRules();
    void semicolonAsTextAndCaseSensitivity();
    void longLineEndsParse();
    void binaryGarbageDoesNotCrash();
    void writesWholeFileInCanonicalForm();
    void emptyValuesAndNullKeys();
    void rereadsWhenFileIsNewer();
    void copiesStartUnparsedAssignmentsKeepParseTime();
    void rewriteKeepsPermissionsAndLinks();
    void failedWriteKeepsOldFile();
    void writeIntoReadOnlyFolder();
    void nonNumericValueIsFatal();
    void requireExisting();
    void iniServicesOfThePlatformLayer();

private:
    std::string path(const char* name) const { return (m_install->root() + '/' + name).toStdString(); }
    static bool writeFile(const std::string& path, const QByteArray& content);
    static QByteArray readFile(const std::string& path);
    static bool setModificationTime(const std::string& path, time_t time);

    std::unique_ptr<TempInstallation> m_install;
};

void TestIniFile::init()
{
    m_install = std::make_unique<TempInstallation>();
    QVERIFY(m_install->isValid());
}

void TestIniFile::cleanup()
{
    m_install.reset();
}

bool TestIniFile::writeFile(const std::string& path, const QByteArray& content)
{
    QFile file(QString::fromStdString(path));
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(content) == content.size();
}

QByteArray TestIniFile::readFile(const std::string& path)
{
    QFile file(QString::fromStdString(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool TestIniFile::setModificationTime(const std::string& path, time_t time)
{
    const utimbuf times{time, time};
    return ::utime(path.c_str(), &times) == 0;
}

void TestIniFile::parseRules()
{
    const std::string file = path("rules.ini");
    QVERIFY(writeFile(file, "top=level\r\n"
                            "\r\n"
                            "   [Start]  and text after the bracket\r\n"
                            "  key1 = value one  \r\n"
                            "tabbed=\tvalue\r\n"
                            "semi=a;b\r\n"
                            "; a comment=with equals\r\n"
                            "# hash=not a comment\r\n"
                            "=nokey\r\n"
                            "no equals sign\r\n"
                            "multi=b=c\r\n"
                            "quoted=\"q\" \r\n"
                            "Mode=first\r\n"
                            "[START]\n"
                            "mode=last wins\n"
                            "[ Spaced ]\n"
                            "lf=only\n"
                            "[unclosed\n"
                            "after=unclosed\n"
                            "lastline=end"));
    cIniFile ini(file, false, false);

    QCOMPARE(ini.GetString("", "top", "-"), std::string("level"));
    QCOMPARE(ini.GetString("start", "key1", "-"), std::string("value one"));
    QCOMPARE(ini.GetString("start", "tabbed", "-"), std::string("\tvalue"));
    QCOMPARE(ini.GetString("start", "semi", "-"), std::string("a"));
    QCOMPARE(ini.GetString("start", "# hash", "-"), std::string("not a comment"));
    QCOMPARE(ini.GetString("start", "multi", "-"), std::string("b=c"));
    QCOMPARE(ini.GetString("start", "quoted", "-"), std::string("\"q\""));
    // Sections of the same name (after folding) merge; the last key wins.
    QCOMPARE(ini.GetString("START", "MODE", "-"), std::string("last wins"));
    QCOMPARE(ini.GetString(" spaced ", "lf", "-"), std::string("only"));
    QCOMPARE(ini.GetString(" Spaced ", "LF", "-"), std::string("only"));
    // A "[" without "]" is a line without "=": ignored, the section goes on.
    QCOMPARE(ini.GetString(" spaced ", "after", "-"), std::string("unclosed"));
    QCOMPARE(ini.GetString(" spaced ", "lastline", "-"), std::string("end"));

    QVERIFY(!ini.Contains("start", "; a comment"));
    const cIniFile::KeyMap* start = ini.FindSection("start");
    QVERIFY(start);
    QCOMPARE(start->size(), std::size_t(7));
    QVERIFY(!ini.FindSection("START"));
    QCOMPARE(ini.GetSections(), (std::vector<std::string>{"", " spaced ", "start"}));

    // The same content with LF line ends reads the same.
    const std::string lf = path("rules-lf.ini");
    QVERIFY(writeFile(lf, readFile(file).replace("\r\n", "\n")));
    cIniFile lfIni(lf, false, false);
    QCOMPARE(lfIni.FindSection("start") ? *lfIni.FindSection("start") : cIniFile::KeyMap(), *start);
    QCOMPARE(lfIni.GetSections(), ini.GetSections());
}

void TestIniFile::semicolonAsTextAndCaseSensitivity()
{
    const std::string file = path("flags.ini");
    QVERIFY(writeFile(file, "[Start]\r\nsemi=a;b \r\n;Mode=x\r\nMode=Normal\r\n[start]\r\nmode=lower\r\n"));

    cIniFile text(file, false, true);
    QCOMPARE(text.GetString("start", "semi", "-"), std::string("a;b"));
    QCOMPARE(text.GetString("start", ";mode", "-"), std::string("x"));

    cIniFile sensitive(file, true, false);
    QCOMPARE(sensitive.GetString("Start", "Mode", "-"), std::string("Normal"));
    QCOMPARE(sensitive.GetString("start", "mode", "-"), std::string("lower"));
    QCOMPARE(sensitive.GetString("START", "Mode", "-"), std::string("-"));
    QCOMPARE(sensitive.GetSections(), (std::vector<std::string>{"Start", "start"}));
}

void TestIniFile::longLineEndsParse()
{
    // The longest line that still fits: 4095 characters.
    const QByteArray fitting = "fit=" + QByteArray(4091, 'x');
    const std::string fits = path("fits.ini");
    QVERIFY(writeFile(fits, "[s]\nbefore=1\n" + fitting + "\nafter=2\n"));
    cIniFile fitsIni(fits, false, false);
    QCOMPARE(fitsIni.GetString("s", "fit", "").size(), std::size_t(4091));
    QCOMPARE(fitsIni.GetString("s", "after", "-"), std::string("2"));

    // One character more (a CR counts) ends the parse there.
    const std::string tooLong = path("toolong.ini");
    QVERIFY(writeFile(tooLong, "[s]\nbefore=1\n" + fitting + "\r\nafter=2\n"));
    cIniFile tooLongIni(tooLong, false, false);
    QCOMPARE(tooLongIni.GetString("s", "before", "-"), std::string("1"));
    QVERIFY(!tooLongIni.Contains("s", "fit"));
    QVERIFY(!tooLongIni.Contains("s", "after"));

    const std::string lastLine = path("lastline.ini");
    QVERIFY(writeFile(lastLine, "[s]\nbefore=1\n" + QByteArray(5000, 'y')));
    QCOMPARE(cIniFile(lastLine, false, false).GetString("s", "before", "-"), std::string("1"));
}

void TestIniFile::binaryGarbageDoesNotCrash()
{
    // A zero byte ends the text of its line; the next line is read as usual.
    const std::string zeros = path("zeros.ini");
    const char raw[] = "[s]\na=1\0junk=2\nb=2\n\0\0\0\nc=3";
    QVERIFY(writeFile(zeros, QByteArray(raw, sizeof raw - 1)));
    cIniFile zeroIni(zeros, false, false);
    QCOMPARE(zeroIni.GetString("s", "a", "-"), std::string("1"));
    QCOMPARE(zeroIni.GetString("s", "b", "-"), std::string("2"));
    QCOMPARE(zeroIni.GetString("s", "c", "-"), std::string("3"));
    QVERIFY(!zeroIni.Contains("s", "junk"));

    std::mt19937 random(4711);
    QByteArray garbage(256 * 1024, '\0');
    for (char& c : garbage)
        c = char(random());
    const std::string file = path("garbage.ini");
    QVERIFY(writeFile(file, garbage));
    cIniFile ini(file, false, false);
    ini.GetSections();
    QVERIFY(ini.WriteString("after", "garbage", "ok"));
    QCOMPARE(cIniFile(file, false, false).GetString("after", "garbage", "-"), std::string("ok"));

    // A folder is no INI file.
    cIniFile folder(m_install->root().toStdString(), false, false);
    QVERIFY(folder.GetSections().empty());
}

void TestIniFile::writesWholeFileInCanonicalForm()
{
    const std::string file = path("canonical.ini");
    QVERIFY(writeFile(file, "; comment\r\n[START]\r\nMode=Normal\r\n\r\n[Other]\r\nZ=1\r\nA=2\r\n"
                            "[\xC4nderung]\r\nKey=\xFC\r\nloose line\r\n"));
    cIniFile ini(file, false, false);
    QVERIFY(ini.WriteInt("Zahlen", "Negativ", -42));
    QVERIFY(ini.WriteString("", "Top", "level"));
    QCOMPARE(readFile(file), QByteArray("[]\r\ntop=level\r\n\r\n"
                                        "[other]\r\na=2\r\nz=1\r\n\r\n"
                                        "[start]\r\nmode=Normal\r\n\r\n"
                                        "[zahlen]\r\nnegativ=-42\r\n\r\n"
                                        "[\xC4nderung]\r\nkey=\xFC\r\n\r\n"));
    QCOMPARE(ini.GetInt("ZAHLEN", "negativ", 0), -42);

    // A case-sensitive file keeps its names; the order is byte-wise.
    const std::string sensitive = path("sensitive.ini");
    cIniFile sensitiveIni(sensitive, true, false);
    sensitiveIni.WriteString("b", "key", "1");
    sensitiveIni.WriteString("B", "Key", "2");
    sensitiveIni.WriteString("B", "KEY", "3");
    QCOMPARE(readFile(sensitive), QByteArray("[B]\r\nKEY=3\r\nKey=2\r\n\r\n[b]\r\nkey=1\r\n\r\n"));

    // SaveAs writes everything to the new path, which becomes the file's path.
    const std::string copy = path("sub/../copy.ini");
    QVERIFY(QDir().mkpath(m_install->root() + "/sub"));
    sensitiveIni.SaveAs(copy);
    QCOMPARE(readFile(copy), readFile(sensitive));
    QCOMPARE(sensitiveIni.GetPath(), copy);
}

void TestIniFile::emptyValuesAndNullKeys()
{
    const std::string file = path("empty.ini");
    QVERIFY(writeFile(file, "[s]\r\nempty=\r\nblank=   \r\nkey=value\r\n[t]\r\nx=1\r\n"));
    cIniFile ini(file, false, false);
    QCOMPARE(ini.GetString("s", "empty", "default"), std::string("default"));
    QCOMPARE(ini.GetString("s", "blank", nullptr), std::string());
    QCOMPARE(ini.GetInt("s", "empty", 7), 7);
    QVERIFY(ini.Contains("s", "empty"));
    QVERIFY(ini.Contains("S", "BLANK"));
    QVERIFY(!ini.Contains("s", "missing"));
    QVERIFY(!ini.Contains("s", ""));
    QVERIFY(!ini.Contains(nullptr, "key"));

    QVERIFY(ini.WriteString("s", nullptr, "ignored"));
    QVERIFY(ini.WriteString("new", nullptr, nullptr));
    QCOMPARE(readFile(file), QByteArray("[new]\r\n\r\n[s]\r\n\r\n[t]\r\nx=1\r\n\r\n"));
    QVERIFY(!ini.Contains("s", "key"));
    // An empty section is not kept when the file is read again.
    QCOMPARE(cIniFile(file, false, false).GetSections(), std::vector<std::string>{"t"});
}

void TestIniFile::rereadsWhenFileIsNewer()
{
    const std::string file = path("shared.ini");
    QVERIFY(writeFile(file, "[s]\r\nkey=one\r\n"));
    QVERIFY(setModificationTime(file, time(nullptr) - 100));
    cIniFile ini(file, false, false);
    QCOMPARE(ini.GetString("s", "key", "-"), std::string("one"));

    QVERIFY(writeFile(file, "[s]\r\nkey=two\r\nadded=yes\r\n"));
    QVERIFY(setModificationTime(file, time(nullptr) + 10));
    // Contains answers from memory; GetString looks at the file first.
    QVERIFY(!ini.Contains("s", "added"));
    QCOMPARE(ini.GetString("s", "key", "-"), std::string("two"));
    QVERIFY(ini.Contains("s", "added"));

    // A change whose time is not newer than the last parse is not seen.
    QVERIFY(writeFile(file, "[s]\r\nkey=three\r\n"));
    QVERIFY(setModificationTime(file, time(nullptr) + 10));
    QCOMPARE(ini.GetString("s", "key", "-"), std::string("two"));

    // A vanished file leaves the contents in memory.
    QVERIFY(QFile::remove(QString::fromStdString(file)));
    QCOMPARE(ini.GetString("s", "key", "-"), std::string("two"));

    // Writes go through: another reader sees them at once.
    cIniFile other(path("written.ini"), false, false);
    cIniFile reader(path("written.ini"), false, false);
    QCOMPARE(reader.GetString("s", "k", "-"), std::string("-"));
    QVERIFY(other.WriteString("s", "k", "v"));
    QVERIFY(setModificationTime(path("written.ini"), time(nullptr) + 20));
    QCOMPARE(reader.GetString("s", "k", "-"), std::string("v"));
}

void TestIniFile::copiesStartUnparsedAssignmentsKeepParseTime()
{
    const std::string file = path("copy.ini");
    const time_t parsedAt = time(nullptr) - 100;
    QVERIFY(writeFile(file, "[s]\r\nkey=old\r\n"));
    QVERIFY(setModificationTime(file, parsedAt));
    const cIniFile original(file, false, false);
    cIniFile assigned(file, false, false);

    // Change the file without making it newer: only a never-parsed object reads it.
    QVERIFY(writeFile(file, "[s]\r\nkey=new\r\n"));
    QVERIFY(setModificationTime(file, parsedAt));
    cIniFile copy(original);
    assigned = original;
    QCOMPARE(copy.GetString("s", "key", "-"), std::string("new"));
    QCOMPARE(assigned.GetString("s", "key", "-"), std::string("old"));
}

void TestIniFile::rewriteKeepsPermissionsAndLinks()
{
    const std::string file = path("perm.ini");
    QVERIFY(writeFile(file, "[s]\r\nk=1\r\n"));
    QVERIFY(::chmod(file.c_str(), 0640) == 0);
    const std::string link = path("link.ini");
    QVERIFY(::symlink(file.c_str(), link.c_str()) == 0);

    cIniFile ini(link, false, false);
    QVERIFY(ini.WriteString("s", "k", "2"));

    struct stat info;
    QVERIFY(::lstat(link.c_str(), &info) == 0 && S_ISLNK(info.st_mode));
    QVERIFY(::stat(file.c_str(), &info) == 0);
    QCOMPARE(info.st_mode & 07777, mode_t(0640));
    QCOMPARE(readFile(file), QByteArray("[s]\r\nk=2\r\n\r\n"));
    QCOMPARE(QDir(m_install->root()).entryList(QDir::Files | QDir::System),
             (QStringList{"link.ini", "perm.ini"}));
}

void TestIniFile::failedWriteKeepsOldFile()
{
    // A file size limit makes the write fail half way, as a full disk would.
    const std::string file = path("full.ini");
    const QByteArray old = "[s]\r\nk=old\r\n\r\n";
    QVERIFY(writeFile(file, old));
    cIniFile ini(file, false, false);

    rlimit previous;
    QVERIFY(::getrlimit(RLIMIT_FSIZE, &previous) == 0);
    const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limited = previous;
    limited.rlim_cur = 20;
    const bool limitSet = ::setrlimit(RLIMIT_FSIZE, &limited) == 0;
    const bool written = ini.WriteString("s", "k", std::string(200, 'n').c_str());
    ::setrlimit(RLIMIT_FSIZE, &previous);
    std::signal(SIGXFSZ, previousHandler);

    QVERIFY(limitSet);
    QVERIFY(written);
    QCOMPARE(readFile(file), old);
    QCOMPARE(QDir(m_install->root()).entryList(QDir::Files), QStringList{"full.ini"});
    QCOMPARE(ini.GetString("s", "k", "-"), std::string(200, 'n'));

    // The next write that fits replaces the file.
    QVERIFY(ini.WriteString("s", "k", "fits"));
    QCOMPARE(readFile(file), QByteArray("[s]\r\nk=fits\r\n\r\n"));
}

void TestIniFile::writeIntoReadOnlyFolder()
{
    if (::geteuid() == 0)
        QSKIP("folder permissions do not bind the super-user");
    const QString folder = m_install->root() + "/readonly";
    QVERIFY(QDir().mkpath(folder));
    const std::string file = (folder + "/ro.ini").toStdString();
    const QByteArray old = "[s]\r\nk=old\r\n";
    QVERIFY(writeFile(file, old));
    QVERIFY(::chmod(folder.toLocal8Bit().constData(), 0555) == 0);

    cIniFile ini(file, false, false);
    QVERIFY(ini.WriteString("s", "k", "new"));
    const QByteArray after = readFile(file);
    const QStringList entries = QDir(folder).entryList(QDir::Files);
    ::chmod(folder.toLocal8Bit().constData(), 0755);

    QCOMPARE(after, old);
    QCOMPARE(entries, QStringList{"ro.ini"});
    QCOMPARE(ini.GetString("s", "k", "-"), std::string("new"));
}

namespace {
// Runs the function in a child process and returns its error output and
// whether it ended by SIGABRT.
std::pair<bool, QByteArray> runAborting(const std::function<void()>& function)
{
    int pipeEnds[2];
    if (::pipe(pipeEnds) != 0)
        return {false, {}};
    const pid_t child = ::fork();
    if (child == 0) {
        std::signal(SIGABRT, SIG_DFL);
        ::dup2(pipeEnds[1], STDERR_FILENO);
        ::close(pipeEnds[0]);
        function();
        ::_exit(0);
    }
    ::close(pipeEnds[1]);
    QByteArray output;
    char buffer[256];
    ssize_t n;
    while ((n = ::read(pipeEnds[0], buffer, sizeof buffer)) > 0)
        output.append(buffer, n);
    ::close(pipeEnds[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    return {WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT, output};
}
} // namespace

void TestIniFile::nonNumericValueIsFatal()
{
    const std::string file = path("numbers.ini");
    QVERIFY(writeFile(file, "[n]\r\nprefix=12abc\r\nsigned= -7\r\nplus=+5\r\ntext=abc\r\n"
                            "huge=99999999999\r\n"));
    cIniFile ini(file, false, false);
    QCOMPARE(ini.GetInt("n", "prefix", 0), 12);
    QCOMPARE(ini.GetInt("n", "signed", 0), -7);
    QCOMPARE(ini.GetInt("n", "plus", 0), 5);
    QCOMPARE(ini.GetInt("n", "missing", 3), 3);
    QCOMPARE(ini.GetUnsignedInt("n", "prefix", 0), 12u);
    QCOMPARE(ini.GetUnsignedInt("n", "missing", 4000000000u), 4000000000u);

    for (const char* key : {"text", "huge"}) {
        const auto [aborted, output] = runAborting([&] { ini.GetInt("n", key, 0); });
        QVERIFY2(aborted, key);
        QCOMPARE(output, QByteArray("cIniFile:106: failed assertion `!\"Kein Int Wert\"'\n"));
    }
    const auto [aborted, output] = runAborting([&] { ini.GetUnsignedInt("n", "text", 0); });
    QVERIFY(aborted);
    QCOMPARE(output, QByteArray("cIniFile:128: failed assertion `!\"Kein unsigned Int Wert\"'\n"));
}

void TestIniFile::requireExisting()
{
    const std::string missing = path("missing.ini");
    try {
        cIniFile::requireExisting(missing);
        QFAIL("no exception for a missing file");
    } catch (const xNvMessageExc& error) {
        QCOMPARE(std::string(error.what()), "Inidatei \"" + missing + "\" nicht gefunden.");
    }
    QVERIFY(writeFile(missing, ""));
    cIniFile::requireExisting(missing);
}

void TestIniFile::iniServicesOfThePlatformLayer()
{
    const std::string file = path("platform.ini");
    QVERIFY(writeFile(file, "[Start]\r\nMode=x ; comment\r\nEmpty=\r\n[Other]\r\na=1\r\n"));
    QCOMPARE(CrossPlatformApi::getIniSections(file), (std::vector<std::string>{"other", "start"}));
    QCOMPARE(CrossPlatformApi::getIniSectionEntries("START", file),
             (std::vector<std::string>{"empty=", "mode=x"}));
    QVERIFY(CrossPlatformApi::getIniSectionEntries("none", file).empty());
    QCOMPARE(CrossPlatformApi::getIniString("start", "MODE", "d", file), std::string("x"));
    QCOMPARE(CrossPlatformApi::getIniString("start", "empty", "d", file), std::string("d"));
    QVERIFY(CrossPlatformApi::getIniSections(path("none.ini")).empty());
}

SC_TEST(TestIniFile)
#include "tst_inifile.moc"
