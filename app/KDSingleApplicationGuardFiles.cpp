#include "KDSingleApplicationGuardFiles.h"
#include "KDSingleApplicationGuard_p.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QSysInfo>
#include <QUrl>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>

#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr off_t AccessByte = 0; // write-locked while one process reads or writes the register
constexpr off_t MemberByte = 1; // read-locked by every attached process

QString systemError(const QString& what, const QString& path)
{
    return QStringLiteral("%1 %2: %3").arg(what, path, QString::fromLocal8Bit(std::strerror(errno)));
}

// Owned by this user and closed to everybody else.
bool isPrivate(const struct stat& info)
{
    return info.st_uid == geteuid() && (info.st_mode & 077) == 0;
}

struct flock byteLock(short type, off_t byte)
{
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = byte;
    lock.l_len = 1;
    return lock;
}

// Open file description locks: they belong to one open of the file, so two
// guards of one process exclude each other as two processes do.
bool setByteLock(int fd, short type, off_t byte)
{
    struct flock lock = byteLock(type, byte);
    return ::fcntl(fd, F_OFD_SETLK, &lock) == 0;
}

} // namespace

// ---------------------------------------------------------------------------
// PrivateFolder

PrivateFolder::PrivateFolder()
{
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (!runtime.isEmpty() && openChecked(runtime, false))
        return;
    const QString runtimeError = m_error;

    const QString own = fallbackPath();
    QDir().mkpath(QFileInfo(own).path());
    ::mkdir(QFile::encodeName(own).constData(), 0700);
    if (openChecked(own, true))
        return;
    if (!runtimeError.isEmpty())
        m_error = runtimeError + QStringLiteral("; ") + m_error;
}

PrivateFolder::~PrivateFolder()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

QString PrivateFolder::fallbackPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) + QStringLiteral("/kdsingleapp-")
         + QString::fromLatin1(QUrl::toPercentEncoding(QSysInfo::machineHostName()));
}

// A folder of our own with a wider mode is closed again: only this user can
// have made it so, and the files inside are checked one by one anyway.
bool PrivateFolder::openChecked(const QString& path, bool ownFolder)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0) {
        struct stat link;
        const bool isLink = ::lstat(QFile::encodeName(path).constData(), &link) == 0 && S_ISLNK(link.st_mode);
        m_error = isLink ? QStringLiteral("%1 is a symbolic link").arg(path)
                         : systemError(QStringLiteral("cannot open folder"), path);
        return false;
    }
    struct stat info;
    if (::fstat(fd, &info) != 0 || info.st_uid != geteuid()) {
        m_error = QStringLiteral("%1 belongs to another user").arg(path);
        ::close(fd);
        return false;
    }
    if ((info.st_mode & 077) != 0 && !(ownFolder && ::fchmod(fd, 0700) == 0)) {
        m_error = QStringLiteral("%1 is open to other users (mode %2)").arg(path).arg(info.st_mode & 0777, 0, 8);
        ::close(fd);
        return false;
    }
    m_fd = fd;
    m_path = path;
    m_error.clear();
    return true;
}

QString registerBaseName(const QString& applicationName)
{
    const auto encoded = [](const QString& text) { return QString::fromLatin1(QUrl::toPercentEncoding(text)); };
    QString name = encoded(applicationName);
    const QString session = qEnvironmentVariable("XDG_SESSION_ID");
    if (!session.isEmpty())
        name += QStringLiteral("-session") + encoded(session);
    QString display = qEnvironmentVariable("WAYLAND_DISPLAY");
    if (display.isEmpty())
        display = qEnvironmentVariable("DISPLAY");
    if (!display.isEmpty())
        name += QStringLiteral("-display") + encoded(display);
    return name;
}

// ---------------------------------------------------------------------------
// RegisterFile

RegisterFile::~RegisterFile()
{
    close();
}

bool RegisterFile::open(int folderFd, const QByteArray& name, QString* error)
{
    close();
    const int fd = ::openat(folderFd, name.constData(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd < 0) {
        *error = systemError(QStringLiteral("cannot open register"), QFile::decodeName(name));
        return false;
    }
    struct stat info;
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode) || info.st_nlink != 1 || !isPrivate(info)) {
        *error = QStringLiteral("register %1 is not a private file of this user").arg(QFile::decodeName(name));
        ::close(fd);
        return false;
    }
    m_folderFd = folderFd;
    m_name = name;
    m_fd = fd;
    return true;
}

void RegisterFile::close()
{
    if (m_data)
        ::munmap(m_data, sizeof(InstanceRegister));
    m_data = nullptr;
    if (m_fd >= 0)
        ::close(m_fd);
    m_fd = -1;
}

