#include "KDSingleApplicationGuard.h"
#include "KDSingleApplicationGuardFiles.h"
#include "KDSingleApplicationGuard_p.h"
#include "TempInstallation.h"
#include "TestMain.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QSysInfo>
#include <QTemporaryDir>
#include <QUrl>
#include <QTest>

#include <cstring>
#include <memory>
#include <vector>

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#ifndef GUARDPROBE_PATH
#error "GUARDPROBE_PATH must name the guard probe program"
#endif

namespace {

constexpr int LineTimeout = 20000; // generous: the test machine may be busy

// One guard probe process; collects its output lines and waits for them.
class Probe
{
public:
    // wrapper: a command that runs the probe, such as setpriv with its options.
    explicit Probe(const QString& key, const QStringList& arguments = {},
                   const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment(),
                   const QStringList& wrapper = {})
    {
        const QStringList command = wrapper + QStringList{QStringLiteral(GUARDPROBE_PATH), key} + arguments;
        m_process.setProgram(command.first());
        m_process.setArguments(command.mid(1));
        m_process.setProcessEnvironment(environment);
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        QObject::connect(&m_process, &QProcess::started, [this] { m_pid = m_process.processId(); });
        m_process.start();
    }
    ~Probe()
    {
        if (m_process.state() != QProcess::NotRunning) {
            send("quit");
            if (!m_process.waitForFinished(LineTimeout))
                m_process.kill();
        }
        m_process.waitForFinished();
    }

    // Not waited for at the start, so that probes can start together.
    qint64 pid()
    {
        if (!m_pid)
            m_process.waitForStarted(LineTimeout);
        return m_pid;
    }
    QString pidText() { return QString::number(pid()); }
    void send(const QByteArray& command)
    {
        m_process.write(command + '\n');
        m_process.waitForBytesWritten(LineTimeout);
    }

    // Waits for, and consumes, the first line starting with the prefix.
    QString take(const QString& prefix)
    {
        QString found;
        (void)QTest::qWaitFor(
            [&] {
                while (m_process.canReadLine())
                    m_lines << QString::fromUtf8(m_process.readLine()).chopped(1);
                for (int i = 0; i < m_lines.size(); ++i) {
                    if (m_lines.at(i).startsWith(prefix)) {
                        found = m_lines.takeAt(i);
                        return true;
                    }
                }
                return false;
            },
            LineTimeout);
        return found;
    }
    QString role() { return take(QString()).section(QLatin1Char(' '), 0, 0); }

    // Exit code once ended, -1 if it does not end in time.
    int exitCode()
    {
        if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(LineTimeout))
            return -1;
        return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -2;
    }
    void killHard()
    {
        m_process.kill();
        m_process.waitForFinished(LineTimeout);
    }
    void signal(int number) { ::kill(pid_t(pid()), number); }

private:
    QProcess m_process;
    qint64 m_pid = 0;
    QStringList m_lines;
};

// What a probe reports for a started instance with these arguments.
QString startedLine(Probe& probe, const QString& key, const QStringList& arguments, bool truncated = false)
{
    return QStringLiteral("started %1 %2 %3")
        .arg(probe.pidText())
        .arg(truncated ? 1 : 0)
        .arg((QStringList{QStringLiteral(GUARDPROBE_PATH), key} + arguments).join(QLatin1Char('|')));
}

// Direct access to a register of this process's environment, bypassing its
// locks, as a faulty instance might.
class RegisterView
{
public:
    explicit RegisterView(const QString& key)
        : m_file(registerPath(key, QStringLiteral(".register")))
    {
    }
    static QString registerPath(const QString& key, const QString& suffix)
    {
        return PrivateFolder().path() + QLatin1Char('/') + registerBaseName(key) + suffix;
    }
    bool attach()
    {
        m_file.open(QIODevice::ReadWrite);
        m_register = reinterpret_cast<InstanceRegister*>(m_file.map(0, sizeof(InstanceRegister)));
        return m_register;
    }
    InstanceRegister* operator->() { return m_register; }

private:
    QFile m_file;
    InstanceRegister* m_register = nullptr;
};

