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

echo "machine: $(uname -m), $(nproc) cores"
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
