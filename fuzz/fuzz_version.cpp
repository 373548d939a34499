// Version strings: the comparison of two texts a.b.c.d whatever they hold is
// an order (reflexive, antisymmetric, transitive), and a version read from a
// bundle's information dictionary reads back as the same version.

#include "FuzzSupport.h"
#include "VersionInfo.h"

#include <QString>

#include <filesystem>
#include <fstream>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::string bundle = [] {
        const std::string path = fuzz::privateFolder() + "/Version.app";
        std::filesystem::create_directories(path + "/Contents/MacOS");
        return path;
    }();

    // Three texts, separated by zero bytes.
    const std::string input(reinterpret_cast<const char*>(data), size);
    std::string parts[3];
    std::size_t start = 0;
    for (std::string& part : parts) {
        const std::size_t end = std::min(input.find('\0', start), input.size());
        part = start < input.size() ? input.substr(start, end - start) : std::string();
        start = end + 1;
    }
    const std::string& a = parts[0];
    const std::string& b = parts[1];
    const std::string& c = parts[2];
    FUZZ_CHECK(VersionInfo::compare(a, a) == 0);
    FUZZ_CHECK(VersionInfo::compare(a, b) == -VersionInfo::compare(b, a));
    if (VersionInfo::compare(a, b) <= 0 && VersionInfo::compare(b, c) <= 0)
        FUZZ_CHECK(VersionInfo::compare(a, c) <= 0);

    {
        std::ofstream plist(bundle + "/Contents/Info.plist", std::ios::binary | std::ios::trunc);
        plist << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
              << "<key>CFBundleVersion</key><string>"
              << QString::fromLatin1(a.data(), qsizetype(a.size())).toHtmlEscaped().toStdString()
              << "</string></dict></plist>\n";
    }
    VersionInfo info((bundle + "/Contents/MacOS/Version").c_str());
    int n1 = 0, n2 = 0, n3 = 0, n4 = 0;
    if (info.getFileVersion(n1, n2, n3, n4)) {
        const std::string text = info.getFileVersionAsString();
        FUZZ_CHECK(VersionInfo::compare(text, VersionInfo::asString(n1, n2, n3, n4)) == 0);
        info.getProductBuild();
    }
    return 0;
}
