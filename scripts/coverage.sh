#!/usr/bin/env bash
# Builds with coverage counters, runs the tests and counts the lines and branches of the library's own sources that
# they reach. The pages are written to build/coverage/report.
#
#   scripts/coverage.sh                   all tests
#   scripts/coverage.sh -R geometry/      arguments go to CTest
set -euo pipefail
source "$(dirname "$0")/common.sh"

command -v gcovr >/dev/null || {
    say "Installing gcovr"
    sudo=$([ "$(id -u)" -eq 0 ] || command -v sudo) || { say "FAILED: gcovr has to be installed by an administrator"; exit 1; }
    $sudo apt-get -qq update || true
    $sudo env DEBIAN_FRONTEND=noninteractive apt-get -qq install -y --no-install-recommends gcovr
}

dependencies_for=--tests
build_preset coverage
cd "$root"
find build/coverage -name '*.gcda' -delete
say "Testing (coverage)"
ctest --preset coverage --progress -j "$(nproc)" "$@" || { say "FAILED: tests (coverage)"; exit 1; }

say "Counting"
mkdir -p build/coverage/report
# A line that throws has a branch for every exception that anything in it may throw; those are left out.
gcovr --root . --object-directory build/coverage --exclude-throw-branches --exclude-unreachable-branches \
    --filter 'framework/' --filter 'algorithms/' --filter 'Includes/' --filter 'calibration/' --filter 'geometry/' \
    --html-details build/coverage/report/index.html --txt build/coverage/report/summary.txt --print-summary
cat build/coverage/report/summary.txt
say "DONE: build/coverage/report/index.html"
