#pragma once

#include <QEvent>

class QProcess;

// Waiting for a child program without freezing the window.
namespace ProcessWait {

// What a user does (mouse, keyboard, wheel, touch, tablet), as opposed to
// what the windows need to stay painted.
bool isUserInput(QEvent::Type type);

// Waits until the started process ends or timeoutMs passes (-1: no limit);
// true when it ended. On the GUI thread a local event loop keeps the windows
// painted while user input is held back, so that nothing can be started
// twice meanwhile; the loop also ends when the application quits. Elsewhere
// the thread simply waits.
bool finished(QProcess& process, int timeoutMs);

} // namespace ProcessWait
