#!/usr/bin/env bash
# Builds everything with AddressSanitizer (leak checking included) and
# UndefinedBehaviorSanitizer in a build folder of its own (BUILD_DIR, default
# build-asan/) and runs every test there. Any report of either sanitizer
# fails the test that caused it.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build-asan}
"$root/scripts/install-deps.sh"

# -O1 keeps the tests fast enough under the sanitizers without losing lines
# in the reports.
sanitizers="-fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug \
      -DCMAKE_CXX_FLAGS_DEBUG="-g -O1" -DCMAKE_CXX_FLAGS="$sanitizers" \
      -DCMAKE_EXE_LINKER_FLAGS="$sanitizers" >/dev/null
cmake --build "$build" -j"$(nproc)"

export ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1:detect_stack_use_after_return=1
# fontconfig keeps what it loads for the life of the process; when a start
# ends before Qt's font database has released it (a refused start, after the
# launcher began reading the font configuration at the top of main), the leak
# checker reports those blocks. They are fontconfig's own, not the launcher's.
printf 'leak:libfontconfig.so\n' >"$build/lsan.supp"
export LSAN_OPTIONS=suppressions=$build/lsan.supp
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
export QT_QPA_PLATFORM=offscreen
cd "$build"
ctest --output-on-failure -j"$(nproc)"
