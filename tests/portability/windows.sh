#!/usr/bin/env bash
# Compiles sources for Windows, with the library's own warnings as errors; nothing is linked, so OpenCV's headers are
# enough: windows.sh SOURCE OPENCV_INCLUDES DEFINITION FILE...
source "$(dirname "$0")/../support/checks.sh"
source=$1 definition=$3
IFS=';' read -r -a opencv <<<"$2"
shift 3
compiler=x86_64-w64-mingw32-g++
needs "$compiler"

cd "$source"
failures=0
for file in "$@"; do
    "$compiler" -std=c++17 -fsyntax-only -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror -ffp-contract=off \
        -D"$definition" -I. "${opencv[@]/#/-isystem}" "$file" || { echo "$file does not compile for Windows"; failures=$((failures + 1)); }
done
[ "$failures" -eq 0 ] || fail "$failures of $# sources"
echo "$# sources with $("$compiler" --version | head -n 1)"
