#include "KDSingleApplicationGuard.h"
#include "AppLogging.h"
#include "KDSingleApplicationGuardFiles.h"
#include "KDSingleApplicationGuard_p.h"

#include <QBasicTimer>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFile>
#include <QSocketNotifier>
#include <QTimerEvent>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <limits>

#include <pthread.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int PollInterval = 250;    // ms between two looks at the register
constexpr int JoinTimeout = 3000;    // ms a start or an exit waits for the register's lock
constexpr int RunningTimeout = 20;   // ms a look or command waits for it; the next poll tries again

const char Signature[] = "kdsingleapp";
static_assert(sizeof(Signature) == sizeof(InstanceRegister::signature), "signature fills its field");

constexpr quint32 PolicyMask = 0xFF;
constexpr int SlotCountShift = 8;
constexpr int VersionShift = 28;

quint16 readUInt16(const char* from)
{
    quint16 value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

void writeUInt16(char* to, quint16 value)
{
    std::memcpy(to, &value, sizeof value);
}

// A running process of this user. kill() with signal 0 fails with EPERM for
// another user's process; for root, whom it never refuses, the owner of the
// process's /proc entry tells. Async-signal-safe.
bool isOwnLiveProcess(qint64 pid)
{
    if (pid <= 0 || pid > std::numeric_limits<pid_t>::max() || ::kill(pid_t(pid), 0) != 0)
        return false;
    char path[32] = "/proc/";
    char digits[24];
    int count = 0;
    for (qint64 rest = pid; rest > 0; rest /= 10)
        digits[count++] = char('0' + rest % 10);
    char* end = path + 6;
    while (count > 0)
        *end++ = digits[--count];
    *end = '\0';
    struct stat info;
    return ::stat(path, &info) != 0 || info.st_uid == geteuid();
}

KDSingleApplicationGuard::Policy policyFrom(int value)
{
    return value == KDSingleApplicationGuard::AutoKillOtherInstances ? KDSingleApplicationGuard::AutoKillOtherInstances
                                                                     : KDSingleApplicationGuard::NoPolicy;
}

// The guard then runs as a lone instance, as without shared memory.
bool registerUnavailable(const QString& reason)
{
    qCWarning(lcStartUp, "KDSingleApplicationGuard: instance register unavailable, running as a lone instance: %s",
              qPrintable(reason));
    return false;
}

void warnNotResponding()
{
    qWarning("KDSingleApplicationGuard: Instance not responding. ");
}

// A header that is not a register of this layout is nothing a guard wrote;
// waiting would not help.
bool isUsable(const InstanceRegister& reg)
{
    if (!reg.isValid()) {
        warnNotResponding();
        return false;
    }
    if (reg.version() != InstanceRegister::LayoutVersion) {
        qWarning("KDSingleApplicationGuard: Detected version mismatch. Highest supported version: %ud, actual "
                 "version: %ud",
                 InstanceRegister::LayoutVersion, reg.version());
        return false;
    }
    return true;
}

// Holds the register's lock for one operation. SIGINT stays blocked meanwhile,
// so the interrupt handler, which takes the same lock, never finds the register
// half written and never waits for a lock its own thread holds.
class LockedRegister
{
public:
    LockedRegister(RegisterFile& file, QDeadlineTimer deadline)
        : m_file(file)
    {
        sigset_t interrupt;
        sigemptyset(&interrupt);
        sigaddset(&interrupt, SIGINT);
        pthread_sigmask(SIG_BLOCK, &interrupt, &m_savedMask);
        m_locked = file.lock(deadline);
        if (!m_locked)
            pthread_sigmask(SIG_SETMASK, &m_savedMask, nullptr);
    }
    ~LockedRegister() { unlock(); }
    LockedRegister(const LockedRegister&) = delete;
    LockedRegister& operator=(const LockedRegister&) = delete;

    void unlock()
    {
        if (!m_locked)
            return;
        m_locked = false;
        m_file.unlock();
        pthread_sigmask(SIG_SETMASK, &m_savedMask, nullptr);
    }

    bool isLocked() const { return m_locked; }
    // Locked, with the register mapped.
    explicit operator bool() const { return m_locked && m_file.data(); }
    InstanceRegister* operator->() const { return m_file.data(); }
    InstanceRegister& operator*() const { return *m_file.data(); }

private:
    RegisterFile& m_file;
    bool m_locked = false;
    sigset_t m_savedMask;
};

// Marks the slots of processes that ended without leaving (killed, crashed)
// as exited, so that the primary reports and frees them like any other.
void markVanishedInstances(InstanceRegister& reg)
{
    for (ProcessInfo& slot : reg.processInfo) {
        if (slot.isTaken() && !isOwnLiveProcess(slot.pid))
            slot.command |= CmdExited;
    }
}

bool hasLiveInstance(const InstanceRegister& reg)
{
    for (const ProcessInfo& slot : reg.processInfo) {
        if (slot.isTaken())
            return true;
    }
    return false;
}

// Slot 0 has been left and no instance is on its way to take it over.
bool primaryVacant(const InstanceRegister& reg)
{
    if (reg.processInfo[0].isTaken())
        return false;
    for (const ProcessInfo& slot : reg.processInfo) {
        if (slot.isTaken() && (slot.command & CmdBecomePrimary))
            return false;
    }
    return true;
}

void claim(ProcessInfo& slot, const QStringList& arguments, quint32 command)
{
    slot.pid = QCoreApplication::applicationPid();
    slot.command = command;
    slot.reserved = 0;
    slot.setArguments(arguments);
}

} // namespace

