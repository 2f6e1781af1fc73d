#!/usr/bin/env bash
# Makes what the house hands out, in build/packages: two Debian packages (runtime, development) and the source archive.
# The packages are installed into a scratch root, used and removed, and the library is built once from the archive.
# Installs what is missing.
set -euo pipefail
source "$(dirname "$0")/common.sh"

packages=$root/build/packages
tree=$root/build/package

install_tools() {
    local tool
    for tool in dpkg-shlibdeps file xz fakeroot pkg-config; do
        command -v "$tool" >/dev/null || { say "Installing the packaging tools"; install_with_apt dpkg-dev file xz-utils fakeroot pkg-config; return; }
    done
}

# quietly NAME command...: the command's output is shown only if it fails
quietly() {
    local name=$1 log="$root/build/.package.log"
    shift
    "$@" >"$log" 2>&1 || { cat "$log"; say "FAILED: $name"; exit 1; }
}

install_tools
build_preset package
rm -rf "$packages"
say "Packing the Debian packages"
(cd "$tree" && quietly "the Debian packages" cpack -B "$packages")
say "Packing the sources"
(cd "$tree" && quietly "the source archive" cpack -B "$packages" --config CPackSourceConfig.cmake)
rm -rf "$packages/_CPack_Packages"

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# passes NAME command...: a check of tests/package, which ends with 77 where this machine cannot make it
passes() {
    local name=$1 status=0
    shift
    "$@" || status=$?
    [ "$status" -eq 0 ] || [ "$status" -eq 77 ] || { say "FAILED: $name"; exit 1; }
}

say "Checking the Debian packages"
libdir=$(sed -n 's/^CMAKE_INSTALL_LIBDIR:[A-Z]*=//p' "$tree/CMakeCache.txt")
passes "what the packages hold" "$root/tests/package/contents.sh" "$packages" "$("$root/scripts/docs.sh" --print-version)" \
    "$libdir" QuorvaneExport.h $("$root/scripts/docs.sh" --list-headers)
passes "the installation" "$root/tests/package/install.sh" "$packages" "$scratch/install" "$root/tests/install/host" "$libdir" c++ Ninja

say "Building the library from the source archive"
tar -xf "$packages"/quorvanevision-*.tar.xz -C "$scratch"
prefix=$("$root/scripts/install-dependencies.sh" --print-prefix)
(cd "$scratch"/quorvanevision-* && quietly "configuring the unpacked sources" \
    cmake --preset package ${prefix:+-DCMAKE_PREFIX_PATH="$prefix"} && cmake --build --preset package) ||
    { say "FAILED: the unpacked sources do not build"; exit 1; }

ls -l "$packages"
say "DONE: the packages are in $packages"
