// DMFileName::compose on arbitrary paths and folder symbols. The input is
// lines: the path, the base folder, then symbol definitions "NAME=value".
// Besides composing, a path put into symbolic form below the symbol
// "HomeDataDir" must compose to the same folder or file again.

#include "DMFileName.h"
#include "FuzzSupport.h"

#include <string_view>

namespace {

std::string withoutTrailingSlashes(std::string path)
{
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

std::string_view nextLine(std::string_view& text)
{
    const std::size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return line;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::string path(nextLine(input));
    DMFileName::resetGlobalFileEnvironment();
    DMFileEnvironment& environment = DMFileName::getGlobalFileEnvironment();
    environment.setBaseDir(std::string(nextLine(input)));
    while (!input.empty()) {
        const std::string_view line = nextLine(input);
        const std::size_t equals = line.find('=');
        if (equals != std::string_view::npos)
            environment.setSymbol(std::string(line.substr(0, equals)), std::string(line.substr(equals + 1)));
    }

    const DMFileName name(path);
    const std::string composed = name.compose();
    name.normalizedString();

    DMFileName absolute(path);
    absolute.makeAbsPath(false);
    DMFileName expanded(path);
    FUZZ_CHECK(expanded.makeAbsPath(true) == !composed.empty());
    FUZZ_CHECK(expanded.asParmeterisedString() == composed);

    // A composed path that still holds "<" came from text that is never
    // expanded (the base folder) or from a "<" without ">"; written after a
    // symbol, its angle brackets would read as symbols, since the notation
    // has no way to quote them.
    DMFileName relative(path);
    if (relative.makeRelPath() && composed.find('<') == std::string::npos) {
        const std::string again = DMFileName(relative.asParmeterisedString()).compose();
        // The symbol's own value decides whether a trailing "/" comes back;
        // only an expansion that outgrows the length limit may fail.
        FUZZ_CHECK(again.empty() || withoutTrailingSlashes(again) == withoutTrailingSlashes(composed));
    }
    DMFileName::resetGlobalFileEnvironment();
    return 0;
}
