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
