// The case-file reader on arbitrary file contents: the person and comment
// values a file list shows for every case file in the user's folder.

#include "DMDataFileInfo.h"
#include "FuzzSupport.h"

#include <algorithm>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::string path = fuzz::privateFolder() + "/input.est11";
    fuzz::writeFile(path, data, size);

    DMDataFileInfo info;
    const bool found = info.readFile(path);
    const std::string person = info.getStringValue(DMDataFileInfo::keyPerson);
    const std::string comment = info.getStringValue(DMDataFileInfo::keyComment);
    info.getStringValue("");
    info.getStringValue("<");
    // Values come from the first part of the file only; "?" stands for a
    // missing one.
    const std::size_t scanned = std::min(size, DMDataFileInfo::scannedSize);
    FUZZ_CHECK(person == "?" || person.size() < scanned);
    FUZZ_CHECK(comment == "?" || comment.size() < scanned);
    FUZZ_CHECK(found || (person == "?" && comment == "?"));
    return 0;
}
