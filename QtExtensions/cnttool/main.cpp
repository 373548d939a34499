// cnttool: makes, lists and unpacks the program's container files
// (such as the image container images_mac.cnt).

#include "Archive.h"
#include "CrossPlatformApi.h"
#include "StringFunctions.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr int kFailure = 1;
constexpr int kUsageError = 2;

const char* const kUsage =
    "Usage:\n"
    "  cnttool create [--store] <container> <files...>\n"
    "      Writes a new container with one entry per file, named after the file\n"
    "      (in lower case). Entries are bzip2-compressed, or stored as they are\n"
    "      when compression does not make them smaller; --store stores all.\n"
    "  cnttool list <container>\n"
    "      Prints one line per entry: name, method, size, stored size.\n"
    "  cnttool extract <container> <folder> [names...]\n"
    "      Writes the named entries (default: all) as files into the folder.\n"
    "  cnttool --help\n";

int fail(const std::string& message)
{
    std::cerr << "cnttool: " << message << '\n';
    return kFailure;
}

int usageError(const std::string& message)
{
    std::cerr << "cnttool: " << message << "\n\n" << kUsage;
    return kUsageError;
}

// Command-line arguments are in the file-system encoding; the archive works
// on Latin-1.
bool toLatin1(const std::string& native, std::string& latin1)
{
    latin1 = CrossPlatformApi::fromFileSystemEncoding(native);
    return CrossPlatformApi::fileSystemEncoding(latin1) == native;
}

std::string lowerCase(std::string text)
{
    StringFunctions::toLower(text);
    return text;
}

// The entries of a container in file order; a message and false when it
// cannot be read or is damaged.
bool readEntries(const std::string& container, std::vector<cArchive::CacheItem>& entries)
{
    std::ifstream in(container, std::ios::binary);
    if (!in) {
        fail("cannot open '" + container + "'");
        return false;
    }
    cArchive archive(CrossPlatformApi::fromFileSystemEncoding(container), false);
    while (in.peek() != std::char_traits<char>::eof()) {
        const std::streamoff offset = in.tellg();
        const cArchive::CacheItem item = archive.getCacheItem(in, std::string());
        if (!in || item.name == "#ERROR") {
            fail("'" + container + "' is damaged at byte " + std::to_string(offset));
            return false;
        }
        entries.push_back(item);
    }
    return true;
}

int create(const std::vector<std::string>& args)
{
    bool store = false;
    std::size_t first = 0;
    if (first < args.size() && args[first] == "--store") {
        store = true;
        ++first;
    }
    if (first >= args.size())
        return usageError("create needs a container name");
    const std::string container = args[first];
    std::string containerLatin1;
    if (!toLatin1(container, containerLatin1))
        return fail("the name '" + container + "' cannot be written in Latin-1");

    std::vector<std::string> sources;
    std::set<std::string> entryNames;
    for (std::size_t i = first + 1; i < args.size(); ++i) {
        const std::string& source = args[i];
        std::error_code error;
        if (!fs::is_regular_file(source, error) || !std::ifstream(source, std::ios::binary))
            return fail("cannot read '" + source + "'");
        std::string sourceLatin1;
        if (!toLatin1(source, sourceLatin1))
            return fail("the name '" + source + "' cannot be written in Latin-1");
        if (!entryNames.insert(lowerCase(fs::path(sourceLatin1).filename().string())).second)
            return fail("two files would give the entry '" + fs::path(source).filename().string() + "'");
        sources.push_back(sourceLatin1);
    }

    // The writer appends, so an old container must go first.
    std::error_code error;
    fs::remove(container, error);
    if (error)
        return fail("cannot replace '" + container + "': " + error.message());

    std::string problem;
    {
        cArchive archive(containerLatin1, std::string());
        if (!fs::exists(container, error))
            problem = "cannot write '" + container + "'";
        for (std::size_t i = 0; problem.empty() && i < sources.size(); ++i) {
            if (!archive.AddFile(sources[i], fs::path(sources[i]).filename().string(),
                                 store ? compression::stored : compression::bzip2, !store))
                problem = "cannot add '" + args[first + 1 + i] + "' to '" + container + "'";
        }
    }
    if (!problem.empty()) {
        fs::remove(container, error);
        return fail(problem);
    }
    return 0;
}

int list(const std::vector<std::string>& args)
{
    if (args.size() != 1)
        return usageError("list needs exactly one container name");
    std::vector<cArchive::CacheItem> entries;
    if (!readEntries(args[0], entries))
        return kFailure;
    for (const auto& entry : entries) {
        std::cout << CrossPlatformApi::fileSystemEncoding(entry.name) << '\t'
                  << (entry.method == compression::bzip2 ? "bzip2" : "stored") << '\t'
                  << entry.uncompressedSize << '\t' << entry.storedSize << '\n';
    }
    return std::cout.flush() ? 0 : kFailure;
}

bool isPlainFileName(const std::string& name)
{
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
}

int extract(const std::vector<std::string>& args)
{
    if (args.size() < 2)
        return usageError("extract needs a container and a folder");
    const std::string& container = args[0];
    const fs::path folder = args[1];

    std::vector<cArchive::CacheItem> entries;
    if (!readEntries(container, entries))
        return kFailure;
    // As in the archive's index, the first entry of a name is the one found.
    std::map<std::string, cArchive::CacheItem> byName;
    for (const auto& entry : entries)
        byName.try_emplace(entry.name, entry);

    std::vector<std::string> wanted;
    for (std::size_t i = 2; i < args.size(); ++i) {
        std::string name;
        if (!toLatin1(args[i], name) || !byName.count(lowerCase(name)))
            return fail("'" + container + "' has no entry '" + args[i] + "'");
        wanted.push_back(lowerCase(name));
    }
    if (args.size() == 2) {
        for (const auto& entry : byName)
            wanted.push_back(entry.first);
    }

    std::error_code error;
    fs::create_directories(folder, error);
    if (error)
        return fail("cannot create '" + folder.string() + "': " + error.message());

    cArchive archive(CrossPlatformApi::fromFileSystemEncoding(container), false);
    for (const std::string& name : wanted) {
        const std::string nativeName = CrossPlatformApi::fileSystemEncoding(name);
        if (!isPlainFileName(name))
            return fail("refusing to write the entry '" + nativeName + "' outside the folder");
        const cBuffer data = archive.GetFile(name);
        if (!data.GetBuffer() && byName.at(name).storedSize != 0)
            return fail("the entry '" + nativeName + "' of '" + container + "' is damaged");
        const fs::path target = folder / nativeName;
        std::ofstream out(target, std::ios::binary | std::ios::trunc);
        out.write(data.GetBuffer(), data.GetBufferLength());
        if (!out.flush())
            return fail("cannot write '" + target.string() + "'");
    }
    return 0;
}

}

int main(int argc, char* argv[])
{
    const std::vector<std::string> args(argv + std::min(argc, 1), argv + argc);
    if (args.empty())
        return usageError("no command given");
    const std::string& command = args[0];
    const std::vector<std::string> rest(args.begin() + 1, args.end());
    if (command == "--help" || command == "-h" || command == "help") {
        std::cout << kUsage;
        return 0;
    }
    if (command == "create")
        return create(rest);
    if (command == "list")
        return list(rest);
    if (command == "extract")
        return extract(rest);
    return usageError("unknown command '" + command + "'");
}