// ---------------------------------------------------------------------------
// Register layout

void ProcessInfo::reset()
{
    pid = -1;
    command = CmdFree;
    reserved = 0;
    std::memset(argumentStorage, 0, sizeof argumentStorage);
    writeUInt16(argumentStorage, RegularEnd);
}

bool ProcessInfo::isFree() const
{
    ProcessInfo freeSlot;
    freeSlot.reset();
    return command == freeSlot.command
        && std::memcmp(argumentStorage, freeSlot.argumentStorage, sizeof argumentStorage) == 0;
}

bool ProcessInfo::isTaken() const
{
    return !(command & (CmdExited | CmdFree));
}

void ProcessInfo::setArguments(const QStringList& arguments)
{
    std::memset(argumentStorage, 0, sizeof argumentStorage);
    int used = 0;
    quint16 end = RegularEnd;
    for (const QString& argument : arguments) {
        const QByteArray utf8 = argument.toUtf8();
        const int available = ArgumentBytes - used;
        // The length field, the bytes, and room for the end marker behind them.
        const qsizetype required = utf8.size() + 4;
        if (required > available || utf8.size() > 0xFFFF) {
            qWarning("KDSingleApplicationGuard: argument list is too long (bytes required: %d, used: %d, available: %d",
                     int(required), used, available);
            end = PrematureEnd;
            break;
        }
        writeUInt16(argumentStorage + used, quint16(utf8.size()));
        std::memcpy(argumentStorage + used + 2, utf8.constData(), size_t(utf8.size()));
        used += 2 + int(utf8.size());
    }
    writeUInt16(argumentStorage + used, end);
}

QStringList ProcessInfo::arguments(bool* truncated) const
{
    QStringList result;
    *truncated = false;
    // Each step checks that the argument and the next length field fit, so
    // 'position' never gets closer than two bytes to the end.
    int position = 0;
    for (;;) {
        const quint16 length = readUInt16(argumentStorage + position);
        if (length == PrematureEnd) {
            *truncated = true;
            break;
        }
        if (length == RegularEnd)
            break;
        if (length + 4 > ArgumentBytes - position) {
            qWarning("KDSingleApplicationGuard: inconsistency detected when parsing command-line argument for process %lld",
                     qlonglong(pid));
            *truncated = true;
            break;
        }
        result << QString::fromUtf8(argumentStorage + position + 2, length);
        position += 2 + length;
    }
    return result;
}

