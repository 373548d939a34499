#include "Archive.h"

#include "CrossPlatformApi.h"
#include "RegularFile.h"
#include "StringFunctions.h"

#include <cstdint>
#include <cstring>
#include <unistd.h>

namespace {

// Limits that a sound container never reaches; an entry beyond them is
// treated as corrupt, so that a damaged file cannot make us allocate
// arbitrary amounts of memory.
constexpr std::uint32_t kMaxNameLength = 4096;
constexpr std::uint32_t kMaxUncompressedSize = 256u << 20;

// The fixed part of an entry after its name: uncompressed and stored size.
constexpr std::streamoff kSizeFields = 8;

bool readU32(std::istream& in, std::uint32_t& value)
{
    return bool(in.read(reinterpret_cast<char*>(&value), sizeof value));
}

void writeU32(std::ostream& out, std::uint32_t value)
{
    out.write(reinterpret_cast<const char*>(&value), sizeof value);
}

std::streamoff bytesLeft(std::istream& in)
{
    const std::streampos here = in.tellg();
    in.seekg(0, std::ios::end);
    const std::streampos end = in.tellg();
    in.seekg(here);
    return end - here;
}

bool hasBlock(const cBuffer& buffer)
{
    return buffer.GetBuffer() != nullptr;
}

}

cArchive::cArchive(std::string fileName, bool keepData)
    : m_keepData(keepData)
{
    SetArchiveFileName(std::move(fileName));
}

cArchive::cArchive(std::string fileName, std::string sourceFolder)
    : m_sourceFolder(std::move(sourceFolder))
{
    SetArchiveFileName(std::move(fileName));
    m_output.open(CrossPlatformApi::fileSystemEncoding(m_fileName), std::ios::binary | std::ios::app);
}

void cArchive::SetArchiveFileName(std::string fileName)
{
    m_fileName = std::move(fileName);
    m_fileExists = access(CrossPlatformApi::fileSystemEncoding(m_fileName).c_str(), F_OK) == 0;
    m_index.clear();
    m_resumePosition = 0;
    if (m_output.is_open()) {
        m_output.close();
        m_output.open(CrossPlatformApi::fileSystemEncoding(m_fileName), std::ios::binary | std::ios::app);
    }
}

cBuffer cArchive::GetFile(std::string name)
{
    if (!m_fileExists)
        return cBuffer();
    StringFunctions::toLower(name);
    const WantsData wantsThis = [&name](const std::string& entry) { return entry == name; };

    const auto known = m_index.find(name);
    if (known != m_index.end()) {
        CacheItem& item = known->second;
        if (hasBlock(item.data))
            return item.data;
        std::ifstream in;
        if (!openForReading(in))
            return cBuffer();
        in.seekg(item.position);
        const cBuffer data = readEntry(in, wantsThis).data;
        if (m_keepData)
            item.data = data;
        return data;
    }
    if (m_resumePosition < 0)
        return cBuffer();
    return scan(m_resumePosition, wantsThis, true);
}

void cArchive::readAll()
{
    // Without keepData every loaded entry would be dropped from the index
    // again at once, unseen by anybody; so only the positions are read then,
    // and nothing is decompressed. Requests read the data when they come.
    const bool loadData = m_keepData;
    scan(0, [loadData](const std::string&) { return loadData; }, false);
}

std::vector<std::string> cArchive::GetFilenames(bool completeScan)
{
    if (completeScan && m_resumePosition >= 0)
        scan(m_resumePosition, [](const std::string&) { return false; }, false);
    std::vector<std::string> names;
    names.reserve(m_index.size());
    for (const auto& entry : m_index)
        names.push_back(entry.first);
    return names;
}

