#include "SettingsFixture.h"
#include "TempInstallation.h"
#include "TestMain.h"

#include "IniFile.h"

#include <QDir>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QThread>

#include <functional>
#include <memory>

#include <grp.h>
#include <pwd.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int ChildCannotRun = 77;

// Runs check in a forked copy of this process and returns what it reported
// as failed; the child's exit code goes to exitCode. Run by the
// administrator, the child first becomes the user "nobody", so that file
// permissions bind it.
QStringList runInChild(const std::function<QStringList()>& check, int& exitCode)
{
    int ends[2];
    if (::pipe(ends) != 0)
        return {QStringLiteral("no pipe")};
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(ends[0]);
        if (::geteuid() == 0) {
            const passwd* nobody = ::getpwnam("nobody");
            if (!nobody || ::setgroups(0, nullptr) != 0 || ::setgid(nobody->pw_gid) != 0
                || ::setuid(nobody->pw_uid) != 0)
                ::_exit(ChildCannotRun);
        }
        const QByteArray failures = check().join(QLatin1Char('\n')).toUtf8();
        const bool written = ::write(ends[1], failures.constData(), size_t(failures.size())) == failures.size();
        ::_exit(failures.isEmpty() ? 0 : written ? 1 : 2);
    }
    ::close(ends[1]);
    QByteArray failures;
    char buffer[512];
    for (ssize_t n; (n = ::read(ends[0], buffer, sizeof buffer)) > 0;)
        failures.append(buffer, n);
    ::close(ends[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return QString::fromUtf8(failures).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

// The highest resident memory this process has had, in KiB.
long peakResidentKiB()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

std::string native(const QString& path)
{
    return path.toLocal8Bit().toStdString();
}

} // namespace

// The layered settings when the disk does not cooperate: a settings folder
// that refuses writes and writes cut off by a killed process.
class SettingsFaultsTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_install = std::make_unique<TempInstallation>();
        QVERIFY(m_install->writeResource("ORVKonf.ini", "[Settings]\nUserSettings=" + userDir().toLatin1()
                                                            + "\nHomeDataDir=" + m_install->root().toLatin1()
                                                            + "/Daten\n[Modus]\nnormal=normal.ini\n"
                                                              "[Start]\nGlobalOnly=global\n"));
        QVERIFY(m_install->writeResource("normal.ini", "[Start]\nModeOnly=normal\n"));
        openSettings();
    }

    void cleanup()
    {
        ::chmod(userDir().toLocal8Bit().constData(), 0700);
        resetSettingsSingletons();
        m_install.reset();
    }

    // Writes that the folder refuses keep their values in memory for the
    // rest of the run; nothing on disk changes and nobody is bothered with
    // a box. The administrator writes into read-only folders all the same,
    // so the check runs as the user "nobody" then.
    void readOnlyFolderKeepsValuesInMemory()
    {
        QVERIFY(settings()->WriteString("Start", "GlobalOnly", "saved"));
        QVERIFY(settings()->WriteString("Start", "Own", "saved"));
        const QStringList files = QDir(userDir()).entryList(QDir::Files);
        QCOMPARE(files.size(), 2);   // the user's copies of both files
        const QByteArray globalBefore = m_install->readFile(userDir() + files.at(0));
        const QByteArray modeBefore = m_install->readFile(userDir() + files.at(1));

        // The next run finds the folder read-only.
        QVERIFY(::chmod(m_install->root().toLocal8Bit().constData(), 0755) == 0);
        QVERIFY(::chmod(userDir().toLocal8Bit().constData(), 0555) == 0);
        openSettings();
        int exitCode = 0;
        const QStringList failures = runInChild(
            [this] {
                const QByteArray folder = userDir().toLocal8Bit();
                if (::access(folder.constData(), W_OK) == 0 || ::access(folder.constData(), R_OK | X_OK) != 0)
                    ::_exit(ChildCannotRun);
                QStringList failures;
                MessageBoxRecorder boxes;
                for (int round = 0; round < 50; ++round) {
                    const std::string value = "unsaved " + std::to_string(round);
                    for (const char* key : {"GlobalOnly", "Own", "ModeOnly"}) {
                        if (!settings()->WriteString("Start", key, value.c_str())
                            || settings()->GetString("Start", key, "") != value)
                            failures << QStringLiteral("round %1: %2 lost").arg(round).arg(QLatin1String(key));
                    }
                }
                if (!boxes.boxes.isEmpty())
                    failures << QStringLiteral("%1 boxes, the first: %2").arg(boxes.boxes.size()).arg(boxes.boxes.first());
                return failures;
            },
            exitCode);
        if (exitCode == ChildCannotRun)
            QSKIP("no user for whom the settings folder is readable but not writable");
        QVERIFY2(exitCode == 0, qPrintable(failures.join(QLatin1Char('\n'))));

        QCOMPARE(QDir(userDir()).entryList(QDir::Files), files);
        QCOMPARE(m_install->readFile(userDir() + files.at(0)), globalBefore);
        QCOMPARE(m_install->readFile(userDir() + files.at(1)), modeBefore);
    }

    // A process killed at any moment of a write leaves the settings file as
    // it was before or after that write, never cut short.
    void killedWriterLeavesCompleteFiles()
    {
        constexpr int keys = 100;
        const std::string padding(80, 'x');
        const auto keyName = [](int number) { return "k" + std::to_string(number); };
        for (int number = 0; number < keys; ++number)
            QVERIFY(settings()->WriteString("Start", keyName(number).c_str(), ("0-" + padding).c_str()));
        const QString path = fromLatin1(settings()->getUserModusIniPath());
        const QRegularExpression written(QStringLiteral("^(\\d+)-x{80}$"));

        auto* random = QRandomGenerator::global();
        pid_t lastWriter = 0;
        for (int kill = 0; kill < 60; ++kill) {
            int ready[2];
            QVERIFY(::pipe(ready) == 0);
            const pid_t writer = ::fork();
            if (writer == 0) {
                // Every write rewrites the whole file; the first one done
                // tells the test that the writes are under way.
                for (long round = 1;; ++round) {
                    settings()->WriteString("Start", keyName(int(round % keys)).c_str(),
                                            (std::to_string(round) + '-' + padding).c_str());
                    if (round == 1 && ::write(ready[1], "w", 1) != 1)
                        ::_exit(1);
                }
            }
            ::close(ready[1]);
            char signal = 0;
            const bool started = ::read(ready[0], &signal, 1) == 1;
            ::close(ready[0]);
            QThread::usleep(random->bounded(20000));
            ::kill(writer, SIGKILL);
            int status = 0;
            ::waitpid(writer, &status, 0);
            lastWriter = writer;
            QVERIFY(started);
            QVERIFY(WIFSIGNALED(status));

            const QByteArray content = m_install->readFile(path);
            QVERIFY2(content.endsWith("\r\n\r\n"), content.right(200).constData());
            cIniFile file(path.toStdString(), false, false);
            for (int number = 0; number < keys; ++number) {
                const QString value = fromLatin1(file.GetString("Start", keyName(number).c_str(), ""));
                QVERIFY2(written.match(value).hasMatch(), qPrintable(QStringLiteral("after kill %1: k%2=%3")
                                                                       .arg(kill).arg(number).arg(value)));
            }
        }

        // The next write clears away the temporary files of writers that no
        // longer run, and only those.
        const QString ownTemporary = path + QStringLiteral(".%1.7.tmp").arg(::getpid());
        const QString otherFile = path + QStringLiteral(".backup.tmp");
        for (const QString& name : {path + QStringLiteral(".%1.7.tmp").arg(lastWriter), ownTemporary, otherFile})
            QVERIFY(QFile(name).open(QIODevice::WriteOnly));
        QVERIFY(settings()->WriteString("Start", "k0", ("0-" + padding).c_str()));
        QStringList left;
        for (const QFileInfo& file : QDir(userDir()).entryInfoList({QStringLiteral("*.tmp")}, QDir::Files))
            left << file.absoluteFilePath();
        left.sort();
        QCOMPARE(left, (QStringList{ownTemporary, otherFile}));
    }

    // Files that never end, never deliver or are no files at all are read in
    // bounded memory: the settings before a long tail are seen, the rest is
    // not read. Lines that cross the reader's chunks are read whole.
    void hostileIniFilesAreReadInBoundedMemory()
    {
        const QString folder = m_install->root() + QStringLiteral("/hostile/");
        QVERIFY(QDir().mkpath(folder));
        const long peakBefore = peakResidentKiB();

        QFile sparse(folder + QStringLiteral("sparse.ini"));
        QVERIFY(sparse.open(QIODevice::WriteOnly));
        sparse.write("[Start]\nBefore=kept\n");
        if (!sparse.resize(qint64(100) << 30))
            QSKIP("no sparse file of 100 GB on this file system");
        sparse.close();
        cIniFile tail(native(sparse.fileName()), false, false);
        QCOMPARE(tail.GetString("Start", "Before", ""), std::string("kept"));

        QVERIFY(QFile::link(QStringLiteral("/dev/zero"), folder + QStringLiteral("zero.ini")));
        QVERIFY(::mkfifo(native(folder + QStringLiteral("fifo.ini")).c_str(), 0600) == 0);
        QVERIFY(QDir().mkpath(folder + QStringLiteral("folder.ini")));
        for (const char* name : {"zero.ini", "fifo.ini", "folder.ini"}) {
            cIniFile refused(native(folder + QLatin1String(name)), false, false);
            QVERIFY2(refused.GetSections().empty(), name);
        }
        // A million section headers naming the same two sections hold two sections.
        QByteArray headers;
        for (int i = 0; i < 1 << 19; ++i)
            headers += "[a]\nk=1\n[B]\nk=2\n";
        QVERIFY(m_install->writeFile(QStringLiteral("hostile/headers.ini"), headers));
        cIniFile repeated(native(folder + QStringLiteral("headers.ini")), false, false);
        QCOMPARE(repeated.GetSections(), (std::vector<std::string>{"a", "b"}));
        QCOMPARE(repeated.GetString("B", "k", ""), std::string("2"));
        QVERIFY2(peakResidentKiB() - peakBefore < 64 * 1024,
                 qPrintable(QStringLiteral("peak grew by %1 KiB").arg(peakResidentKiB() - peakBefore)));

        QByteArray many;
        for (int i = 0; i < 6000; ++i)
            many += "key" + QByteArray::number(i) + " = value " + QByteArray::number(i) + "\r\n";
        many += "last=" + QByteArray(4090, 'v') + "\n" + "tooLong=" + QByteArray(4090, 'w') + "\nafter=1\n";
        QVERIFY(m_install->writeFile(QStringLiteral("hostile/many.ini"), "[S]\n" + many));
        cIniFile ini(native(folder + QStringLiteral("many.ini")), false, false);
        const cIniFile::KeyMap* keys = ini.FindSection("s");
        QVERIFY(keys);
        QCOMPARE(keys->size(), std::size_t(6001));
        QCOMPARE(ini.GetString("S", "key4321", ""), std::string("value 4321"));
        QCOMPARE(ini.GetString("S", "last", "").size(), std::size_t(4090));
        QCOMPARE(ini.GetString("S", "after", "-"), std::string("-"));
    }

    // A file that several parts open is parsed once while it stays as it
    // was, but every change is seen, also one that keeps its size, and each
    // way of parsing gets its own result.
    void repeatedReadsSeeEveryChange()
    {
        const QString path = m_install->root() + QStringLiteral("/settled.ini");
        QVERIFY(m_install->writeFile(QStringLiteral("settled.ini"), "[Start]\nKey=one\n"));
        QThread::msleep(2200);   // only files that have settled are kept
        QCOMPARE(cIniFile(native(path), false, false).GetString("start", "key", ""), std::string("one"));
        QCOMPARE(cIniFile(native(path), false, false).GetString("start", "key", ""), std::string("one"));
        const cIniFile caseSensitive(native(path), true, false);
        QVERIFY(caseSensitive.FindKey("Start", "Key") && !caseSensitive.FindKey("start", "key"));

        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[Start]\nKey=two\n");
        file.close();
        QCOMPARE(cIniFile(native(path), false, false).GetString("start", "key", ""), std::string("two"));
    }

    // A write never goes through a link of another user's or to another
    // user's file; the user's own link to the user's own file is written
    // through, and a new file is the user's alone.
    void writesFollowOnlyTheUsersOwnLinks()
    {
        if (::geteuid() != 0)
            QSKIP("needs a second user id: runs as the administrator only");
        const passwd* nobody = ::getpwnam("nobody");
        if (!nobody)
            QSKIP("no user \"nobody\"");
        const QString folder = m_install->root() + QStringLiteral("/links/");
        QVERIFY(QDir().mkpath(folder));
        const auto file = [&](const char* name) { return native(folder + QLatin1String(name)); };
        const auto write = [&](const char* name) {
            cIniFile ini(file(name), false, false);
            ini.WriteString("s", "k", "written");
        };
        const QByteArray victimText = "the victim's notes\n";
        QVERIFY(m_install->writeFile(QStringLiteral("links/victim.txt"), victimText));
        QVERIFY(::chown(file("victim.txt").c_str(), nobody->pw_uid, nobody->pw_gid) == 0);
        QVERIFY(m_install->writeFile(QStringLiteral("links/own.ini"), "[s]\nk=old\n"));

        QVERIFY(::symlink(file("victim.txt").c_str(), file("foreignLink.ini").c_str()) == 0);
        QVERIFY(::lchown(file("foreignLink.ini").c_str(), nobody->pw_uid, nobody->pw_gid) == 0);
        QVERIFY(::symlink(file("own.ini").c_str(), file("foreignLinkToOwn.ini").c_str()) == 0);
        QVERIFY(::lchown(file("foreignLinkToOwn.ini").c_str(), nobody->pw_uid, nobody->pw_gid) == 0);
        QVERIFY(::symlink(file("victim.txt").c_str(), file("ownLinkToForeign.ini").c_str()) == 0);
        QVERIFY(::symlink(file("own.ini").c_str(), file("ownLink.ini").c_str()) == 0);
        QVERIFY(::symlink(file("missing.ini").c_str(), file("dangling.ini").c_str()) == 0);
        for (const char* name : {"foreignLink.ini", "foreignLinkToOwn.ini", "ownLinkToForeign.ini", "victim.txt",
                                 "dangling.ini", "ownLink.ini", "new.ini"})
            write(name);

        QCOMPARE(m_install->readFile(folder + QStringLiteral("victim.txt")), victimText);
        QVERIFY(QFileInfo(folder + QStringLiteral("foreignLink.ini")).isSymLink());
        QVERIFY(!QFileInfo::exists(folder + QStringLiteral("missing.ini")));
        QCOMPARE(m_install->readFile(folder + QStringLiteral("own.ini")), QByteArray("[s]\r\nk=written\r\n\r\n"));
        QVERIFY(QFileInfo(folder + QStringLiteral("ownLink.ini")).isSymLink());
        struct stat info;
        QVERIFY(::stat(file("new.ini").c_str(), &info) == 0);
        QCOMPARE(info.st_mode & 07777, mode_t(0600));
        QCOMPARE(QDir(folder).entryList({QStringLiteral("*.tmp")}, QDir::Files), QStringList());
    }

private:
    void openSettings()
    {
        resetSettingsSingletons();
        QVERIFY(settings()->setGlobalIniName(cszNvWinIniName));
        settings()->setModus("normal");
    }
    QString userDir() const { return m_install->root() + QStringLiteral("/user/"); }
    static cNvWinIni* settings() { return cNvWinIni::theInstance(); }

    std::unique_ptr<TempInstallation> m_install;
};

SC_TEST(SettingsFaultsTest)
#include "tst_settingsfaults.moc"
