#include "FontConfigPreload.h"

#include <fontconfig/fontconfig.h>

#include <system_error>
#include <thread>

namespace {

// Joined at the latest when the process ends, also when main never asked.
struct PreloadThread
{
    std::thread thread;

    ~PreloadThread() { join(); }
    void join()
    {
        if (thread.joinable())
            thread.join();
    }
};

PreloadThread& preloadThread()
{
    static PreloadThread instance;
    return instance;
}

} // namespace

void FontConfigPreload::start()
{
    PreloadThread& preload = preloadThread();
    if (preload.thread.joinable())
        return;
    try {
        preload.thread = std::thread([] { (void)FcInit(); });
    } catch (const std::system_error&) {
        // No thread to be had: Qt reads the configuration itself, as usual.
    }
}

void FontConfigPreload::waitUntilLoaded()
{
    preloadThread().join();
}
