#pragma once

// The files behind a user's instance registers: a folder only this user can
// use, the register file that every instance maps and locks, and the wake-up
// channel through which a later start rouses the primary instance.
//
// Everything is reached through the folder's open descriptor, so a path
// checked once cannot be swapped for another one afterwards.

#include <QByteArray>
#include <QDeadlineTimer>
#include <QString>

struct InstanceRegister;

// $XDG_RUNTIME_DIR when it is a folder of this user with mode 0700 (not a
// symbolic link); otherwise the user's own folder "kdsingleapp-<host>" in the
// cache folder, created with mode 0700. Not open when neither passes the
// check; error() then says why.
class PrivateFolder
{
public:
    PrivateFolder();
    ~PrivateFolder();
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;

    bool isOpen() const { return m_fd >= 0; }
    int fd() const { return m_fd; }
    QString path() const { return m_path; }
    QString error() const { return m_error; }

    static QString fallbackPath();

private:
    bool openChecked(const QString& path, bool ownFolder);

    int m_fd = -1;
    QString m_path;
    QString m_error;
};

// The name the register's files share for an application in the current
// session: the application name, the session id (XDG_SESSION_ID) and the
// display (WAYLAND_DISPLAY, else DISPLAY), each percent-encoded, so that
// every session of a user has a register of its own.
QString registerBaseName(const QString& applicationName);

// The register as a file of mode 0600 in the private folder, mapped shared by
// every instance. One byte-range lock guards each access; every attached
// instance holds a read lock on a second byte for as long as it is attached,
// so the kernel knows whether anybody else still uses the register, even
// after a crash.
class RegisterFile
{
public:
    RegisterFile() = default;
    ~RegisterFile();
    RegisterFile(const RegisterFile&) = delete;
    RegisterFile& operator=(const RegisterFile&) = delete;

    // Opens (or creates) the file and checks it: a regular file of this
    // user that nobody else may read or write.
    bool open(int folderFd, const QByteArray& name, QString* error);
    void close();

    // The access lock; false when it cannot be had before the deadline.
    // Async-signal-safe.
    bool lock(QDeadlineTimer deadline);
    void unlock();
    // Locked and still the file of that name (a last user may have removed
    // it while this process waited for the lock).
    bool isCurrent() const;

    // With the lock held: maps the register and joins its users. A register
    // nobody else uses is cleared first; *fresh tells so.
    bool attach(bool* fresh, QString* error);
    InstanceRegister* data() const { return m_data; }
    // With the lock held: whether another process is attached.
    bool othersAttached() const;
    // With the lock held and nobody else attached: removes the file.
    void remove();

private:
    int m_folderFd = -1;
    QByteArray m_name;
    int m_fd = -1;
    InstanceRegister* m_data = nullptr;
};

// The primary instance's wake-up channel: a FIFO in the private folder. A
// later start writes one byte after writing its slot; the primary then reads
// the register at once instead of at its next poll. Nothing of the register
// travels over it.
class WakeChannel
{
public:
    WakeChannel() = default;
    ~WakeChannel();
    WakeChannel(const WakeChannel&) = delete;
    WakeChannel& operator=(const WakeChannel&) = delete;

    // Replaces whatever lies at the name (a channel left by a killed
    // primary) with a new FIFO and opens it; -1 on failure.
    int listen(int folderFd, const QByteArray& name);
    // Reads every pending byte.
    void drain();
    void close();

    // One byte to the primary; never blocks, silently does nothing when no
    // primary listens.
    static void wake(int folderFd, const QByteArray& name);
    // Async-signal-safe.
    static void remove(int folderFd, const QByteArray& name);

private:
    int m_fd = -1;
};
