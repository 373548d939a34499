// The start sound's file reader on arbitrary bytes: what it accepts is a
// sound the server can be asked to play, in whole frames.

#include "FuzzSupport.h"
#include "WaveFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto sound = parseWave(std::string(reinterpret_cast<const char*>(data), size));
    if (!sound)
        return 0;
    const int sampleBytes[] = {1, 2, 3, 4, 4};
    const std::size_t frame = std::size_t(sound->channels) * std::size_t(sampleBytes[int(sound->encoding)]);
    FUZZ_CHECK(sound->channels >= 1 && sound->channels <= 32);
    FUZZ_CHECK(sound->sampleRate >= 1 && sound->sampleRate <= 384000);
    FUZZ_CHECK(!sound->samples.empty() && sound->samples.size() % frame == 0);
    FUZZ_CHECK(sound->samples.size() <= size);
    return 0;
}
