#include "SettingsFixture.h"
#include "TempInstallation.h"
#include "TestMain.h"

#include "CrossPlatformApi.h"
#include "Exceptions.h"
#include "IniFile.h"

#include <QDir>
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

namespace {
bool setModificationTime(const std::string& path, time_t time)
{
    const utimbuf times{time, time};
    return ::utime(path.c_str(), &times) == 0;
}

// Runs the function in a child process; whether it ended by SIGABRT, and its error output.
std::pair<bool, QByteArray> runAborting(const std::function<void()>& function)
{
    int ends[2];
    if (::pipe(ends) != 0)
        return {false, {}};
    const pid_t child = ::fork();
    if (child == 0) {
        std::signal(SIGABRT, SIG_DFL);
        ::dup2(ends[1], STDERR_FILENO);
        function();
        ::_exit(0);
    }
    ::close(ends[1]);
    QByteArray output;
    char buffer[256];
    for (ssize_t n; (n = ::read(ends[0], buffer, sizeof buffer)) > 0;)
        output.append(buffer, n);
    ::close(ends[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    return {WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT, output};
}
} // namespace

// cIniFile against real files in a throw-away installation.
class TestIniFile : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_install = std::make_unique<TempInstallation>(); }
    void cleanup() { m_install.reset(); }

    void parseRules()
    {
        const QByteArray crlf = "top=level\r\n\r\n"
                                "   [Start]  and text after the bracket\r\n"
                                "  key1 = value one  \r\n"
                                "tabbed=\tvalue\r\n"
                                "semi=a;b\r\n"
                                "; a comment=with equals\r\n"
                                "# hash=not a comment\r\n"
                                "=nokey\r\nno equals sign\r\n"
                                "multi=b=c\r\n"
                                "quoted=\"q\" \r\n"
                                "Mode=first\r\n"
                                "[START]\r\nmode=last wins\r\n"
                                "[ Spaced ]\r\n[unclosed\r\nafter=unclosed\r\n"
                                "lastline=end";
        QVERIFY(write("crlf.ini", crlf));
        cIniFile ini(path("crlf.ini"), false, false);
        QCOMPARE(ini.GetString("start", "key1", "-"), std::string("value one"));
        QCOMPARE(ini.GetString("start", "tabbed", "-"), std::string("\tvalue"));
        QCOMPARE(ini.GetString("start", "semi", "-"), std::string("a"));
        QCOMPARE(ini.GetString("start", "# hash", "-"), std::string("not a comment"));
        QCOMPARE(ini.GetString("start", "multi", "-"), std::string("b=c"));
        QCOMPARE(ini.GetString("start", "quoted", "-"), std::string("\"q\""));
        QCOMPARE(ini.GetString("START", "MODE", "-"), std::string("last wins"));
        QCOMPARE(ini.GetString(" Spaced ", "AFTER", "-"), std::string("unclosed"));
        QCOMPARE(ini.GetString(" spaced ", "lastline", "-"), std::string("end"));
        QCOMPARE(ini.FindSection("start")->size(), std::size_t(7));
        QVERIFY(!ini.FindSection("START"));
        QCOMPARE(ini.GetSections(), (std::vector<std::string>{"", " spaced ", "start"}));

        // LF line ends read the same.
        QVERIFY(write("lf.ini", QByteArray(crlf).replace("\r\n", "\n")));
        cIniFile lf(path("lf.ini"), false, false);
        QCOMPARE(*lf.FindSection("start"), *ini.FindSection("start"));

        cIniFile semicolonText(path("crlf.ini"), false, true);
        QCOMPARE(semicolonText.GetString("start", "semi", "-"), std::string("a;b"));
        QCOMPARE(semicolonText.GetString("start", "; a comment", "-"), std::string("with equals"));

        cIniFile caseSensitive(path("crlf.ini"), true, false);
        QCOMPARE(caseSensitive.GetString("Start", "Mode", "-"), std::string("first"));
        QCOMPARE(caseSensitive.GetString("START", "mode", "-"), std::string("last wins"));
        QCOMPARE(caseSensitive.GetString("start", "mode", "-"), std::string("-"));
    }

