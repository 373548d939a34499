// The INI parser on arbitrary file contents, in both parsing modes, followed
// by the lookups a caller can make on what it found.
//
// About one input in 256 stands for a file of several megabytes instead: the
// rest of it repeated to (n % 4 + 1) MiB, n being its first byte, parsed in
// one of the two modes. A hash of the input's bytes picks these inputs and
// the mode, so the mutants of a large input are mostly small again. Such a
// file takes a thousand times as long as a small one; were largeness
// inherited, the fuzzer, drawn to the new hit counts in the parser's loops,
// would run little else. The number of large inputs run is printed at the end.

#include "IniFuzzing.h"

#include <cstdio>
#include <cstdlib>

namespace {

constexpr std::uint32_t LargeOneIn = 256;

std::uint32_t fnv1a(const std::uint8_t* data, std::size_t size)
{
    std::uint32_t hash = 2166136261u;
    for (std::size_t i = 0; i < size; ++i)
        hash = (hash ^ data[i]) * 16777619u;
    return hash;
}

std::size_t largeRuns = 0;

void reportLargeRuns()
{
    std::fprintf(stderr, "inifile: %zu inputs of 1 to 4 MiB\n", largeRuns);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::string path = fuzz::privateFolder() + "/input.ini";
    static const int reported = std::atexit(reportLargeRuns);
    (void)reported;
    const std::uint32_t hash = size < 2 ? 1 : fnv1a(data, size);
    if (hash % LargeOneIn != 0) {
        fuzz::writeFile(path, data, size);
        fuzz::parseInBothModes(path);
        return 0;
    }
    ++largeRuns;
    const std::size_t wanted = (std::size_t(data[0] % 4) + 1) << 20;
    std::string content;
    content.reserve(wanted + size);
    while (content.size() < wanted)
        content.append(reinterpret_cast<const char*>(data) + 1, size - 1);
    fuzz::writeFile(path, reinterpret_cast<const std::uint8_t*>(content.data()), content.size());
    fuzz::parseInMode(path, (hash / LargeOneIn) % 2 != 0);
    return 0;
}