bool cArchive::AddFile(const std::string& sourcePath, const std::string& name,
                       compression::compressName method, bool allowStored)
{
    if (!m_output.is_open())
        return false;
    std::string entryName = name;
    StringFunctions::toLower(entryName);
    if (entryName.size() >= kMaxNameLength)
        return false;

    const std::string path =
        sourcePath.empty() || sourcePath[0] != '/' ? m_sourceFolder + sourcePath : sourcePath;
    const long long size = CrossPlatformApi::getFileSize(path);
    std::ifstream in(CrossPlatformApi::fileSystemEncoding(path), std::ios::binary);
    if (size < 0 || size > kMaxUncompressedSize || !in)
        return false;
    cBuffer source(new char[size], static_cast<long>(size));
    if (!in.read(source.GetBuffer(), size))
        return false;

    cBuffer stored = compression::compressFunc(method)->Compress(source);
    if (allowStored && stored.GetBufferLength() >= source.GetBufferLength()) {
        stored = source;
        method = compression::stored;
    }
    if (!hasBlock(stored))
        return false;

    writeU32(m_output, method);
    writeU32(m_output, static_cast<std::uint32_t>(entryName.size() + 1));
    m_output.write(entryName.c_str(), static_cast<std::streamsize>(entryName.size() + 1));
    writeU32(m_output, static_cast<std::uint32_t>(size));
    writeU32(m_output, static_cast<std::uint32_t>(stored.GetBufferLength()));
    m_output.write(stored.GetBuffer(), stored.GetBufferLength());
    return bool(m_output.flush());
}

cArchive::CacheItem cArchive::getCacheItem(std::ifstream& in, const std::string& wanted)
{
    return readEntry(in, [&wanted](const std::string& name) { return wanted == "*" || name == wanted; });
}

bool cArchive::openForReading(std::ifstream& in) const
{
    // A FIFO or a device in the container's place would block or never end
    // the stream: only a regular file is opened.
    const std::string nativePath = CrossPlatformApi::fileSystemEncoding(m_fileName);
    const int descriptor = RegularFile::openForReading(nativePath);
    if (descriptor < 0)
        return false;
    ::close(descriptor);
    in.open(nativePath, std::ios::binary);
    return in.is_open();
}

cArchive::CacheItem cArchive::readEntry(std::ifstream& in, const WantsData& wantsData)
{
    CacheItem item;
    item.position = in.tellg();
    std::uint32_t method = 0;
    std::uint32_t nameLength = 0;
    if (!readU32(in, method) || !readU32(in, nameLength))
        return item;
    if (!compression::isKnown(method)) {
        in.setstate(std::ios::failbit);
        return item;
    }
    item.method = static_cast<compression::compressName>(method);
    if (nameLength == 0) {
        item.name = "#ERROR";
        return item;
    }

    const std::streamoff left = bytesLeft(in);
    std::uint32_t uncompressedSize = 0;
    std::uint32_t storedSize = 0;
    if (nameLength > kMaxNameLength || nameLength + kSizeFields > left) {
        in.setstate(std::ios::failbit);
        return item;
    }
    std::string name(nameLength, '\0');
    in.read(name.data(), nameLength);
    name.resize(std::strlen(name.c_str()));
    if (!readU32(in, uncompressedSize) || !readU32(in, storedSize))
        return item;
    if (uncompressedSize > kMaxUncompressedSize || storedSize > left - nameLength - kSizeFields) {
        in.setstate(std::ios::failbit);
        return item;
    }
    StringFunctions::toLower(name);
    item.name = std::move(name);
    item.uncompressedSize = uncompressedSize;
    item.storedSize = storedSize;

    if (storedSize == 0)
        return item;
    if (!wantsData(item.name)) {
        in.seekg(storedSize, std::ios::cur);
        return item;
    }
    cBuffer stored(new char[storedSize], storedSize);
    if (in.read(stored.GetBuffer(), storedSize))
        item.data = compression::compressFunc(item.method)->Decompress(stored, uncompressedSize);
    return item;
}

void cArchive::remember(CacheItem item)
{
    if (!m_keepData)
        item.data = cBuffer();
    std::string name = item.name;
    const auto [slot, added] = m_index.try_emplace(std::move(name), std::move(item));
    // try_emplace leaves item untouched when the name is known already.
    if (!added && slot->second.position == item.position)
        slot->second = std::move(item);
}

cBuffer cArchive::scan(std::streamoff from, const WantsData& wantsData, bool stopAtData)
{
    std::ifstream in;
    if (openForReading(in)) {
        in.seekg(from);
        for (CacheItem item = readEntry(in, wantsData); in; item = readEntry(in, wantsData)) {
            const cBuffer data = item.data;
            remember(std::move(item));
            if (stopAtData && hasBlock(data)) {
                m_resumePosition = in.tellg();
                return data;
            }
        }
    }
    m_resumePosition = -1;
    return cBuffer();
}