    void longLinesAndBinaryGarbage()
    {
        // 4095 characters still fit the line buffer; one more (a CR counts) ends the parse.
        const QByteArray fitting = "fit=" + QByteArray(4091, 'x');
        QVERIFY(write("fits.ini", "[s]\nbefore=1\n" + fitting + "\nafter=2\n"));
        cIniFile fits(path("fits.ini"), false, false);
        QCOMPARE(fits.GetString("s", "fit", "").size(), std::size_t(4091));
        QCOMPARE(fits.GetString("s", "after", "-"), std::string("2"));
        QVERIFY(write("toolong.ini", "[s]\nbefore=1\n" + fitting + "\r\nafter=2\n"));
        cIniFile tooLong(path("toolong.ini"), false, false);
        QCOMPARE(tooLong.GetString("s", "before", "-"), std::string("1"));
        QVERIFY(!tooLong.Contains("s", "fit"));
        QVERIFY(!tooLong.Contains("s", "after"));

        // A zero byte ends the text of its line only.
        const char zeros[] = "[s]\na=1\0junk=2\nb=2\n\0\0\0\nc=3";
        QVERIFY(write("zeros.ini", QByteArray(zeros, sizeof zeros - 1)));
        cIniFile zero(path("zeros.ini"), false, false);
        QCOMPARE(zero.GetString("s", "a", "-") + zero.GetString("s", "b", "-") + zero.GetString("s", "c", "-"),
                 std::string("123"));
        QVERIFY(!zero.Contains("s", "junk"));

        std::mt19937 random(4711);
        QByteArray garbage(256 * 1024, '\0');
        for (char& c : garbage)
            c = char(random());
        QVERIFY(write("garbage.ini", garbage));
        cIniFile(path("garbage.ini"), false, false).WriteString("after", "garbage", "ok");
        QCOMPARE(cIniFile(path("garbage.ini"), false, false).GetString("after", "garbage", "-"), std::string("ok"));
        QVERIFY(cIniFile(m_install->root().toStdString(), false, false).GetSections().empty());
    }

    void writesWholeFileInCanonicalForm()
    {
        QVERIFY(write("canonical.ini", "; comment\r\n[START]\r\nMode=Normal\r\n\r\n[Other]\r\nZ=1\r\nA=2\r\n"
                                       "[\xC4nderung]\r\nKey=\xFC\r\nEmpty=\r\nloose line\r\n"));
        cIniFile ini(path("canonical.ini"), false, false);
        QCOMPARE(ini.GetString("\xC4nderung", "empty", "default"), std::string("default"));
        QVERIFY(ini.Contains("\xC4nderung", "EMPTY"));
        QVERIFY(!ini.Contains("", "empty"));

        QVERIFY(ini.WriteInt("Zahlen", "Negativ", -42));
        QVERIFY(ini.WriteString("", "Top", "level"));
        QVERIFY(ini.WriteString("Other", nullptr, "ignored"));
        QCOMPARE(read("canonical.ini"), QByteArray("[]\r\ntop=level\r\n\r\n"
                                                   "[other]\r\n\r\n"
                                                   "[start]\r\nmode=Normal\r\n\r\n"
                                                   "[zahlen]\r\nnegativ=-42\r\n\r\n"
                                                   "[\xC4nderung]\r\nempty=\r\nkey=\xFC\r\n\r\n"));
        QCOMPARE(ini.GetInt("ZAHLEN", "negativ", 0), -42);

        // A case-sensitive file keeps its names, in byte-wise order.
        cIniFile sensitive(path("sensitive.ini"), true, false);
        sensitive.WriteString("b", "key", "1");
        sensitive.WriteString("B", "Key", "2");
        sensitive.WriteString("B", "KEY", "3");
        QCOMPARE(read("sensitive.ini"), QByteArray("[B]\r\nKEY=3\r\nKey=2\r\n\r\n[b]\r\nkey=1\r\n\r\n"));
        sensitive.SaveAs(path("copy.ini"));
        QCOMPARE(read("copy.ini"), read("sensitive.ini"));
        QCOMPARE(sensitive.GetPath(), path("copy.ini"));
    }

