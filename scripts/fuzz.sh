#!/usr/bin/env bash
# Builds the fuzzers (Clang, address and undefined behaviour sanitizers) and runs each of them from the corpora.
#
#   scripts/fuzz.sh                       each for 60 seconds
#   scripts/fuzz.sh 3600                  each for an hour
#   scripts/fuzz.sh 600 Picture PointList these two for ten minutes each
#   QUORVANE_FUZZ_KEEP=1 scripts/fuzz.sh  keeps the inputs found in build/fuzz/found for the next run
#   QUORVANE_FUZZ_SEED=1 scripts/fuzz.sh  the same inputs in the same order each time; otherwise others each time
#
# An input that stops a fuzzer stays in build/fuzz as stopped-<fuzzer>-...; to see it again, give it to the program:
#   build/fuzz/tests/fuzz/PictureFuzzer build/fuzz/stopped-Picture-crash-...
set -euo pipefail
source "$(dirname "$0")/common.sh"

seconds=${1:-60}
shift $(($# > 0 ? 1 : 0))
fuzzers=("$@")
[ "${#fuzzers[@]}" -gt 0 ] || fuzzers=(Algorithm CalibrationFile ParamText Picture PointList)

command -v clang++ >/dev/null || {
    say "Installing Clang"
    sudo=$([ "$(id -u)" -eq 0 ] || command -v sudo) || { say "FAILED: clang has to be installed by an administrator"; exit 1; }
    $sudo apt-get -qq update || true
    $sudo env DEBIAN_FRONTEND=noninteractive apt-get -qq install -y --no-install-recommends clang
}

dependencies_for=--tests
build_preset fuzz fuzzers

# Memory for the asking is refused as a machine would refuse it; OpenCV and the library then throw.
export ASAN_OPTIONS=allocator_may_return_null=1:max_allocation_size_mb=3000
found="$root/build/fuzz/found"
for fuzzer in "${fuzzers[@]}"; do
    [ -n "${QUORVANE_FUZZ_KEEP:-}" ] || rm -rf "${found:?}/$fuzzer"
    mkdir -p "$found/$fuzzer"
    # Files are read byte by byte; the others make their input from a few hundred bytes.
    longest=$([ "$fuzzer" = CalibrationFile ] && echo 3000 || echo 400)
    log="$root/build/fuzz/$fuzzer.log"
    say "Fuzzing $fuzzer for $seconds s"
    "$root/build/fuzz/tests/fuzz/${fuzzer}Fuzzer" -max_total_time="$seconds" -max_len="$longest" -timeout=120 \
        -rss_limit_mb=6000 -malloc_limit_mb=5000 -print_final_stats=1 -seed="${QUORVANE_FUZZ_SEED:-0}" \
        -artifact_prefix="$root/build/fuzz/stopped-$fuzzer-" \
        "$found/$fuzzer" "$root/tests/fuzz/corpus/$fuzzer" >"$log" 2>&1 || {
        tail -n 60 "$log"
        say "FAILED: $fuzzer was stopped by an input (build/fuzz/stopped-$fuzzer-*, build/fuzz/$fuzzer.log)"
        exit 1
    }
    say "$fuzzer: $(grep -ao 'number_of_executed_units: *[0-9]*' "$log" | grep -o '[0-9]*$') inputs, none stopped it"
done
say "DONE: fuzzing"
