#include "FuzzSupport.h"

#include <QtGlobal>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include <fcntl.h>
#include <unistd.h>

namespace fuzz {

namespace {

// Shared memory first: rewriting a file on a disk file system costs
// milliseconds (the file system flushes a truncated file on close), on tmpfs
// microseconds, and the fuzzers write one file per input.
std::string temporaryBase()
{
    if (::access("/dev/shm", W_OK | X_OK) == 0)
        return "/dev/shm";
    const char* tmp = std::getenv("TMPDIR");
    return tmp && *tmp ? tmp : "/tmp";
}

std::string createPrivateFolder()
{
    std::string pattern = temporaryBase() + "/sc-fuzz-XXXXXX";
    if (!::mkdtemp(pattern.data())) {
        std::perror("mkdtemp");
        std::abort();
    }
    return pattern;
}

void removePrivateFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(privateFolder(), ignored);
}

void dropMessage(QtMsgType, const QMessageLogContext&, const QString&) {}

} // namespace

const std::string& privateFolder()
{
    // Never destroyed: the removal at exit still needs the name.
    static const std::string* const folder = [] {
        const auto* path = new std::string(createPrivateFolder());
        std::atexit(removePrivateFolder);
        return path;
    }();
    return *folder;
}

void writeFile(const std::string& path, const std::uint8_t* data, std::size_t size)
{
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    bool ok = fd >= 0;
    while (ok && size > 0) {
        const ssize_t written = ::write(fd, data, size);
        ok = written > 0;
        if (ok) {
            data += written;
            size -= std::size_t(written);
        }
    }
    if (fd >= 0)
        ok = ::close(fd) == 0 && ok;
    if (!ok) {
        std::perror(path.c_str());
        std::abort();
    }
}

void silenceQtMessages()
{
    qInstallMessageHandler(dropMessage);
}

void fail(const char* condition, const char* file, int line)
{
    std::fprintf(stderr, "%s:%d: check failed: %s\n", file, line, condition);
    std::abort();
}

} // namespace fuzz
