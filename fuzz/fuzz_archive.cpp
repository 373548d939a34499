// The image container reader on arbitrary files: a full listing, every entry
// fetched, and the lazy path where a request scans only as far as it needs.

#include "Archive.h"
#include "FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::string path = fuzz::privateFolder() + "/input.cnt";
    fuzz::writeFile(path, data, size);

    cArchive listing(path, true);
    const std::vector<std::string> names = listing.GetFilenames(true);
    for (const std::string& name : names) {
        const cBuffer entry = listing.GetFile(name);
        FUZZ_CHECK(entry.GetBufferLength() >= 0);
    }

    // Without kept data every request reads its entry from the file again;
    // a name that is not there makes the request scan to the end. Entry
    // names end at their first zero byte, so this one is never among them.
    cArchive lazy(path, false);
    if (!names.empty())
        lazy.GetFile(names.back());
    lazy.GetFile(std::string("no such\0entry", 13));
    FUZZ_CHECK(lazy.GetFilenames(false) == names);
    if (!names.empty())
        lazy.GetFile(names.front());

    cArchive everything(path, true);
    everything.readAll();
    FUZZ_CHECK(everything.GetFilenames(false) == names);
    return 0;
}
