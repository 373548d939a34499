#include "File.h"

#include "CrossPlatformApi.h"
#include "RegularFile.h"
#include "ValidatedBuffer.h"

#include <cstring>

#include <cstdio>
#include <fstream>
#include <limits>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// No file the program reads whole comes near this size; a larger one (or a
// device that never ends) reads as unreadable.
constexpr std::size_t MaxWholeFileBytes = 64 * 1024 * 1024;

// fstat of the file opened read-only; false when it cannot be opened. A FIFO
// is opened without waiting for a writer.
bool statFile(const std::string& path, struct stat& info)
{
    const int descriptor = ::open(CrossPlatformApi::fileSystemEncoding(path).c_str(),
                                  O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0)
        return false;
    const bool ok = ::fstat(descriptor, &info) == 0;
    ::close(descriptor);
    return ok;
}

} // namespace

cFile::cFile(const std::string& path)
    : m_path(path)
{
}

bool cFile::Exists() const
{
    return ::access(CrossPlatformApi::fileSystemEncoding(m_path).c_str(), F_OK) == 0;
}

int cFile::GetFilelength() const
{
    struct stat info;
    return statFile(m_path, info) ? int(info.st_size) : 0;
}

int cFile::GetModificationTimestamp() const
{
    struct stat info;
    return statFile(m_path, info) ? int(info.st_mtime) : 0;
}

bool cFile::Remove() const
{
    return std::remove(CrossPlatformApi::fileSystemEncoding(m_path).c_str()) == 0;
}

bool cFile::WriteFromString(const std::string& text) const
{
    return writeBytes(text.data(), text.size());
}

bool cFile::writeFromBuffer(const ValidatedBuffer& buffer) const
{
    return writeBytes(buffer.getConst(), buffer.getSize());
}

bool cFile::writeBytes(const char* data, std::size_t size) const
{
    std::ofstream out(CrossPlatformApi::fileSystemEncoding(m_path),
                      std::ios::binary | std::ios::trunc);
    out.write(data, std::streamsize(size));
    out.close();
    return !out.fail();
}

int cFile::ReadIntoString(std::string& text) const
{
    const std::optional<std::string> data = readWhole();
    if (!data || data->empty())
        return 0;
    // Ends at the first zero byte.
    text.assign(data->c_str());
    return int(data->size());
}

int cFile::readIntoBuffer(ValidatedBuffer& buffer) const
{
    const std::optional<std::string> data = readWhole();
    if (!data || data->empty())
        return 0;
    buffer.changeSize(unsigned(data->size()));
    std::memcpy(buffer.get(), data->data(), data->size());
    return int(data->size());
}

std::optional<std::string> cFile::readWhole() const
{
    return RegularFile::readWhole(CrossPlatformApi::fileSystemEncoding(m_path), MaxWholeFileBytes);
}

void cFile::copyStreams(std::istream& in, std::ostream& out)
{
    // Inserting an empty stream buffer would put out into a failed state.
    if (in.peek() != std::istream::traits_type::eof())
        out << in.rdbuf();
}

void cFile::truncateFileBeginning(int maxSize, int keepSize, bool markCut) const
{
    if (keepSize == 0 || keepSize > maxSize)
        keepSize = maxSize;
    const int length = GetFilelength();
    if (length < maxSize)
        return;

    const std::string nativePath = CrossPlatformApi::fileSystemEncoding(m_path);
    const std::string nativeTemporary = CrossPlatformApi::fileSystemEncoding(m_path + ".tmp");
    std::ifstream in(nativePath, std::ios::binary);
    in.seekg(length - keepSize);
    if (markCut)
        in.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
    if (!in)
        return;

    std::ofstream out(nativeTemporary, std::ios::binary | std::ios::trunc);
    if (!out)
        return;
    if (markCut)
        out << "[...]\n";
    copyStreams(in, out);
    out.close();
    in.close();
    // The original goes only once its tail is safely written.
    if (out.fail()) {
        ::unlink(nativeTemporary.c_str());
        return;
    }
    ::unlink(nativePath.c_str());
    std::rename(nativeTemporary.c_str(), nativePath.c_str());
}
