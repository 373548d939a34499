// Writes the sample installation's start sound: a short rising chime of
// four sine tones, 16-bit mono PCM in a WAV file.
//
//   demojingle <file.wav>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <vector>

namespace {

constexpr int sampleRate = 22050;

struct Tone
{
    double frequency;   // Hz
    double seconds;
};

// C5, E5, G5 and a longer C6.
constexpr Tone chime[] = {{523.25, 0.11}, {659.25, 0.11}, {783.99, 0.11}, {1046.50, 0.32}};

void appendTone(std::vector<std::int16_t>& samples, const Tone& tone)
{
    const double pi = std::acos(-1.0);
    const int count = int(tone.seconds * sampleRate);
    const int attack = sampleRate / 200;   // 5 ms, against clicks
    for (int i = 0; i < count; ++i) {
        const double t = double(i) / sampleRate;
        const double envelope = std::min(1.0, double(i) / attack) * std::exp(-3.0 * t / tone.seconds);
        const double value = 0.35 * envelope
            * (std::sin(2 * pi * tone.frequency * t) + 0.25 * std::sin(4 * pi * tone.frequency * t));
        samples.push_back(std::int16_t(std::lround(value * 32767)));
    }
}

void writeLittleEndian(std::ofstream& out, std::uint32_t value, int bytes)
{
    for (int i = 0; i < bytes; ++i)
        out.put(char((value >> (8 * i)) & 0xFF));
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: demojingle <file.wav>\n");
        return 2;
    }
    std::vector<std::int16_t> samples;
    for (const Tone& tone : chime)
        appendTone(samples, tone);

    std::ofstream out(argv[1], std::ios::binary | std::ios::trunc);
    const std::uint32_t dataBytes = std::uint32_t(samples.size() * sizeof(std::int16_t));
    out.write("RIFF", 4);
    writeLittleEndian(out, 36 + dataBytes, 4);
    out.write("WAVEfmt ", 8);
    writeLittleEndian(out, 16, 4);                  // format chunk size
    writeLittleEndian(out, 1, 2);                   // PCM
    writeLittleEndian(out, 1, 2);                   // mono
    writeLittleEndian(out, sampleRate, 4);
    writeLittleEndian(out, sampleRate * 2, 4);      // bytes per second
    writeLittleEndian(out, 2, 2);                   // bytes per frame
    writeLittleEndian(out, 16, 2);                  // bits per sample
    out.write("data", 4);
    writeLittleEndian(out, dataBytes, 4);
    for (const std::int16_t sample : samples)
        writeLittleEndian(out, std::uint16_t(sample), 2);
    if (!out) {
        std::fprintf(stderr, "demojingle: cannot write %s\n", argv[1]);
        return 1;
    }
    return 0;
}
