#!/usr/bin/env bash
# Builds every benchmark in a Release build (BUILD_DIR, default:
# build-release/) and runs them one after the other. Prints the machine
# first, then each program's figure lines (NAME ratio=R ...). The figures are
# not judged; the script fails only when a benchmark does not run through.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build-release}
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! BUILD_DIR=$build BUILD_TYPE=Release "$root/scripts/build.sh" bench/all >"$log" 2>&1; then
    cat "$log"
    exit 1
fi

# The launcher's start sound plays during the start-up benchmark: when no
# sound server is set, a private PulseAudio server with a silent output is
# started for the run, if PulseAudio is installed.
if [ -z "${PULSE_SERVER:-}" ] && command -v pulseaudio >/dev/null; then
    pulse_home=$(mktemp -d)
    HOME=$pulse_home XDG_RUNTIME_DIR=$pulse_home pulseaudio -n --daemonize=no --exit-idle-time=-1 \
        --use-pid-file=no -L module-null-sink -L module-native-protocol-unix >/dev/null 2>&1 &
    pulse_pid=$!
    trap 'rm -f "$log"; kill "$pulse_pid" 2>/dev/null; rm -rf "$pulse_home"' EXIT
    for _ in $(seq 50); do
        [ -S "$pulse_home/pulse/native" ] && break
        sleep 0.1
    done
    [ -S "$pulse_home/pulse/native" ] && export PULSE_SERVER=unix:$pulse_home/pulse/native
fi

echo "machine: $(uname -m), $(nproc) cores"
echo "sound server: ${PULSE_SERVER:-none}"
failed=0
for program in "$build"/bench/bench_*; do
    [ -f "$program" ] && [ -x "$program" ] || continue
    name=$(basename "$program")
    echo "== $name"
    runner=()
    # The start-up benchmark measures under X11 as well, on a virtual display.
    if [ "$name" = bench_startup ] && [ -z "${DISPLAY:-}" ] && command -v xvfb-run >/dev/null; then
        runner=(xvfb-run -a -s "-screen 0 1280x1024x24")
    fi
    if ! "${runner[@]}" "$program" 2>"$log"; then
        echo "$name did not run through:"
        sed 's/^/    /' "$log"
        failed=1
    fi
done
exit $failed
