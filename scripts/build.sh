#!/usr/bin/env bash
# Configures and builds the Start-Center into BUILD_DIR (default: build/).
# Arguments name the targets to build; without any, everything is built.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build}
"$root/scripts/install-deps.sh"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE="${BUILD_TYPE:-RelWithDebInfo}" >/dev/null
targets=()
for t in "$@"; do targets+=(--target "$t"); done
cmake --build "$build" -j"$(nproc)" "${targets[@]}"