void InstanceRegister::initialise(int policy)
{
    std::memcpy(signature, Signature, sizeof signature);
    bitFields = (quint32(SlotCount) << SlotCountShift) | (LayoutVersion << VersionShift);
    setPolicy(policy);
    for (ProcessInfo& slot : processInfo)
        slot.reset();
}

bool InstanceRegister::isValid() const
{
    return std::strncmp(signature, Signature, sizeof signature) == 0;
}

int InstanceRegister::policy() const
{
    return int(bitFields & PolicyMask);
}

void InstanceRegister::setPolicy(int policy)
{
    bitFields = (bitFields & ~PolicyMask) | (quint32(policy) & PolicyMask);
}

quint32 InstanceRegister::version() const
{
    return bitFields >> VersionShift;
}

// ---------------------------------------------------------------------------
// Instance

class KDSingleApplicationGuard::Instance::Data : public QSharedData
{
public:
    qint64 pid = -1;
    QStringList arguments;
    bool truncated = false;
};

KDSingleApplicationGuard::Instance::Instance() = default;
KDSingleApplicationGuard::Instance::Instance(const Instance& other) = default;
KDSingleApplicationGuard::Instance& KDSingleApplicationGuard::Instance::operator=(const Instance& other) = default;
KDSingleApplicationGuard::Instance::~Instance() = default;

KDSingleApplicationGuard::Instance::Instance(qint64 pid, const QStringList& arguments, bool truncated)
    : d(new Data)
{
    d->pid = pid;
    d->arguments = arguments;
    d->truncated = truncated;
}

bool KDSingleApplicationGuard::Instance::isValid() const
{
    return !d || d->pid < 0;
}

qint64 KDSingleApplicationGuard::Instance::pid() const
{
    return d ? d->pid : -1;
}

QStringList KDSingleApplicationGuard::Instance::arguments() const
{
    return d ? d->arguments : QStringList();
}

bool KDSingleApplicationGuard::Instance::areArgumentsTruncated() const
{
    return d && d->truncated;
}

// ---------------------------------------------------------------------------
// Private part

class KDSingleApplicationGuard::Private
{
public:
    Private(KDSingleApplicationGuard* guard, Policy initialPolicy)
        : q(guard)
        , policy(initialPolicy)
    {
    }

    void start(const QStringList& arguments);
    void poll();
    void leave();
    void shutdownInstance();
    void commandOthers(quint32 command);
    bool checkOperational(const char* function, const char* purpose) const;
    bool checkPrimary(const char* function, const char* purpose) const;

    static Instance instanceFrom(const ProcessInfo& slot);
    static void sendCommand(qint64 pid, quint32 command);
    static void onInterrupt(int signal);

    static KDSingleApplicationGuard* primaryInstance;

    KDSingleApplicationGuard* const q;
    QBasicTimer timer;
    std::unique_ptr<PrivateFolder> folder;
    QByteArray registerName;
    QByteArray wakeName;
    RegisterFile file;
    WakeChannel wakeChannel;
    std::unique_ptr<QSocketNotifier> wakeNotifier;
    int id = -1;
    Policy policy;
    bool operational = false;

private:
    bool join(const QStringList& arguments);
    int registerIn(InstanceRegister& reg, bool created, const QStringList& arguments);
    void listenForStarts();
    void pollAsPrimary();
    void pollAsSecondary();
};

KDSingleApplicationGuard* KDSingleApplicationGuard::Private::primaryInstance = nullptr;

void KDSingleApplicationGuard::Private::start(const QStringList& arguments)
{
    if (!QCoreApplication::instance()) {
        qWarning("KDSingleApplicationGuard: you need to construct a Q(Core)Application before you can construct a "
                 "KDSingleApplicationGuard");
        return;
    }
    const QString name = QCoreApplication::applicationName();
    if (name.isEmpty()) {
        qWarning("KDSingleApplicationGuard: QCoreApplication::applicationName must not be emty");
        return;
    }
    qRegisterMetaType<Instance>("KDSingleApplicationGuard::Instance");
    if (!primaryInstance)
        primaryInstance = q;

    const QByteArray baseName = QFile::encodeName(registerBaseName(name));
    registerName = baseName + ".register";
    wakeName = baseName + ".wake";
    if (!join(arguments))
        return;
    if (id > 0 && policy == AutoKillOtherInstances) {
        leave();
        std::exit(1);
    }

    struct sigaction action = {};
    action.sa_handler = &Private::onInterrupt;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    timer.start(PollInterval, q);
    operational = true;
}

