#include "RegularFile.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace RegularFile {

int openForReading(const std::string& nativePath)
{
    // O_NONBLOCK keeps the open of a FIFO from waiting for a writer; the
    // descriptor is then refused for not being a regular file.
    const int descriptor = ::open(nativePath.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0)
        return -1;
    struct stat info;
    if (::fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode)) {
        ::close(descriptor);
        return -1;
    }
    return descriptor;
}

long readFully(int descriptor, char* data, std::size_t size)
{
    std::size_t filled = 0;
    while (filled < size) {
        const ssize_t n = ::read(descriptor, data + filled, size - filled);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return -1;
        if (n == 0)
            break;
        filled += std::size_t(n);
    }
    return long(filled);
}

namespace {

// Reads at most limit + 1 bytes, so that a caller can tell a file of exactly
// limit bytes from a longer one. The buffer grows with what is actually
// read, never with the size the file reports.
std::optional<std::string> readBounded(const std::string& nativePath, std::size_t limit, bool& longer)
{
    const int descriptor = openForReading(nativePath);
    if (descriptor < 0)
        return std::nullopt;
    std::string data;
    constexpr std::size_t step = 64 * 1024;
    longer = false;
    for (;;) {
        const std::size_t filled = data.size();
        const std::size_t wanted = std::min(step, limit + 1 - filled);
        data.resize(filled + wanted);
        const long n = readFully(descriptor, data.data() + filled, wanted);
        if (n < 0) {
            ::close(descriptor);
            return std::nullopt;
        }
        data.resize(filled + std::size_t(n));
        if (std::size_t(n) < wanted)
            break;
        if (data.size() > limit) {
            longer = true;
            data.resize(limit);
            break;
        }
    }
    ::close(descriptor);
    return data;
}

} // namespace

std::optional<std::string> readHead(const std::string& nativePath, std::size_t limit)
{
    bool longer = false;
    return readBounded(nativePath, limit, longer);
}

std::optional<std::string> readWhole(const std::string& nativePath, std::size_t limit)
{
    bool longer = false;
    std::optional<std::string> data = readBounded(nativePath, limit, longer);
    if (longer)
        return std::nullopt;
    return data;
}

} // namespace RegularFile
