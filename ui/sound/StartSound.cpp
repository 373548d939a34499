// The launcher's start sound, in a module of its own: Qt Multimedia and the
// sound system it brings are loaded only when the sound is played, after the
// window is on screen, not with every start of the launcher.

#include <QSoundEffect>
#include <QUrl>

// Plays the sound file; the effect lives as a child of parent. Without a
// sound device it stays silent.
extern "C" Q_DECL_EXPORT QObject* scPlayStartSound(const QString& path, QObject* parent)
{
    auto* sound = new QSoundEffect(parent);
    sound->setSource(QUrl::fromLocalFile(path));
    sound->play();
    return sound;
}