// Opens the register in the user's private folder and takes a slot in it;
// a later start then wakes the primary. Any doubt about the folder or the
// file, or a lock that cannot be had in time, leaves the guard
// non-operational.
bool KDSingleApplicationGuard::Private::join(const QStringList& arguments)
{
    folder = std::make_unique<PrivateFolder>();
    if (!folder->isOpen())
        return registerUnavailable(folder->error());
    const QDeadlineTimer deadline(JoinTimeout);
    QString error;
    for (;;) {
        if (!file.open(folder->fd(), registerName, &error))
            return registerUnavailable(error);
        LockedRegister reg(file, deadline);
        if (!reg.isLocked()) {
            file.close();
            return registerUnavailable(QStringLiteral("its lock is held by another process"));
        }
        // Its last user removed it while we waited: open the new one.
        if (!file.isCurrent())
            continue;
        bool fresh = false;
        if (!file.attach(&fresh, &error)) {
            reg.unlock();
            file.close();
            return registerUnavailable(error);
        }
        if (!fresh && !isUsable(*reg))
            break;
        id = registerIn(*reg, fresh, arguments);
        if (id == -1)
            qWarning("KDSingleApplicationGuard: all %d slots of the instance register are taken",
                     InstanceRegister::SlotCount);
        if (id == 0)
            listenForStarts();
        break;
    }
    if (id == -1) {
        file.close();
        return false;
    }
    if (id > 0)
        WakeChannel::wake(folder->fd(), wakeName);
    return true;
}

// With the register locked: the primary reads the register whenever a later
// start writes a byte into the channel.
void KDSingleApplicationGuard::Private::listenForStarts()
{
    const int fd = wakeChannel.listen(folder->fd(), wakeName);
    if (fd < 0)
        return;
    wakeNotifier = std::make_unique<QSocketNotifier>(fd, QSocketNotifier::Read);
    QObject::connect(wakeNotifier.get(), &QSocketNotifier::activated, q, [this] {
        wakeChannel.drain();
        poll();
    });
}

// Takes a slot for this process and returns its index, -1 when all are taken.
// A register in which nobody lives any more is started afresh, and slot 0
// left by a primary that ended is taken over, so that a crashed primary never
// keeps later starts secondary.
int KDSingleApplicationGuard::Private::registerIn(InstanceRegister& reg, bool created, const QStringList& arguments)
{
    if (!created) {
        markVanishedInstances(reg);
        created = !hasLiveInstance(reg);
    }
    if (created) {
        reg.initialise(policy);
        claim(reg.processInfo[0], arguments, CmdNone);
        return 0;
    }
    policy = policyFrom(reg.policy());
    if (primaryVacant(reg)) {
        claim(reg.processInfo[0], arguments, CmdNone);
        return 0;
    }
    for (int i = 1; i < InstanceRegister::SlotCount; ++i) {
        if (reg.processInfo[i].isFree()) {
            claim(reg.processInfo[i], arguments, CmdNew);
            return i;
        }
    }
    return -1;
}

void KDSingleApplicationGuard::Private::poll()
{
    if (id == 0)
        pollAsPrimary();
    else if (id > 0)
        pollAsSecondary();
}

void KDSingleApplicationGuard::Private::pollAsPrimary()
{
    QList<Instance> started;
    QList<Instance> exited;
    {
        LockedRegister reg(file, QDeadlineTimer(RunningTimeout));
        if (!reg)
            return;
        for (int i = 1; i < InstanceRegister::SlotCount; ++i) {
            ProcessInfo& slot = reg->processInfo[i];
            if (slot.command & CmdNew) {
                started << instanceFrom(slot);
                slot.command &= ~CmdNew;
            }
            if (slot.command & CmdExited) {
                exited << instanceFrom(slot);
                // The whole slot, not only its command: only a slot equal to
                // a free one is handed out again.
                slot.reset();
            }
        }
    }
    for (const Instance& instance : std::as_const(started))
        emit q->instanceStarted(instance);
    for (const Instance& instance : std::as_const(exited))
        emit q->instanceExited(instance);
}

