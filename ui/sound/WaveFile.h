#pragma once

#include <cstdint>
#include <optional>
#include <string>

// The start sound as it is shipped: a RIFF WAVE file of uncompressed samples
// (8, 16, 24 or 32 bit integers, or 32 bit floats), little-endian.
struct WaveSound
{
    enum class Encoding { Unsigned8, Signed16, Signed24, Signed32, Float32 };

    Encoding encoding = Encoding::Signed16;
    int channels = 0;
    std::uint32_t sampleRate = 0;
    // The sample frames, whole frames only.
    std::string samples;
};

// Reads the file's format and samples; nothing for a file that is no such
// WAVE file, has a broken header or no samples. Chunks after the samples are
// not looked at.
std::optional<WaveSound> parseWave(const std::string& bytes);
