#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// Helpers shared by the fuzz targets, in the libFuzzer build and in the
// replay programs alike.
namespace fuzz {

// A folder of this process's own below $TMPDIR (or /tmp), created on first
// use and removed when the process ends normally.
const std::string& privateFolder();

// Replaces the file at path with the given bytes. Aborts when it cannot:
// a target that cannot hand its input to the parser would test nothing.
void writeFile(const std::string& path, const std::uint8_t* data, std::size_t size);

// Drops Qt's debug output and warnings; some code under test warns about
// every broken input, which would flood the fuzzer's output and slow it down.
void silenceQtMessages();

[[noreturn]] void fail(const char* condition, const char* file, int line);

} // namespace fuzz

// A property of the parser's result that must hold for every input; a
// violation aborts, which the fuzzer reports as a crash with the input.
#define FUZZ_CHECK(condition) ((condition) ? void(0) : fuzz::fail(#condition, __FILE__, __LINE__))
