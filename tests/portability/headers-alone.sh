#!/usr/bin/env bash
# Each header compiles when nothing was included before it, and without a warning:
# headers-alone.sh SOURCE OPENCV_INCLUDES COMPILER STANDARD HEADER...
# OPENCV_INCLUDES are folders with ; between them.
source "$(dirname "$0")/../support/checks.sh"
source=$1 compiler=$3 standard=$4
IFS=';' read -r -a opencv <<<"$2"
shift 4
needs "$compiler"

cd "$source"
failures=0
for header in "$@"; do
    "$compiler" -std="$standard" -fsyntax-only -Wall -Wextra -Wpedantic -Werror -I. "${opencv[@]/#/-isystem}" -x c++ - \
        <<<"#include \"$header\"" || { echo "$header does not compile alone"; failures=$((failures + 1)); }
done
[ "$failures" -eq 0 ] || fail "$failures of $# headers with $compiler as $standard"
echo "$# headers with $("$compiler" --version | head -n 1) as $standard"
