#!/usr/bin/env bash
# Checks the format of every source and runs clang-tidy over the library's own; needs the release build's compile
# commands (scripts/test.sh makes them).
set -euo pipefail
source "$(dirname "$0")/common.sh"
cd "$root"

command -v clang-format >/dev/null && command -v clang-tidy >/dev/null || {
    say "Installing clang-format and clang-tidy"
    install_with_apt clang-format clang-tidy
}

say "Format"
git ls-files -z '*.h' '*.cpp' | xargs -0 clang-format --dry-run --Werror || { say "FAILED: format (clang-format -i mends it)"; exit 1; }

say "clang-tidy"
git ls-files -z 'framework/*.cpp' 'algorithms/*.cpp' 'Includes/*.cpp' 'calibration/*.cpp' 'geometry/*.cpp' |
    xargs -0 -n 1 -P "$(nproc)" clang-tidy -p build/release --quiet 2>"$root/build/.clang-tidy.log" || { cat "$root/build/.clang-tidy.log"; say "FAILED: clang-tidy"; exit 1; }

say "DONE: format and lint"
