#pragma once

#include <QList>
#include <QMetaType>
#include <QObject>
#include <QSharedDataPointer>
#include <QStringList>

#include <memory>

// Keeps one running instance per application name and user session. All
// instances of a session share a register, a file of mode 0600 in a folder
// only this user can use, mapped into each of them; the first one is the
// primary instance, later ones register as secondary instances and hand over
// their command line. A later start wakes the primary at once through a FIFO
// beside the register, so the primary reports it through instanceStarted()
// without delay; every instance also looks at the register every 250 ms, which
// gets a start through when the wake-up does not.
//
// A guard that cannot use the register (no application object, no name, a
// folder or file that is not this user's alone, a lock held too long,
// register full or unreadable) warns and stays non-operational; the program
// may then run as if it were alone.
class KDSingleApplicationGuard : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool operational READ isOperational)
    Q_PROPERTY(bool primaryInstance READ isPrimaryInstance NOTIFY becamePrimaryInstance)
    Q_PROPERTY(Policy policy READ policy WRITE setPolicy NOTIFY policyChanged)

public:
    enum Policy {
        NoPolicy = 0,
        AutoKillOtherInstances = 1, // a later start ends itself at once with exit code 1
    };
    Q_ENUM(Policy)

    class Instance;

    // Without an argument list the guard registers QCoreApplication::arguments().
    explicit KDSingleApplicationGuard(QObject* parent = nullptr);
    explicit KDSingleApplicationGuard(Policy policy, QObject* parent = nullptr);
    explicit KDSingleApplicationGuard(const QStringList& arguments, QObject* parent = nullptr);
    KDSingleApplicationGuard(const QStringList& arguments, Policy policy, QObject* parent = nullptr);
    // Leaves the register; a primary hands slot 0 to the next live instance.
    ~KDSingleApplicationGuard() override;

    bool isOperational() const;
    bool isPrimaryInstance() const;

    Policy policy() const;
    // Primary only: stores the policy in the register for all instances.
    void setPolicy(Policy policy);

    // The instances registered right now, this one included.
    QList<Instance> instances() const;

Q_SIGNALS:
    void instanceStarted(const KDSingleApplicationGuard::Instance& instance);
    void instanceExited(const KDSingleApplicationGuard::Instance& instance);
    void raiseRequested();
    void becamePrimaryInstance();
    void policyChanged(KDSingleApplicationGuard::Policy policy);

public Q_SLOTS:
    // Primary only: asks every other instance to quit its event loop / to end at once.
    void shutdownOtherInstances();
    void killOtherInstances();

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    class Private;
    std::unique_ptr<Private> d;
};

// One registered process as the register describes it: its id, its argument
// list and whether that list was cut to fit the register.
class KDSingleApplicationGuard::Instance
{
public:
    Instance();
    Instance(const Instance& other);
    Instance& operator=(const Instance& other);
    ~Instance();

    // Deliberately inverted: true for an empty object or a negative process
    // id, false for a real process. Callers rely on it as it is.
    bool isValid() const;
    qint64 pid() const; // -1 when empty
    QStringList arguments() const;
    bool areArgumentsTruncated() const;

    // Commands to the process, delivered through the register by the first
    // guard of this process; ignored once the process has left.
    void raise();
    void shutdown();
    void kill();

private:
    friend class KDSingleApplicationGuard::Private;
    Instance(qint64 pid, const QStringList& arguments, bool truncated);

    class Data;
    QSharedDataPointer<Data> d;
};

Q_DECLARE_METATYPE(KDSingleApplicationGuard::Instance)
