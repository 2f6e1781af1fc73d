#!/usr/bin/env bash
# Installs what is missing, builds everything and runs all tests. Arguments go to CTest, for example -R framework/
#
#   QUORVANE_PRESET=asan scripts/test.sh     the same with another preset of CMakePresets.json
set -euo pipefail
source "$(dirname "$0")/common.sh"

preset=${QUORVANE_PRESET:-release}
dependencies_for=--tests
build_preset "$preset"
say "Testing ($preset)"
(cd "$root" && ctest --preset "$preset" --progress -j "$(nproc)" "$@") || { say "FAILED: tests ($preset)"; exit 1; }
say "DONE: all tests passed ($preset)"
