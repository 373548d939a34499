// The launcher's start sound, in a module of its own: Qt Multimedia and the
// sound system it brings are loaded only when the sound is played, after the
// window is on screen, not with every start of the launcher.

#include <QAudioDevice>
#include <QLoggingCategory>
#include <QMediaDevices>
#include <QSoundEffect>
#include <QUrl>

#include <cstdlib>
#include <string>

#include <unistd.h>

Q_LOGGING_CATEGORY(lcSound, "startcenter.sound", QtWarningMsg)

namespace {

// Qt Multimedia plays through a PulseAudio server (PipeWire offers one as
// well) and complains on the error output when there is none; so the server
// is looked for before Qt Multimedia is asked for a device.
bool soundServerReachable()
{
    const char* server = std::getenv("PULSE_SERVER");
    if (server && *server)
        return true;
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    return runtime && *runtime && ::access((std::string(runtime) + "/pulse/native").c_str(), F_OK) == 0;
}

} // namespace

// Plays the sound file; the effect lives as a child of parent. Without a
// sound device it stays silent and returns null.
extern "C" Q_DECL_EXPORT QObject* scPlayStartSound(const QString& path, QObject* parent)
{
    if (!soundServerReachable() || QMediaDevices::audioOutputs().isEmpty()) {
        qCDebug(lcSound) << "no sound device, the start sound is left out";
        return nullptr;
    }
    auto* sound = new QSoundEffect(parent);
    sound->setSource(QUrl::fromLocalFile(path));
    sound->play();
    return sound;
}