void KDSingleApplicationGuard::Private::pollAsSecondary()
{
    bool becamePrimary = false;
    bool raise = false;
    bool shutdown = false;
    bool policyHasChanged = false;
    {
        LockedRegister reg(file, QDeadlineTimer(RunningTimeout));
        if (!reg)
            return;
        const Policy registered = policyFrom(reg->policy());
        policyHasChanged = registered != policy;
        policy = registered;

        if (reg->processInfo[id].command & CmdBecomePrimary) {
            reg->processInfo[0] = reg->processInfo[id];
            reg->processInfo[id].reset();
            id = 0;
            becamePrimary = true;
            listenForStarts();
        }
        ProcessInfo& own = reg->processInfo[id];
        if (own.command & CmdRaise) {
            raise = true;
            own.command &= ~CmdRaise;
        }
        const bool kill = own.command & CmdKill;
        shutdown = own.command & CmdShutdown;
        own.command &= ~(CmdShutdown | CmdKill | CmdBecomePrimary);
        if (kill) {
            own.command |= CmdExited;
            id = -1;
            reg.unlock();
            std::exit(1);
        }
    }
    if (becamePrimary)
        emit q->becamePrimaryInstance();
    if (raise)
        emit q->raiseRequested();
    if (shutdown)
        QCoreApplication::quit();
    else if (policyHasChanged)
        emit q->policyChanged(policy);
}

// Leaves the register. A primary hands slot 0 to the first live instance,
// which takes it over at its next poll; the last one out removes the files.
// Async-signal-safe: the interrupt handler runs it as well.
void KDSingleApplicationGuard::Private::shutdownInstance()
{
    LockedRegister reg(file, QDeadlineTimer(JoinTimeout));
    if (!reg)
        return;
    reg->processInfo[id].command |= CmdExited;
    if (id == 0) {
        for (int i = 1; i < InstanceRegister::SlotCount; ++i) {
            ProcessInfo& slot = reg->processInfo[i];
            if (!(slot.command & (CmdExited | CmdFree | CmdShutdown | CmdKill)) && isOwnLiveProcess(slot.pid)) {
                slot.command |= CmdBecomePrimary;
                break;
            }
        }
    }
    if (!file.othersAttached()) {
        file.remove();
        WakeChannel::remove(folder->fd(), wakeName);
    }
    id = -1;
}

// Leaves the register and closes its files; a secondary's exit reaches the
// primary at once.
void KDSingleApplicationGuard::Private::leave()
{
    const bool secondary = id > 0;
    shutdownInstance();
    wakeNotifier.reset();
    wakeChannel.close();
    file.close();
    if (secondary)
        WakeChannel::wake(folder->fd(), wakeName);
}

void KDSingleApplicationGuard::Private::commandOthers(quint32 command)
{
    LockedRegister reg(file, QDeadlineTimer(RunningTimeout));
    if (!reg)
        return;
    for (int i = 1; i < InstanceRegister::SlotCount; ++i) {
        if (reg->processInfo[i].isTaken())
            reg->processInfo[i].command = command;
    }
}

bool KDSingleApplicationGuard::Private::checkOperational(const char* function, const char* purpose) const
{
    if (operational)
        return true;
    qWarning("KDSingleApplicationGuard::%s: need to be operational to %s", function, purpose);
    return false;
}

bool KDSingleApplicationGuard::Private::checkPrimary(const char* function, const char* purpose) const
{
    if (!checkOperational(function, purpose))
        return false;
    if (id == 0)
        return true;
    qWarning("KDSingleApplicationGuard::%s: need to be primary to %s", function, purpose);
    return false;
}

