#include "WaveFile.h"

#include <algorithm>

namespace {

constexpr int MaxChannels = 32;
constexpr std::uint32_t MaxSampleRate = 384000;
constexpr std::uint16_t PcmFormat = 1;
constexpr std::uint16_t FloatFormat = 3;
constexpr std::uint16_t ExtensibleFormat = 0xFFFE;

std::uint32_t readUInt(const std::string& bytes, std::size_t at, int width)
{
    std::uint32_t value = 0;
    for (int i = width - 1; i >= 0; --i)
        value = (value << 8) | static_cast<unsigned char>(bytes[at + std::size_t(i)]);
    return value;
}

std::optional<WaveSound::Encoding> encodingOf(std::uint16_t format, std::uint16_t bits)
{
    if (format == FloatFormat)
        return bits == 32 ? std::optional(WaveSound::Encoding::Float32) : std::nullopt;
    if (format != PcmFormat)
        return std::nullopt;
    switch (bits) {
    case 8: return WaveSound::Encoding::Unsigned8;
    case 16: return WaveSound::Encoding::Signed16;
    case 24: return WaveSound::Encoding::Signed24;
    case 32: return WaveSound::Encoding::Signed32;
    default: return std::nullopt;
    }
}

} // namespace

std::optional<WaveSound> parseWave(const std::string& bytes)
{
    if (bytes.size() < 12 || bytes.compare(0, 4, "RIFF") != 0 || bytes.compare(8, 4, "WAVE") != 0)
        return std::nullopt;
    WaveSound sound;
    std::uint16_t blockAlign = 0;
    std::size_t at = 12;
    while (bytes.size() - at >= 8) {
        const std::string id = bytes.substr(at, 4);
        const std::size_t length = readUInt(bytes, at + 4, 4);
        at += 8;
        const std::size_t available = std::min(length, bytes.size() - at);
        if (id == "fmt ") {
            if (available < 16)
                return std::nullopt;
            std::uint16_t format = std::uint16_t(readUInt(bytes, at, 2));
            const std::uint16_t bits = std::uint16_t(readUInt(bytes, at + 14, 2));
            // The extensible header names its real format in its sub-format's first two bytes.
            if (format == ExtensibleFormat && available >= 26)
                format = std::uint16_t(readUInt(bytes, at + 24, 2));
            const auto encoding = encodingOf(format, bits);
            sound.channels = int(readUInt(bytes, at + 2, 2));
            sound.sampleRate = readUInt(bytes, at + 4, 4);
            blockAlign = std::uint16_t(readUInt(bytes, at + 12, 2));
            if (!encoding || sound.channels < 1 || sound.channels > MaxChannels || sound.sampleRate < 1
                || sound.sampleRate > MaxSampleRate || blockAlign != sound.channels * bits / 8)
                return std::nullopt;
            sound.encoding = *encoding;
        } else if (id == "data") {
            if (blockAlign == 0)
                return std::nullopt;   // samples before their format
            const std::size_t whole = available - available % blockAlign;
            if (whole == 0)
                return std::nullopt;
            sound.samples = bytes.substr(at, whole);
            return sound;
        }
        // Chunks are padded to an even length.
        if (length > bytes.size() - at)
            break;
        at += length + (length & 1);
        if (at > bytes.size())
            break;
    }
    return std::nullopt;
}
