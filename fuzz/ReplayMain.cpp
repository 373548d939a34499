// Runs a fuzz target on the files given on the command line (folders stand
// for every file in them), so that a build without libFuzzer still feeds the
// seed corpus and every saved finding to the parser under test.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::vector<std::filesystem::path> inputFiles(const char* argument)
{
    const std::filesystem::path path(argument);
    if (!std::filesystem::is_directory(path))
        return {path};
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
        if (entry.is_regular_file())
            files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace

int main(int argc, char** argv)
{
    int replayed = 0;
    for (int i = 1; i < argc; ++i) {
        for (const std::filesystem::path& file : inputFiles(argv[i])) {
            std::ifstream in(file, std::ios::binary);
            if (!in) {
                std::fprintf(stderr, "cannot read %s\n", file.c_str());
                return 1;
            }
            const std::vector<char> bytes{std::istreambuf_iterator<char>(in), {}};
            std::fprintf(stderr, "replaying %s (%zu bytes)\n", file.c_str(), bytes.size());
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
            ++replayed;
        }
    }
    // An empty or missing corpus must not pass as a clean run.
    std::printf("%d inputs replayed\n", replayed);
    return replayed > 0 ? 0 : 1;
}
