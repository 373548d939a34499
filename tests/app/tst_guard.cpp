#include "KDSingleApplicationGuard.h"
#include "KDSingleApplicationGuard_p.h"
#include "TempInstallation.h"
#include "TestMain.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSharedMemory>
#include <QSystemSemaphore>
#include <QTest>

#include <cstring>
#include <memory>
#include <vector>

#include <signal.h>

#ifndef GUARDPROBE_PATH
#error "GUARDPROBE_PATH must name the guard probe program"
#endif

namespace {

constexpr int LineTimeout = 20000; // generous: the test machine may be busy

// One guard probe process; collects its output lines and waits for them.
class Probe
{
public:
    explicit Probe(const QString& key, const QStringList& arguments = {})
    {
        m_process.setProgram(QStringLiteral(GUARDPROBE_PATH));
        m_process.setArguments(QStringList{key} + arguments);
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
        if (!m_process.waitForFinished(LineTimeout))
            return -1;
        return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -2;
    }
    void killHard()
    {
        m_process.kill();
        m_process.waitForFinished(LineTimeout);
    }

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

// Direct access to a register, as a second user of the segment.
class RegisterView
{
public:
    explicit RegisterView(const QString& key) { setRegisterKey(m_memory, key); }
    bool attach() { return m_memory.attach(); }
    // A leftover segment may already sit under the same system key.
    bool createOrAttach() { return m_memory.create(sizeof(InstanceRegister)) || m_memory.attach(); }
    InstanceRegister* operator->() { return static_cast<InstanceRegister*>(m_memory.data()); }
    QString nativeKey() const { return m_memory.nativeKey(); }

private:
    QSharedMemory m_memory;
};

} // namespace

class KDSingleApplicationGuardTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TempInstallation> m_installation; // a private TMPDIR for the key files
    QString m_savedName;
    QStringList m_keys;

    QString freshKey()
    {
        m_keys << QStringLiteral("guardtest-%1-%2").arg(QCoreApplication::applicationPid()).arg(m_keys.size());
        return m_keys.last();
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_installation = std::make_unique<TempInstallation>();
        QVERIFY(m_installation->isValid());
        m_savedName = QCoreApplication::applicationName();
    }
    void init() { QTest::failOnWarning(QRegularExpression(QStringLiteral("KDSingleApplicationGuard"))); }
    void cleanup() { QCoreApplication::setApplicationName(m_savedName); }
    void cleanupTestCase()
    {
        // Processes that end without tearing down (killed, interrupted, exit(1))
        // leave the lock of their register behind; remove them with the folder.
        for (const QString& key : std::as_const(m_keys)) {
            QSharedMemory memory;
            setRegisterKey(memory, key);
            QSystemSemaphore(memory.key(), 1, QSystemSemaphore::Create);
        }
        m_installation.reset();
    }

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
        for (int i = 0; i < 6; ++i)
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
            // The killed primary's segment outlives it with nobody attached.
            Probe crashed(key);
            QCOMPARE(crashed.role(), QStringLiteral("primary"));
            crashed.killHard();
            Probe next(key);
            QCOMPARE(next.role(), QStringLiteral("primary"));
        }
        {
            // A secondary keeps the segment alive; slot 0 belongs to a dead process.
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
        {
            // Everybody in the register died while someone outside it holds the segment.
            RegisterView view(key);
            Probe crashed(key);
            QCOMPARE(crashed.role(), QStringLiteral("primary"));
            QVERIFY(view.attach());
            Probe alsoCrashed(key);
            QCOMPARE(alsoCrashed.role(), QStringLiteral("secondary"));
            crashed.killHard();
            alsoCrashed.killHard();
            Probe next(key);
            QCOMPARE(next.role(), QStringLiteral("primary"));
            QCOMPARE(view->processInfo[0].pid, next.pid());
            for (int i = 1; i < InstanceRegister::SlotCount; ++i)
                QVERIFY(view->processInfo[i].isFree());
        }
        {
            // A key file left in the temporary folder without a segment behind it.
            const QString staleKey = freshKey();
            QFile stale(RegisterView(staleKey).nativeKey());
            QVERIFY(stale.open(QIODevice::WriteOnly));
            stale.close();
            Probe next(staleKey);
            QCOMPARE(next.role(), QStringLiteral("primary"));
        }
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

        const QString garbledKey = freshKey();
        RegisterView garbled(garbledKey);
        QVERIFY(garbled.createOrAttach());
        std::memcpy(garbled->signature, "notaregister", 12);
        QCoreApplication::setApplicationName(garbledKey);
        QTest::ignoreMessage(QtWarningMsg, "KDSingleApplicationGuard: Instance not responding. ");
        {
            KDSingleApplicationGuard guard;
            QVERIFY(!guard.isOperational());
            QVERIFY(!guard.isPrimaryInstance());
        }

        garbled->initialise(KDSingleApplicationGuard::NoPolicy);
        garbled->bitFields |= 3u << 28;
        QTest::ignoreMessage(QtWarningMsg, "KDSingleApplicationGuard: Detected version mismatch. Highest supported "
                                           "version: 0d, actual version: 3d");
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
