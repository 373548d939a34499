// The colour language on arbitrary colour files: every colour of the
// top-level section is looked up by name, and every value of the reference
// section is resolved as an expression. Errors are switched on, so that the
// messages about broken colours are formatted too (and dropped).

#include "ApplicationInfo.h"
#include "ColorManager.h"
#include "CrossPlatformApi.h"
#include "FuzzSupport.h"
#include "IniFile.h"
#include "NvWinIni.h"

#include <QByteArray>

#include <cstdlib>
#include <filesystem>

namespace {

const char* const topLevelSection = "ApplicationColors";
// Bounds the work per input; a longer file only repeats what these show.
constexpr int maxLookups = 32;

// A bundle of our own in the private folder whose main configuration names
// no colour file, so the colour manager reads "ColorDefs.ini" beside it. The
// home folder points there as well, so nothing touches the user's files.
std::string prepareInstallation()
{
    const std::string root = fuzz::privateFolder();
    const std::string bundle = root + "/Start-Center.app";
    const std::string resources = bundle + "/Contents/Resources/";
    std::filesystem::create_directories(bundle + "/Contents/MacOS");
    std::filesystem::create_directories(resources);
    std::filesystem::create_directories(root + "/home/tmp");
    ::setenv("HOME", (root + "/home").c_str(), 1);
    ::setenv("TMPDIR", (root + "/home/tmp").c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", (root + "/home/.config").c_str(), 1);
    ::setenv("XDG_DATA_HOME", (root + "/home/.local/share").c_str(), 1);
    ::setenv("SC_COMMON_APPDATA", (root + "/home/shared").c_str(), 1);

    const QByteArray configuration("[Settings]\r\n");
    fuzz::writeFile(resources + "ORVKonf.ini", reinterpret_cast<const std::uint8_t*>(configuration.data()),
                    std::size_t(configuration.size()));
    CrossPlatformApi::overrideExecutablePath(bundle + "/Contents/MacOS/Start-Center");
    CrossPlatformApi::setMessageBoxHandler([](const MessageBoxRequest&) { return MessageBoxAnswer{}; });
    if (!cNvWinIni::theInstance()->setGlobalIniName("ORVKonf.ini"))
        fuzz::fail("the main configuration is readable", __FILE__, __LINE__);
    return cApplicationInfo::theInstance()->getFilenameInAppDir("ColorDefs.ini");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::string colorFile = prepareInstallation();
    fuzz::writeFile(colorFile, data, size);

    ColorManager* colors = ColorManager::theInstance();
    colors->init(topLevelSection, true);
    const cIniFile file(colorFile, false, false);

    int lookups = 0;
    if (const cIniFile::KeyMap* topLevel = file.FindSection("applicationcolors")) {
        for (auto it = topLevel->begin(); it != topLevel->end() && lookups < maxLookups; ++it, ++lookups)
            colors->getColor(std::string((*it).first), 0);
    }
    if (const cIniFile::KeyMap* references = file.FindSection("colordefs")) {
        for (auto it = references->begin(); it != references->end() && lookups < maxLookups; ++it, ++lookups) {
            unsigned int color = 0;
            colors->resolveColor(std::string((*it).second), color);
        }
    }
    return 0;
}
