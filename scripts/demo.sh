#!/usr/bin/env bash
# Installs what is missing, builds, and starts the Start-Center on the sample
# installation in demo/.
#
# The launcher runs with a home folder of its own (build/demo-home), seeded
# with sample case files, so the demo never touches your own settings.
# With a display it opens the window as usual. Without one it runs under
# Xvfb, saves a screenshot to the file given as first argument (default:
# build/demo-screenshot.png) and ends by itself.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build}
BUILD_DIR=$build "$root/scripts/build.sh" Start-Center demo_installation demoscreenshot

launcher="$build/Start-Center.app/Contents/MacOS/Start-Center"
export HOME="$build/demo-home"
homedata="$HOME/Documents/Orvane Steuerfälle"
if [ ! -d "$homedata" ]; then
    mkdir -p "$homedata"
    cp -p "$root/demo/HomeData/"* "$homedata/"
fi

if [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; then
    exec "$launcher"
fi

screenshot=$(realpath -m "${1:-$build/demo-screenshot.png}")
export XDG_RUNTIME_DIR="$HOME/.runtime"
mkdir -p -m 700 "$XDG_RUNTIME_DIR"
xvfb-run -a -s "-screen 0 1280x1024x24" bash -c '
    "$1" & launcher=$!
    "$2" "$3" "Start-Center 2012" 30; status=$?
    kill $launcher 2>/dev/null; wait $launcher 2>/dev/null
    exit $status' demo "$launcher" "$build/demo/demoscreenshot" "$screenshot"
echo "Screenshot of the launcher: $screenshot"