    // Keys and sections out of order, a key changed many times, and an
    // assigned copy that outlives the file it was copied from.
    void orderRepeatsAndManyChanges()
    {
        QVERIFY(write("order.ini", "[b]\nz=1\ny=2\nz=3\n[a]\nk=v\n[b]\nx=4\ny=5\n[c]\n"));
        auto ini = std::make_unique<cIniFile>(path("order.ini"), false, false);
        const auto keysOf = [](const cIniFile& file, const char* section) {
            QStringList entries;
            if (const cIniFile::KeyMap* keys = file.FindSection(section)) {
                for (const auto& [key, value] : *keys)
                    entries << QString::fromLatin1(key.data(), int(key.size())) + QLatin1Char('=')
                                   + QString::fromLatin1(value.data(), int(value.size()));
            }
            return entries;
        };
        QCOMPARE(ini->GetSections(), (std::vector<std::string>{"a", "b"}));
        QCOMPARE(keysOf(*ini, "b"), QStringList({"x=4", "y=5", "z=3"}));

        ini->HoldWrites();
        std::string value;
        for (int i = 0; i < 2000; ++i) {
            value = std::to_string(i) + std::string(std::size_t(i % 50), 'v');
            ini->WriteString("B", "Y", value.c_str());
            ini->WriteString("b", ("new" + std::to_string(i % 7)).c_str(), std::to_string(i).c_str());
        }
        ini->ReleaseWrites();
        QCOMPARE(keysOf(*ini, "b"), QStringList({"new0=1995", "new1=1996", "new2=1997", "new3=1998",
                                                 "new4=1999", "new5=1993", "new6=1994",
                                                 "x=4", "y=" + QString::fromStdString(value), "z=3"}));
        QCOMPARE(keysOf(*ini, "a"), QStringList({"k=v"}));

        cIniFile assigned(path("other.ini"), false, false);
        assigned = *ini;
        ini.reset();
        QCOMPARE(keysOf(assigned, "a"), QStringList({"k=v"}));
        QCOMPARE(assigned.GetString("b", "y", "-"), value);
        cIniFile reread(path("order.ini"), false, false);
        QCOMPARE(*reread.FindSection("b"), *assigned.FindSection("b"));
    }

    void rereadsWhenFileIsNewer()
    {
        const std::string file = path("shared.ini");
        const time_t parsedAt = time(nullptr) - 100;
        QVERIFY(write("shared.ini", "[s]\r\nkey=one\r\n"));
        QVERIFY(setModificationTime(file, parsedAt));
        cIniFile ini(file, false, false);
        cIniFile copy(ini);
        cIniFile assigned(file, false, false);
        assigned = ini;

        QVERIFY(write("shared.ini", "[s]\r\nkey=two\r\nadded=yes\r\n"));
        QVERIFY(setModificationTime(file, parsedAt));
        // A copy starts unparsed and reads the file; an assignment keeps the parse time.
        QCOMPARE(copy.GetString("s", "key", "-"), std::string("two"));
        QCOMPARE(assigned.GetString("s", "key", "-"), std::string("one"));

        QVERIFY(setModificationTime(file, time(nullptr) + 10));
        QVERIFY(!ini.Contains("s", "added"));   // answers from memory
        QCOMPARE(ini.GetString("s", "key", "-"), std::string("two"));
        QVERIFY(ini.Contains("s", "added"));

        QVERIFY(QFile::remove(QString::fromStdString(file)));
        QCOMPARE(ini.GetString("s", "key", "-"), std::string("two"));
    }

