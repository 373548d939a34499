// The launcher's start sound, in a module of its own, loaded only when the
// sound plays, after the window is on screen. It plays the WAVE file through
// a PulseAudio server (PipeWire offers one as well) with the library's
// simple interface, on a thread of its own, so that neither a media stack
// nor a slow server weighs on the launcher.

#include "RegularFile.h"
#include "WaveFile.h"

#include <QFile>
#include <QLoggingCategory>
#include <QObject>
#include <QString>

#include <pulse/error.h>
#include <pulse/simple.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>

#include <unistd.h>

Q_LOGGING_CATEGORY(lcSound, "startcenter.sound", QtWarningMsg)

namespace {

// No start sound is anywhere near this size.
constexpr std::size_t MaxSoundBytes = 16 * 1024 * 1024;
// Samples are handed to the server in slices of about this length, so that
// a stop request is seen soon.
constexpr std::size_t SliceMilliseconds = 50;

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

// Plays the sound to its end or until stop is set. Runs on its own thread.
void play(const WaveSound& sound, const std::shared_ptr<std::atomic<bool>>& stop)
{
    pa_sample_spec streamFormat;
    streamFormat.format = sampleFormat(sound.encoding);
    streamFormat.channels = std::uint8_t(sound.channels);
    streamFormat.rate = sound.sampleRate;
    int error = 0;
    pa_simple* stream = pa_simple_new(nullptr, "Start-Center", PA_STREAM_PLAYBACK, nullptr, "Startklang", &streamFormat,
                                      nullptr, nullptr, &error);
    if (!stream) {
        qCDebug(lcSound) << "the sound server refused the start sound:" << pa_strerror(error);
        return;
    }
    const std::size_t frame = pa_frame_size(&streamFormat);
    const std::size_t slice = std::max<std::size_t>(frame, pa_usec_to_bytes(SliceMilliseconds * 1000, &streamFormat));
    for (std::size_t at = 0; at < sound.samples.size() && !*stop; at += slice) {
        const std::size_t length = std::min(slice, sound.samples.size() - at);
        if (pa_simple_write(stream, sound.samples.data() + at, length, &error) < 0) {
            qCDebug(lcSound) << "the start sound broke off:" << pa_strerror(error);
            break;
        }
    }
    if (!*stop)
        pa_simple_drain(stream, nullptr);
    pa_simple_free(stream);
}

// Lives as long as the launcher wants the sound: its end asks the playing
// thread to stop after the slice under way.
class StartSound : public QObject
{
public:
    StartSound(std::shared_ptr<std::atomic<bool>> stop, QObject* parent)
        : QObject(parent)
        , m_stop(std::move(stop))
    {
    }
    ~StartSound() override { *m_stop = true; }

private:
    std::shared_ptr<std::atomic<bool>> m_stop;
};

} // namespace

// Plays the sound file; the returned object lives as a child of parent and
// stops the sound when it goes. Without a sound server, or with a file that
// is no playable WAVE file, it stays silent and returns null.
extern "C" Q_DECL_EXPORT QObject* scPlayStartSound(const QString& path, QObject* parent)
{
    if (!soundServerReachable()) {
        qCDebug(lcSound) << "no sound server, the start sound is left out";
        return nullptr;
    }
    const auto bytes = RegularFile::readWhole(QFile::encodeName(path).toStdString(), MaxSoundBytes);
    auto sound = bytes ? parseWave(*bytes) : std::nullopt;
    if (!sound) {
        qCDebug(lcSound) << "the start sound is no playable WAVE file:" << path;
        return nullptr;
    }
    auto stop = std::make_shared<std::atomic<bool>>(false);
    // Detached: a sound still playing when the launcher ends ends with it.
    std::thread([sound = std::move(*sound), stop] { play(sound, stop); }).detach();
    return new StartSound(stop, parent);
}
