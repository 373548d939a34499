#pragma once

// Runs work once a window has been painted for the first time, that is once
// its first frame is drawn and handed to the screen. The start sound waits
// for this moment, and the start-up benchmark stops its clock at it.
//
// Header-only and plain Qt, so that the benchmark's reference programs mark
// the same moment in the same way.

#include <QCoreApplication>
#include <QEvent>
#include <QWidget>

#include <functional>
#include <utility>

namespace firstpaint {

// Watches the window's paint events. The first one is the window drawing its
// frame; the work is queued behind it, so it runs after every widget of that
// frame is painted and the frame is flushed to the screen.
class Watcher : public QObject
{
public:
    Watcher(QWidget* window, std::function<void()> work)
        : QObject(window)
        , m_work(std::move(work))
    {
        window->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint && watched == parent()) {
            watched->removeEventFilter(this);
            // Dropped with the window if it goes before the call is due.
            QMetaObject::invokeMethod(watched, std::move(m_work), Qt::QueuedConnection);
            deleteLater();
        }
        return false;
    }

private:
    std::function<void()> m_work;
};

} // namespace firstpaint

// work runs once, after window's first frame; never when the window is
// destroyed before it was painted.
inline void runAfterFirstPaint(QWidget* window, std::function<void()> work)
{
    new firstpaint::Watcher(window, std::move(work));
}