QProcessEnvironment environmentWith(const QStringList& settings)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const QString& setting : settings) {
        const QString name = setting.section(QLatin1Char('='), 0, 0);
        if (setting.contains(QLatin1Char('=')))
            environment.insert(name, setting.section(QLatin1Char('='), 1));
        else
            environment.remove(name);
    }
    return environment;
}

// Runs a command as the unprivileged user "nobody".
const QStringList asOtherUser{QStringLiteral("setpriv"), QStringLiteral("--reuid=65534"),
                              QStringLiteral("--regid=65534"), QStringLiteral("--clear-groups")};

// A shell command of the other user; its exit code.
int runAsOtherUser(const QString& command)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(asOtherUser.first(), asOtherUser.mid(1) + QStringList{QStringLiteral("sh"), QStringLiteral("-c"), command});
    return process.waitForFinished(LineTimeout) && process.exitStatus() == QProcess::NormalExit ? process.exitCode()
                                                                                                 : -1;
}

// Gone, or a zombie waiting to be reaped.
bool hasEnded(qint64 pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    return !stat.open(QIODevice::ReadOnly) || stat.readAll().contains(") Z ");
}

int fileMode(const QString& path)
{
    struct stat info;
    return ::lstat(QFile::encodeName(path).constData(), &info) == 0 ? int(info.st_mode & 07777) : -1;
}

} // namespace

class KDSingleApplicationGuardTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TempInstallation> m_installation; // private XDG folders for the registers
    QString m_savedName;
    int m_keyCount = 0;

    QString freshKey() { return QStringLiteral("guardtest-%1-%2").arg(QCoreApplication::applicationPid()).arg(++m_keyCount); }