    void rewriteReplacesFileAtomically()
    {
        QVERIFY(write("perm.ini", "[s]\r\nk=1\r\n"));
        QVERIFY(::chmod(path("perm.ini").c_str(), 0640) == 0);
        QVERIFY(::symlink(path("perm.ini").c_str(), path("link.ini").c_str()) == 0);
        cIniFile ini(path("link.ini"), false, false);
        QVERIFY(ini.WriteString("s", "k", "2"));
        struct stat info;
        QVERIFY(::lstat(path("link.ini").c_str(), &info) == 0 && S_ISLNK(info.st_mode));
        QVERIFY(::stat(path("perm.ini").c_str(), &info) == 0);
        QCOMPARE(info.st_mode & 07777, mode_t(0640));
        QCOMPARE(read("perm.ini"), QByteArray("[s]\r\nk=2\r\n\r\n"));

        // A file size limit makes the write fail half way, as a full disk would.
        cIniFile full(path("link.ini"), false, false);
        rlimit previous;
        QVERIFY(::getrlimit(RLIMIT_FSIZE, &previous) == 0);
        const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
        rlimit limited = previous;
        limited.rlim_cur = 20;
        const bool limitSet = ::setrlimit(RLIMIT_FSIZE, &limited) == 0;
        full.WriteString("s", "k", std::string(200, 'n').c_str());
        ::setrlimit(RLIMIT_FSIZE, &previous);
        std::signal(SIGXFSZ, previousHandler);
        QVERIFY(limitSet);
        QCOMPARE(read("perm.ini"), QByteArray("[s]\r\nk=2\r\n\r\n"));
        QCOMPARE(full.GetString("s", "k", "-"), std::string(200, 'n'));
        QCOMPARE(QDir(m_install->root()).entryList(QDir::Files), (QStringList{"link.ini", "perm.ini"}));

        if (::geteuid() == 0)
            QSKIP("the read-only folder case needs a user that folder permissions bind");
        QVERIFY(::chmod(m_install->root().toLocal8Bit().constData(), 0555) == 0);
        full.WriteString("s", "k", "3");
        const QStringList entries = QDir(m_install->root()).entryList(QDir::Files);
        ::chmod(m_install->root().toLocal8Bit().constData(), 0700);
        QCOMPARE(read("perm.ini"), QByteArray("[s]\r\nk=2\r\n\r\n"));
        QCOMPARE(entries, (QStringList{"link.ini", "perm.ini"}));
        QCOMPARE(full.GetString("s", "k", "-"), std::string("3"));
    }

    void nonNumericValueIsFatal()
    {
        QVERIFY(write("numbers.ini", "[n]\r\nprefix=12abc\r\nsigned= -7\r\nplus=+5\r\ntext=abc\r\nhuge=99999999999\r\n"));
        cIniFile ini(path("numbers.ini"), false, false);
        QCOMPARE(ini.GetInt("n", "prefix", 0), 12);
        QCOMPARE(ini.GetInt("n", "signed", 0), -7);
        QCOMPARE(ini.GetInt("n", "missing", 3), 3);
        QCOMPARE(ini.GetUnsignedInt("n", "missing", 4000000000u), 4000000000u);

        for (const char* key : {"text", "huge"}) {
            const auto result = runAborting([&] { ini.GetInt("n", key, 0); });
            QVERIFY2(result.first, key);
            QCOMPARE(result.second, QByteArray("cIniFile:106: failed assertion `!\"Kein Int Wert\"'\n"));
        }
        const auto result = runAborting([&] { ini.GetUnsignedInt("n", "text", 0); });
        QVERIFY(result.first);
        QCOMPARE(result.second, QByteArray("cIniFile:128: failed assertion `!\"Kein unsigned Int Wert\"'\n"));
    }

    void missingFileAndPlatformServices()
    {
        const std::string file = path("platform.ini");
        try {
            cIniFile::requireExisting(file);
            QFAIL("no exception for a missing file");
        } catch (const xNvMessageExc& error) {
            QCOMPARE(std::string(error.what()), "Inidatei \"" + file + "\" nicht gefunden.");
        }
        QVERIFY(CrossPlatformApi::getIniSections(file).empty());

        QVERIFY(write("platform.ini", "[Start]\r\nMode=x ; comment\r\nEmpty=\r\n[Other]\r\na=1\r\n"));
        cIniFile::requireExisting(file);
        QCOMPARE(CrossPlatformApi::getIniSections(file), (std::vector<std::string>{"other", "start"}));
        QCOMPARE(CrossPlatformApi::getIniSectionEntries("START", file), (std::vector<std::string>{"empty=", "mode=x"}));
        QCOMPARE(CrossPlatformApi::getIniString("start", "MODE", "d", file), std::string("x"));
        QCOMPARE(CrossPlatformApi::getIniString("start", "empty", "d", file), std::string("d"));
    }

private:
    std::string path(const QString& name) const { return (m_install->root() + '/' + name).toStdString(); }
    bool write(const QString& name, const QByteArray& content) const { return m_install->writeFile(name, content); }
    QByteArray read(const QString& name) const { return m_install->readFile(name); }

    std::unique_ptr<TempInstallation> m_install;
};

SC_TEST(TestIniFile)
#include "tst_inifile.moc"
