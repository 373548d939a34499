#include "ProcessWait.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QProcess>
#include <QThread>
#include <QTimer>

namespace {

// Swallows user input for the application as long as it exists.
class InputHold : public QObject
{
public:
    InputHold() { QCoreApplication::instance()->installEventFilter(this); }
    ~InputHold() override { QCoreApplication::instance()->removeEventFilter(this); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        return ProcessWait::isUserInput(event->type()) || QObject::eventFilter(watched, event);
    }
};

bool onGuiThread()
{
    const QCoreApplication* application = QCoreApplication::instance();
    return application && QThread::currentThread() == application->thread();
}

} // namespace

namespace ProcessWait {

bool isUserInput(QEvent::Type type)
{
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::Wheel:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::ShortcutOverride:
    case QEvent::Shortcut:
    case QEvent::ContextMenu:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TabletPress:
    case QEvent::TabletRelease:
    case QEvent::TabletMove:
        return true;
    default:
        return false;
    }
}

bool finished(QProcess& process, int timeoutMs)
{
    if (process.state() == QProcess::NotRunning)
        return true;
    if (!onGuiThread())
        return process.waitForFinished(timeoutMs);

    QEventLoop loop;
    QObject::connect(&process, &QProcess::finished, &loop, &QEventLoop::quit);
    QTimer timeUp;
    timeUp.setSingleShot(true);
    QObject::connect(&timeUp, &QTimer::timeout, &loop, &QEventLoop::quit);
    if (timeoutMs >= 0)
        timeUp.start(timeoutMs);
    {
        const InputHold hold;
        loop.exec();
    }
    return process.state() == QProcess::NotRunning;
}

} // namespace ProcessWait
