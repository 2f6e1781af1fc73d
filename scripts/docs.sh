#!/usr/bin/env bash
# Makes the API reference from the exported headers: build/docs/html/index.html. An exported name without a comment is
# an error. Installs Doxygen if it is missing.
#
#   scripts/docs.sh                     makes the reference
#   scripts/docs.sh --check FOLDER      makes it there and installs nothing; exit code 77 if there is no Doxygen
#   scripts/docs.sh --print-version     prints the version that it bears
#   scripts/docs.sh --list-headers      prints the headers that it is made from
set -euo pipefail
source "$(dirname "$0")/common.sh"
cd "$root"

version=$(sed -n 's/^project(QuorvaneVision VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
# A header with an exported name carries the mark; the two others only include such headers.
headers() {
    { grep -l '^[^#]*QUORVANE_EXPORT' framework/*.h calibration/*.h geometry/*.h; printf '%s\n' QuorvaneVision.h geometry/UtilityFunctions.h; } | LC_ALL=C sort
}

folder=$root/build/docs
case "${1:-}" in
    --print-version) printf '%s\n' "$version"; exit ;;
    --list-headers) headers; exit ;;
    --check) folder=${2:?a folder}; command -v doxygen >/dev/null || { say "SKIPPED: there is no Doxygen here"; exit 77; } ;;
    "") command -v doxygen >/dev/null || { say "Installing Doxygen"; install_with_apt doxygen; } ;;
    *) say "FAILED: unknown argument '$1' (there are --check, --print-version and --list-headers)"; exit 2 ;;
esac

say "API reference of $version"
rm -rf "$folder" && mkdir -p "$folder"
{
    cat docs/Doxyfile
    printf 'PROJECT_NUMBER = %s\nOUTPUT_DIRECTORY = "%s"\n' "$version" "$folder"
    printf 'INPUT = docs/api.md'
    printf ' %s' $(headers)
    printf '\n'
} | doxygen - >"$folder/doxygen.log" || { say "FAILED: the API reference"; exit 1; }
say "DONE: open $folder/html/index.html"
