// The launcher's start sound, played by a small program of its own that the
// launcher starts after its window is on screen:
//     startsound FILE
// It plays the WAVE file through a PulseAudio server (PipeWire offers one as
// well) with the library's simple interface. Being a process of its own, the
// sound library and the codecs it brings never enter the launcher, and the
// launcher ends the sound by ending the process.
//
// Exit status: 0 played, 1 wrong arguments, 2 no sound server,
// 3 no playable WAVE file, 4 the server refused or broke off the sound.

#include "RegularFile.h"
#include "WaveFile.h"

#include <pulse/simple.h>

#include <csignal>
#include <cstdlib>
#include <string>

#include <sys/prctl.h>
#include <unistd.h>

namespace {

enum ExitStatus { Played = 0, WrongArguments = 1, NoServer = 2, NotPlayable = 3, ServerFailed = 4 };

// No start sound is anywhere near this size.
constexpr std::size_t MaxSoundBytes = 16 * 1024 * 1024;

bool soundServerReachable()
{
    const char* server = std::getenv("PULSE_SERVER");
    if (server && *server)
        return true;
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    return runtime && *runtime && ::access((std::string(runtime) + "/pulse/native").c_str(), F_OK) == 0;
}

pa_sample_format_t sampleFormat(WaveSound::Encoding encoding)
{
    switch (encoding) {
    case WaveSound::Encoding::Unsigned8: return PA_SAMPLE_U8;
    case WaveSound::Encoding::Signed16: return PA_SAMPLE_S16LE;
    case WaveSound::Encoding::Signed24: return PA_SAMPLE_S24LE;
    case WaveSound::Encoding::Signed32: return PA_SAMPLE_S32LE;
    case WaveSound::Encoding::Float32: return PA_SAMPLE_FLOAT32LE;
    }
    return PA_SAMPLE_INVALID;
}

ExitStatus play(const WaveSound& sound)
{
    pa_sample_spec streamFormat;
    streamFormat.format = sampleFormat(sound.encoding);
    streamFormat.channels = std::uint8_t(sound.channels);
    streamFormat.rate = sound.sampleRate;
    pa_simple* stream = pa_simple_new(nullptr, "Start-Center", PA_STREAM_PLAYBACK, nullptr, "Startklang", &streamFormat,
                                      nullptr, nullptr, nullptr);
    if (!stream)
        return ServerFailed;
    const bool written = pa_simple_write(stream, sound.samples.data(), sound.samples.size(), nullptr) == 0;
    const bool drained = written && pa_simple_drain(stream, nullptr) == 0;
    pa_simple_free(stream);
    return drained ? Played : ServerFailed;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
        return WrongArguments;
    // The sound ends with the launcher, however the launcher ends.
    const pid_t launcher = ::getppid();
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (::getppid() != launcher)
        return Played;

    if (!soundServerReachable())
        return NoServer;
    const auto bytes = RegularFile::readWhole(argv[1], MaxSoundBytes);
    const auto sound = bytes ? parseWave(*bytes) : std::nullopt;
    if (!sound)
        return NotPlayable;
    return play(*sound);
}