private Q_SLOTS:
    void initTestCase()
    {
        m_installation = std::make_unique<TempInstallation>();
        QVERIFY(m_installation->isValid());
        m_savedName = QCoreApplication::applicationName();
    }
    void init() { QTest::failOnWarning(QRegularExpression(QStringLiteral("KDSingleApplicationGuard"))); }
    void cleanup() { QCoreApplication::setApplicationName(m_savedName); }
    void cleanupTestCase() { m_installation.reset(); }

    void secondStartIsReportedAndCommanded()
    {
        const QString key = freshKey();
        Probe primary(key);
        QCOMPARE(primary.role(), QStringLiteral("primary"));

        const QStringList arguments{QStringLiteral("alpha"), QStringLiteral("two words"), QStringLiteral("Gr\u00FC\u00DFe")};
        {
            Probe second(key, arguments);
            QCOMPARE(second.role(), QStringLiteral("secondary"));
            QCOMPARE(primary.take(QStringLiteral("started ") + second.pidText()), startedLine(second, key, arguments));
            second.send("quit");
            QCOMPARE(second.exitCode(), 0);
            QCOMPARE(primary.take(QStringLiteral("exited ")), QStringLiteral("exited ") + second.pidText());
        }

        // Cut at an argument boundary: 4 x 300 bytes do not fit into 1024.
        const QStringList longArguments(4, QString(300, QLatin1Char('x')));
        Probe cut(key, longArguments);
        QCOMPARE(cut.role(), QStringLiteral("secondary"));
        QCOMPARE(primary.take(QStringLiteral("started ") + cut.pidText()),
                 startedLine(cut, key, longArguments.mid(0, 3), true));

        primary.send("raise " + cut.pidText().toLatin1());
        QVERIFY(!cut.take(QStringLiteral("raise-requested")).isEmpty());
        primary.send("instances");
        QCOMPARE(primary.take(QStringLiteral("instances")),
                 QStringLiteral("instances %1 %2").arg(primary.pidText(), cut.pidText()));

        primary.send("shutdown-others");
        QCOMPARE(cut.exitCode(), 0);
        QCOMPARE(primary.take(QStringLiteral("exited ")), QStringLiteral("exited ") + cut.pidText());

        Probe killed(key);
        QCOMPARE(killed.role(), QStringLiteral("secondary"));
        QVERIFY(!primary.take(QStringLiteral("started ") + killed.pidText()).isEmpty());
        primary.send("kill-others");
        QCOMPARE(killed.exitCode(), 1);
        QCOMPARE(primary.take(QStringLiteral("exited ")), QStringLiteral("exited ") + killed.pidText());

        // The policy travels through the register to the running secondary,
        // and a later start adopts it and ends itself at once.
        Probe second(key);
        QCOMPARE(second.role(), QStringLiteral("secondary"));
        primary.send("autokill");
        QCOMPARE(primary.take(QStringLiteral("policy")), QStringLiteral("policy 1"));
        QCOMPARE(second.take(QStringLiteral("policy")), QStringLiteral("policy 1"));
        Probe third(key);
        QCOMPARE(third.exitCode(), 1);
        QCOMPARE(primary.take(QStringLiteral("exited ")), QStringLiteral("exited ") + third.pidText());
    }

    void simultaneousStartsFindOnePrimary()
    {
        const QString key = freshKey();
        std::vector<std::unique_ptr<Probe>> probes;
        for (int i = 0; i < 20; ++i)
            probes.push_back(std::make_unique<Probe>(key));
        Probe* primary = nullptr;
        for (const auto& probe : probes) {
            if (probe->role() == QLatin1String("primary")) {
                QVERIFY(!primary);
                primary = probe.get();
            }
        }
        QVERIFY(primary);
        for (const auto& probe : probes) {
            if (probe.get() != primary)
                QVERIFY(!primary->take(QStringLiteral("started ") + probe->pidText()).isEmpty());
        }
    }

    void primaryHandsOverWhenLeaving()
    {
        const QString key = freshKey();
        auto first = std::make_unique<Probe>(key);
        QCOMPARE(first->role(), QStringLiteral("primary"));
        auto second = std::make_unique<Probe>(key);
        QCOMPARE(second->role(), QStringLiteral("secondary"));

        first->send("quit");
        QCOMPARE(first->exitCode(), 0);
        QVERIFY(!second->take(QStringLiteral("became-primary")).isEmpty());

        Probe third(key);
        QCOMPARE(third.role(), QStringLiteral("secondary"));
        QVERIFY(!second->take(QStringLiteral("started ") + third.pidText()).isEmpty());

        // An interrupted primary leaves the register the same way, then ends with 1.
        ::kill(pid_t(second->pid()), SIGINT);
        QCOMPARE(second->exitCode(), 1);
        QVERIFY(!third.take(QStringLiteral("became-primary")).isEmpty());
    }

    void crashedInstancesDoNotBlockStart()
    {
        const QString key = freshKey();
        {
            // The killed primary's register and wake-up channel outlive it;
            // the next start takes both over and is woken by the one after.
            Probe crashed(key);
            QCOMPARE(crashed.role(), QStringLiteral("primary"));
            crashed.killHard();
            Probe next(key);
            QCOMPARE(next.role(), QStringLiteral("primary"));
            Probe later(key);
            QCOMPARE(later.role(), QStringLiteral("secondary"));
            QVERIFY(!next.take(QStringLiteral("started ") + later.pidText()).isEmpty());
        }
        {
            // A secondary keeps the register in use; slot 0 belongs to a dead process.
            auto crashed = std::make_unique<Probe>(key);
            QCOMPARE(crashed->role(), QStringLiteral("primary"));
            Probe survivor(key);
            QCOMPARE(survivor.role(), QStringLiteral("secondary"));
            crashed->killHard();
            auto next = std::make_unique<Probe>(key);
            QCOMPARE(next->role(), QStringLiteral("primary"));
            next->send("quit");
            QCOMPARE(next->exitCode(), 0);
            QVERIFY(!survivor.take(QStringLiteral("became-primary")).isEmpty());
        }
        // The last one out leaves nothing behind.
        QVERIFY(!QFileInfo::exists(RegisterView::registerPath(key, QStringLiteral(".register"))));
        QVERIFY(!QFileInfo::exists(RegisterView::registerPath(key, QStringLiteral(".wake"))));
    }

    void eachSessionHasItsOwnRegister()
    {
        const QString key = freshKey();
        const auto session = [](const QStringList& settings) {
            return environmentWith(QStringList{QStringLiteral("WAYLAND_DISPLAY"), QStringLiteral("XDG_SESSION_ID")}
                                   + settings);
        };
        Probe first(key, {}, session({QStringLiteral("DISPLAY=:91")}));
        QCOMPARE(first.role(), QStringLiteral("primary"));
        Probe otherDisplay(key, {}, session({QStringLiteral("DISPLAY=:92")}));
        QCOMPARE(otherDisplay.role(), QStringLiteral("primary"));
        Probe otherSession(key, {}, session({QStringLiteral("DISPLAY=:91"), QStringLiteral("XDG_SESSION_ID=7")}));
        QCOMPARE(otherSession.role(), QStringLiteral("primary"));
        Probe sameSession(key, {}, session({QStringLiteral("DISPLAY=:91")}));
        QCOMPARE(sameSession.role(), QStringLiteral("secondary"));
        QVERIFY(!first.take(QStringLiteral("started ") + sameSession.pidText()).isEmpty());
    }

    void unfitRuntimeFolderFallsBackToOwnFolder()
    {
        const QString looseFolder = m_installation->root() + QStringLiteral("/loose-run");
        QVERIFY(QDir().mkpath(looseFolder));
        QVERIFY(::chmod(QFile::encodeName(looseFolder).constData(), 0755) == 0);
        const QString linkedFolder = m_installation->root() + QStringLiteral("/linked-run");
        QVERIFY(QFile::link(m_installation->home() + QStringLiteral("/.run"), linkedFolder));

        const QString fallback = PrivateFolder::fallbackPath();
        const QStringList runtimeSettings{QStringLiteral("XDG_RUNTIME_DIR"),
                                          QStringLiteral("XDG_RUNTIME_DIR=") + m_installation->root() + "/missing",
                                          QStringLiteral("XDG_RUNTIME_DIR=") + looseFolder,
                                          QStringLiteral("XDG_RUNTIME_DIR=") + linkedFolder};
        for (const QString& setting : runtimeSettings) {
            const QString key = freshKey();
            const QProcessEnvironment environment = environmentWith({setting});
            Probe first(key, {}, environment);
            QCOMPARE(first.role(), QStringLiteral("primary"));
            Probe second(key, {}, environment);
            QCOMPARE(second.role(), QStringLiteral("secondary"));
            QVERIFY2(!first.take(QStringLiteral("started ") + second.pidText()).isEmpty(), qPrintable(setting));
            QCOMPARE(fileMode(fallback + QLatin1Char('/') + registerBaseName(key) + QStringLiteral(".register")),
                     0600);
        }

        // The own folder, opened up, is closed again before use.
        QVERIFY(::chmod(QFile::encodeName(fallback).constData(), 0755) == 0);
        const QProcessEnvironment noRuntime = environmentWith({QStringLiteral("XDG_RUNTIME_DIR")});
        QCOMPARE(Probe(freshKey(), {}, noRuntime).role(), QStringLiteral("primary"));
        QCOMPARE(fileMode(fallback), 0700);

        // Replaced by a link, it is not used: the start goes on alone.
        QVERIFY(QDir().rename(fallback, fallback + QStringLiteral(".real")));
        QVERIFY(QFile::link(fallback + QStringLiteral(".real"), fallback));
        qunsetenv("XDG_RUNTIME_DIR");
        QCoreApplication::setApplicationName(freshKey());
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral(
                                               "^KDSingleApplicationGuard: instance register unavailable, running as "
                                               "a lone instance: .*kdsingleapp-.* is a symbolic link$")));
        QVERIFY(!KDSingleApplicationGuard().isOperational());
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_installation->home() + QStringLiteral("/.run")));
        QVERIFY(QFile::remove(fallback));
        QVERIFY(QDir().rename(fallback + QStringLiteral(".real"), fallback));
    }

    void wakeUpIsOnlyAShortcut()
    {
        const QString key = freshKey();
        Probe primary(key);
        QCOMPARE(primary.role(), QStringLiteral("primary"));

        // Without the channel, the next look at the register finds the start.
        QVERIFY(QFile::remove(RegisterView::registerPath(key, QStringLiteral(".wake"))));
        Probe second(key, {QStringLiteral("--exit-after=0")});
        QCOMPARE(second.exitCode(), 0);
        QVERIFY(!primary.take(QStringLiteral("started ") + second.pidText()).isEmpty());

        // A stopped primary: a later start hands over and ends all the same.
        primary.signal(SIGSTOP);
        Probe third(key, {QStringLiteral("--exit-after=0")});
        QCOMPARE(third.role(), QStringLiteral("secondary"));
        QTRY_VERIFY_WITH_TIMEOUT(hasEnded(third.pid()), LineTimeout);
        primary.signal(SIGCONT);
        QCOMPARE(third.exitCode(), 0);
        QVERIFY(!primary.take(QStringLiteral("started ") + third.pidText()).isEmpty());
    }

    // Only as root: the other user is "nobody", through setpriv.
    void otherUserCannotReachTheRegister()
    {
        if (geteuid() != 0)
            QSKIP("needs root to run the attacks as a second user id");
        QTemporaryDir shared(QStringLiteral("/tmp/guard-attack-XXXXXX"));
        QVERIFY(shared.isValid());
        QVERIFY(::chmod(QFile::encodeName(shared.path()).constData(), 01777) == 0);
        const QString key = freshKey();
        const QString name = registerBaseName(key);
        const QString secret = QStringLiteral("secret-case-file");

        // The other user's own folder, where its own live primary of the same
        // name runs.
        const QString theirs = shared.path() + QStringLiteral("/theirs");
        QCOMPARE(runAsOtherUser(QStringLiteral("mkdir -m 0700 ") + theirs), 0);
        Probe theirPrimary(key, {}, environmentWith({QStringLiteral("XDG_RUNTIME_DIR=") + theirs}), asOtherUser);
        QCOMPARE(theirPrimary.role(), QStringLiteral("primary"));
        // The shared folder itself, with a register open to everybody and a
        // folder where the wake-up channel goes.
        QCOMPARE(runAsOtherUser(QStringLiteral("printf 'kdsingleapp\\0' > %1/%2.register && chmod 0666 %1/%2.register "
                                               "&& mkdir %1/%2.wake")
                                    .arg(shared.path(), name)),
                 0);
        for (const QString& runtime : {theirs, shared.path()}) {
            const QProcessEnvironment environment = environmentWith({QStringLiteral("XDG_RUNTIME_DIR=") + runtime});
            Probe first(key, {}, environment);
            QCOMPARE(first.role(), QStringLiteral("primary"));
            Probe second(key, {secret}, environment);
            QCOMPARE(second.role(), QStringLiteral("secondary"));
            QVERIFY(first.take(QStringLiteral("started ") + second.pidText()).contains(secret));
            // Nothing of it can the other user read, nor did it reach their files.
            QVERIFY(runAsOtherUser(QStringLiteral("cat '%1'/*.register").arg(PrivateFolder::fallbackPath())) != 0);
            QCOMPARE(runAsOtherUser(QStringLiteral("! grep -rq %1 %2").arg(secret, shared.path())), 0);
        }
        theirPrimary.send("instances");
        QCOMPARE(theirPrimary.take(QStringLiteral("instances")), QStringLiteral("instances ") + theirPrimary.pidText());

        // A slot naming the other user's live process is no instance of ours.
        {
            auto crashed = std::make_unique<Probe>(key);
            QCOMPARE(crashed->role(), QStringLiteral("primary"));
            Probe survivor(key);
            QCOMPARE(survivor.role(), QStringLiteral("secondary"));
            crashed->killHard();
            RegisterView view(key);
            QVERIFY(view.attach());
            view->processInfo[0].pid = theirPrimary.pid();
            QCOMPARE(Probe(key).role(), QStringLiteral("primary"));
        }

        // The folder the user's own would be, made by the other user with a
        // register in it: the guard stays out of it, the start goes on alone.
        const QString planted = shared.path() + QStringLiteral("/kdsingleapp-")
                              + QString::fromLatin1(QUrl::toPercentEncoding(QSysInfo::machineHostName()));
        QCOMPARE(runAsOtherUser(QStringLiteral("mkdir -m 0777 %1 && cp %2/%3.register %1/").arg(planted, shared.path(), name)),
                 0);
        Probe alone(key, {secret},
                    environmentWith({QStringLiteral("XDG_RUNTIME_DIR"), QStringLiteral("XDG_CACHE_HOME=") + shared.path()}));
        QCOMPARE(alone.role(), QStringLiteral("non-operational"));
        QCOMPARE(runAsOtherUser(QStringLiteral("! grep -rq %1 %2").arg(secret, shared.path())), 0);
    }

    void argumentStorageNeverOverruns()
    {
        ProcessInfo slot;
        slot.reset();
        QVERIFY(slot.isFree());
        bool truncated = true;
        QCOMPARE(slot.arguments(&truncated), QStringList());
        QVERIFY(!truncated);

        // 1020 bytes plus length field and end marker fill the storage exactly.
        const QStringList exact{QString(1020, QLatin1Char('a'))};
        slot.setArguments(exact);
        QCOMPARE(slot.arguments(&truncated), exact);
        QVERIFY(!truncated);

        QTest::ignoreMessage(QtWarningMsg, "KDSingleApplicationGuard: argument list is too long (bytes required: 404, "
                                           "used: 804, available: 220");
        const QStringList three(3, QString(400, QLatin1Char('b')));
        slot.setArguments(three);
        QCOMPARE(slot.arguments(&truncated), three.mid(0, 2));
        QVERIFY(truncated);

        // Lengths that run past the storage, at the start and behind an argument.
        slot.pid = 4711;
        const quint16 tooLong = 1021;
        std::memcpy(slot.argumentStorage, &tooLong, sizeof tooLong);
        QTest::ignoreMessage(QtWarningMsg, "KDSingleApplicationGuard: inconsistency detected when parsing "
                                           "command-line argument for process 4711");
        QCOMPARE(slot.arguments(&truncated), QStringList());
        QVERIFY(truncated);

        slot.setArguments(exact);
        slot.argumentStorage[1022] = 1;
        slot.argumentStorage[1023] = 0;
        QTest::ignoreMessage(QtWarningMsg, "KDSingleApplicationGuard: inconsistency detected when parsing "
                                           "command-line argument for process 4711");
        QCOMPARE(slot.arguments(&truncated), exact);
        QVERIFY(truncated);
    }

    void unusableRegisterLeavesGuardNonOperational()
    {
        QVERIFY(KDSingleApplicationGuard::Instance().isValid()); // deliberately inverted
        QCOMPARE(KDSingleApplicationGuard::Instance().pid(), -1);

        // Only a register somebody uses is read as it is; a live primary keeps it.
        const QString garbledKey = freshKey();
        Probe owner(garbledKey);
        QCOMPARE(owner.role(), QStringLiteral("primary"));
        RegisterView garbled(garbledKey);
        QVERIFY(garbled.attach());
        char header[16];
        std::memcpy(header, garbled->signature, sizeof header);
        std::memcpy(garbled->signature, "notaregister", 12);
        QCoreApplication::setApplicationName(garbledKey);
        QTest::ignoreMessage(QtWarningMsg, "KDSingleApplicationGuard: Instance not responding. ");
        {
            KDSingleApplicationGuard guard;
            QVERIFY(!guard.isOperational());
            QVERIFY(!guard.isPrimaryInstance());
        }

        std::memcpy(garbled->signature, header, sizeof header);
        garbled->bitFields |= 3u << 28;
        QTest::ignoreMessage(QtWarningMsg, "KDSingleApplicationGuard: Detected version mismatch. Highest supported "
                                           "version: 0d, actual version: 3d");
        QVERIFY(!KDSingleApplicationGuard().isOperational());
        std::memcpy(garbled->signature, header, sizeof header);

        // A lock that a hung process keeps is given up after a few seconds.
        QFile held(RegisterView::registerPath(garbledKey, QStringLiteral(".register")));
        QVERIFY(held.open(QIODevice::ReadWrite));
        struct flock accessLock = {};
        accessLock.l_type = F_WRLCK;
        accessLock.l_whence = SEEK_SET;
        accessLock.l_len = 1;
        QVERIFY(::fcntl(held.handle(), F_OFD_SETLK, &accessLock) == 0);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("lock is held by another process$")));
        QVERIFY(!KDSingleApplicationGuard().isOperational());
    }

    void fullRegisterTurnsNewcomerAway()
    {
        const QString key = freshKey();
        QCoreApplication::setApplicationName(key);
        KDSingleApplicationGuard primary(QStringList{QStringLiteral("me")});
        QVERIFY(primary.isOperational());
        QVERIFY(primary.isPrimaryInstance());
        QVERIFY(QMetaType::fromName("KDSingleApplicationGuard::Instance").isValid());

        RegisterView view(key);
        QVERIFY(view.attach());
        for (int i = 1; i < InstanceRegister::SlotCount; ++i) {
            view->processInfo[i].pid = QCoreApplication::applicationPid();
            view->processInfo[i].command = CmdNone;
            view->processInfo[i].setArguments({QString::number(i)});
        }

        QTest::ignoreMessage(QtWarningMsg, "KDSingleApplicationGuard: all 128 slots of the instance register are taken");
        KDSingleApplicationGuard turnedAway;
        QVERIFY(!turnedAway.isOperational());
        QVERIFY(!turnedAway.isPrimaryInstance());
        QTest::ignoreMessage(QtWarningMsg, "KDSingleApplicationGuard::instances: need to be operational to report on "
                                           "other instances");
        QVERIFY(turnedAway.instances().isEmpty());

        const QList<KDSingleApplicationGuard::Instance> all = primary.instances();
        QCOMPARE(all.size(), InstanceRegister::SlotCount);
        QCOMPARE(all.first().arguments(), QStringList{QStringLiteral("me")});
        QVERIFY(!all.first().isValid());

        view->processInfo[7].reset();
        KDSingleApplicationGuard secondary;
        QVERIFY(secondary.isOperational());
        QVERIFY(!secondary.isPrimaryInstance());
        QCOMPARE(view->processInfo[7].command, quint32(CmdNew));
        QTest::ignoreMessage(QtWarningMsg, "KDSingleApplicationGuard::setPolicy: need to be primary to change the policy");
        secondary.setPolicy(KDSingleApplicationGuard::AutoKillOtherInstances);

        for (int i = 1; i < InstanceRegister::SlotCount; ++i)
            view->processInfo[i].reset();
    }
};

SC_TEST(KDSingleApplicationGuardTest)
#include "tst_guard.moc"
