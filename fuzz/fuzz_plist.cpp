// The Info.plist reader on arbitrary file contents.

#include "BundleInfo.h"
#include "FuzzSupport.h"

#include <filesystem>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::string bundle = [] {
        const std::string path = fuzz::privateFolder() + "/Fuzz.app";
        std::filesystem::create_directories(path + "/Contents");
        return path;
    }();
    fuzz::writeFile(bundle + "/Contents/Info.plist", data, size);

    const BundleInfo info = BundleInfo::forPath(bundle);
    FUZZ_CHECK(info.isValid());
    for (const char* key : {"CFBundleIdentifier", "CFBundleVersion", "CFBundleShortVersionString",
                            "CFBundleExecutable", "CFBundleName", ""})
        info.value(key);
    return 0;
}
