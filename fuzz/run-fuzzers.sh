#!/usr/bin/env bash
# Builds every fuzz target with clang, libFuzzer, AddressSanitizer and
# UndefinedBehaviorSanitizer, runs each for a bounded time, and prints per
# target the executions and the findings (crashes, leaks, timeouts, memory
# exhaustion). Exits non-zero when anything was found.
#
# Usage: fuzz/run-fuzzers.sh [target...]     (default: every target)
# Settings from the environment:
#   FUZZ_SECONDS   time per target (default 60)
#   FUZZ_RUNS      executions after which a target stops early (default: no limit)
#   FUZZ_JOBS      targets run at the same time (default: number of cores)
#   BUILD_DIR      the build folder (default build-fuzz/)
# Findings land in $BUILD_DIR/fuzz-findings/<target>/, new corpus entries in
# $BUILD_DIR/fuzz-corpus/<target>/, each run's log beside them. To replay a
# finding: $BUILD_DIR/fuzz/fuzz_<target> <file>.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build-fuzz}
seconds=${FUZZ_SECONDS:-60}
runs=${FUZZ_RUNS:--1}
jobs=${FUZZ_JOBS:-$(nproc)}
all_targets=(inifile archive colors date guardargs plist casefile dmfilename overview guardregister version tokenizer wave)
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=("${all_targets[@]}")

"$root/scripts/install-deps.sh"
missing=()
for p in clang libclang-rt-14-dev; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
    sudo=""
    [ "$(id -u)" -eq 0 ] || sudo="sudo"
    $sudo apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

sanitizers="-fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
      -DCMAKE_CXX_COMPILER=clang++ -DSC_FUZZ=ON \
      -DCMAKE_CXX_FLAGS="$sanitizers" -DCMAKE_EXE_LINKER_FLAGS="$sanitizers" >/dev/null
cmake --build "$build" -j"$(nproc)" $(printf -- '--target fuzz_%s ' "${targets[@]}")

export ASAN_OPTIONS=detect_leaks=1:abort_on_error=0
export UBSAN_OPTIONS=print_stacktrace=1
export QT_QPA_PLATFORM=offscreen

run_target() {
    local name=$1
    local findings="$build/fuzz-findings/$name" corpus="$build/fuzz-corpus/$name"
    # An input counts as hanging after 10 s; the INI target's few inputs of
    # several megabytes take up to 3 s under the sanitizers on an idle core,
    # more on a busy one, and get 60 s.
    local timeout=10
    [ "$name" != inifile ] || timeout=60
    mkdir -p "$findings" "$corpus"
    "$build/fuzz/fuzz_$name" "$corpus" "$root/fuzz/corpus/$name" \
        -max_total_time="$seconds" -runs="$runs" -rss_limit_mb=2048 -timeout="$timeout" -detect_leaks=1 \
        -print_final_stats=1 -artifact_prefix="$findings/" >"$findings.log" 2>&1 || true
}

# Only this run's targets start afresh, so that runs of other targets at the
# same time keep theirs.
mkdir -p "$build/fuzz-findings"
for name in "${targets[@]}"; do
    rm -rf "$build/fuzz-findings/$name" "$build/fuzz-findings/$name.log"
done
echo "Fuzzing ${targets[*]} for ${seconds} s each, $jobs at a time"
for name in "${targets[@]}"; do
    while [ "$(jobs -rp | wc -l)" -ge "$jobs" ]; do wait -n || true; done
    run_target "$name" &
done
wait

total_findings=0
printf '%-12s %14s %10s  %s\n' target executions findings "first finding"
for name in "${targets[@]}"; do
    findings="$build/fuzz-findings/$name"
    executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$findings.log" | tail -1)
    found=$(find "$findings" -maxdepth 1 -type f \
                \( -name 'crash-*' -o -name 'leak-*' -o -name 'timeout-*' -o -name 'oom-*' \) | sort)
    count=$(printf '%s' "$found" | grep -c . || true)
    total_findings=$((total_findings + count))
    printf '%-12s %14s %10s  %s\n' "$name" "${executions:-?}" "$count" "$(printf '%s' "$found" | head -1)"
done
[ "$total_findings" -eq 0 ]