bool RegisterFile::lock(QDeadlineTimer deadline)
{
    long pauseNs = 50'000;
    for (;;) {
        if (setByteLock(m_fd, F_WRLCK, AccessByte))
            return true;
        if ((errno != EAGAIN && errno != EACCES && errno != EINTR) || deadline.hasExpired())
            return false;
        const struct timespec pause = {0, pauseNs};
        ::nanosleep(&pause, nullptr);
        pauseNs = std::min(pauseNs * 2, 2'000'000L);
    }
}

void RegisterFile::unlock()
{
    setByteLock(m_fd, F_UNLCK, AccessByte);
}

bool RegisterFile::isCurrent() const
{
    struct stat opened;
    struct stat named;
    return ::fstat(m_fd, &opened) == 0 && ::fstatat(m_folderFd, m_name.constData(), &named, AT_SYMLINK_NOFOLLOW) == 0
        && opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

bool RegisterFile::attach(bool* fresh, QString* error)
{
    constexpr off_t size = sizeof(InstanceRegister);
    *fresh = !othersAttached();
    struct stat info;
    if (*fresh) {
        if (::ftruncate(m_fd, 0) != 0 || ::ftruncate(m_fd, size) != 0) {
            *error = systemError(QStringLiteral("cannot size register"), QFile::decodeName(m_name));
            return false;
        }
    } else if (::fstat(m_fd, &info) != 0 || info.st_size != size) {
        *error = QStringLiteral("register %1 has the wrong size").arg(QFile::decodeName(m_name));
        return false;
    }
    void* mapped = ::mmap(nullptr, size_t(size), PROT_READ | PROT_WRITE, MAP_SHARED, m_fd, 0);
    if (mapped == MAP_FAILED) {
        *error = systemError(QStringLiteral("cannot map register"), QFile::decodeName(m_name));
        return false;
    }
    if (!setByteLock(m_fd, F_RDLCK, MemberByte)) {
        *error = systemError(QStringLiteral("cannot join register"), QFile::decodeName(m_name));
        ::munmap(mapped, size_t(size));
        return false;
    }
    m_data = static_cast<InstanceRegister*>(mapped);
    return true;
}

bool RegisterFile::othersAttached() const
{
    struct flock probe = byteLock(F_WRLCK, MemberByte);
    return ::fcntl(m_fd, F_OFD_GETLK, &probe) != 0 || probe.l_type != F_UNLCK;
}

void RegisterFile::remove()
{
    ::unlinkat(m_folderFd, m_name.constData(), 0);
}

// ---------------------------------------------------------------------------
// WakeChannel

WakeChannel::~WakeChannel()
{
    close();
}

int WakeChannel::listen(int folderFd, const QByteArray& name)
{
    close();
    remove(folderFd, name);
    if (::mkfifoat(folderFd, name.constData(), 0600) != 0)
        return -1;
    // Opened for writing as well, so the channel never reads as closed
    // when a waking start has gone again.
    const int fd = ::openat(folderFd, name.constData(), O_RDWR | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC);
    struct stat info;
    if (fd >= 0 && (::fstat(fd, &info) != 0 || !S_ISFIFO(info.st_mode) || !isPrivate(info))) {
        ::close(fd);
        return -1;
    }
    m_fd = fd;
    return fd;
}

void WakeChannel::drain()
{
    char bytes[256];
    while (::read(m_fd, bytes, sizeof bytes) > 0) {
    }
}

void WakeChannel::close()
{
    if (m_fd >= 0)
        ::close(m_fd);
    m_fd = -1;
}

void WakeChannel::wake(int folderFd, const QByteArray& name)
{
    // Without a reader (no primary, or one that was killed) the open fails.
    const int fd = ::openat(folderFd, name.constData(), O_WRONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0)
        return;
    struct stat info;
    if (::fstat(fd, &info) == 0 && S_ISFIFO(info.st_mode) && isPrivate(info)) {
        // A reader that ends between the open and the write would raise
        // SIGPIPE; it is held back and taken away again.
        sigset_t brokenPipe;
        sigset_t saved;
        sigset_t pending;
        sigemptyset(&brokenPipe);
        sigaddset(&brokenPipe, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &brokenPipe, &saved);
        sigpending(&pending);
        const bool wasPending = sigismember(&pending, SIGPIPE);
        if (::write(fd, "!", 1) < 0 && errno == EPIPE && !wasPending) {
            const struct timespec noWait = {0, 0};
            sigtimedwait(&brokenPipe, nullptr, &noWait);
        }
        pthread_sigmask(SIG_SETMASK, &saved, nullptr);
    }
    ::close(fd);
}

void WakeChannel::remove(int folderFd, const QByteArray& name)
{
    ::unlinkat(folderFd, name.constData(), 0);
}