KDSingleApplicationGuard::Instance KDSingleApplicationGuard::Private::instanceFrom(const ProcessInfo& slot)
{
    bool truncated = false;
    const QStringList arguments = slot.arguments(&truncated);
    return Instance(slot.pid, arguments, truncated);
}

void KDSingleApplicationGuard::Private::sendCommand(qint64 pid, quint32 command)
{
    if (!primaryInstance || !primaryInstance->d->operational)
        return;
    LockedRegister reg(primaryInstance->d->file, QDeadlineTimer(RunningTimeout));
    if (!reg)
        return;
    for (ProcessInfo& slot : reg->processInfo) {
        if (slot.pid == pid && slot.isTaken()) {
            slot.command = command;
            return;
        }
    }
}

void KDSingleApplicationGuard::Private::onInterrupt(int signal)
{
    if (signal == SIGINT && primaryInstance && primaryInstance->d->id != -1)
        primaryInstance->d->shutdownInstance();
    std::_Exit(1);
}

void KDSingleApplicationGuard::Instance::raise()
{
    Private::sendCommand(pid(), CmdRaise);
}

void KDSingleApplicationGuard::Instance::shutdown()
{
    Private::sendCommand(pid(), CmdShutdown);
}

void KDSingleApplicationGuard::Instance::kill()
{
    Private::sendCommand(pid(), CmdKill);
}

// ---------------------------------------------------------------------------
// Guard

KDSingleApplicationGuard::KDSingleApplicationGuard(QObject* parent)
    : KDSingleApplicationGuard(QCoreApplication::arguments(), NoPolicy, parent)
{
}

KDSingleApplicationGuard::KDSingleApplicationGuard(Policy policy, QObject* parent)
    : KDSingleApplicationGuard(QCoreApplication::arguments(), policy, parent)
{
}

KDSingleApplicationGuard::KDSingleApplicationGuard(const QStringList& arguments, QObject* parent)
    : KDSingleApplicationGuard(arguments, NoPolicy, parent)
{
}

KDSingleApplicationGuard::KDSingleApplicationGuard(const QStringList& arguments, Policy policy, QObject* parent)
    : QObject(parent)
    , d(new Private(this, policy))
{
    d->start(arguments);
}

KDSingleApplicationGuard::~KDSingleApplicationGuard()
{
    if (d->id != -1)
        d->leave();
    if (Private::primaryInstance == this)
        Private::primaryInstance = nullptr;
}

bool KDSingleApplicationGuard::isOperational() const
{
    return d->operational;
}

bool KDSingleApplicationGuard::isPrimaryInstance() const
{
    return d->id == 0;
}

KDSingleApplicationGuard::Policy KDSingleApplicationGuard::policy() const
{
    return d->policy;
}

void KDSingleApplicationGuard::setPolicy(Policy policy)
{
    if (!d->checkPrimary("setPolicy", "change the policy") || policy == d->policy)
        return;
    d->policy = policy;
    {
        LockedRegister reg(d->file, QDeadlineTimer(RunningTimeout));
        if (reg)
            reg->setPolicy(policy);
    }
    emit policyChanged(policy);
}

QList<KDSingleApplicationGuard::Instance> KDSingleApplicationGuard::instances() const
{
    QList<Instance> result;
    if (!d->checkOperational("instances", "report on other instances"))
        return result;
    LockedRegister reg(d->file, QDeadlineTimer(RunningTimeout));
    if (!reg)
        return result;
    for (const ProcessInfo& slot : reg->processInfo) {
        if (slot.isTaken())
            result << Private::instanceFrom(slot);
    }
    return result;
}

void KDSingleApplicationGuard::shutdownOtherInstances()
{
    if (d->checkPrimary("shutdownOtherInstances", "shut other instances down"))
        d->commandOthers(CmdShutdown);
}

void KDSingleApplicationGuard::killOtherInstances()
{
    if (d->checkPrimary("killOtherInstances", "kill other instances"))
        d->commandOthers(CmdKill);
}

void KDSingleApplicationGuard::timerEvent(QTimerEvent* event)
{
    if (event->timerId() == d->timer.timerId())
        d->poll();
    else
        QObject::timerEvent(event);
}
