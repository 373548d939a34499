#pragma once

// Qt reads the system's font configuration when the first font is looked up,
// on the UI thread: all configuration files and the font caches, about a
// fifth of the launcher's start. Started at the top of main, the preload reads
// it on a thread of its own while the application object connects to the
// display and the settings are read; Qt then finds it loaded.
namespace FontConfigPreload {

// Starts reading on a thread of its own; once per process, main thread only.
void start();

// Waits until the reading thread is done, if one was started: call it
// before the first font is looked up, so that Qt does not read the
// configuration a second time beside it. The thread is also waited for when
// the process ends.
void waitUntilLoaded();

} // namespace FontConfigPreload
