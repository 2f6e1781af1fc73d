#!/usr/bin/env bash
# Makes the packages and the source archive of a build: build.sh BUILD PACKAGES
source "$(dirname "$0")/common.sh"
build=$1 packages=$2
needs dpkg-deb dpkg-shlibdeps file gzip xz

rm -rf "$packages"
cd "$build"
cpack -B "$packages" >"$build/cpack.log" 2>&1 || { cat "$build/cpack.log"; fail "cpack"; }
cpack -B "$packages" --config CPackSourceConfig.cmake >"$build/cpack.log" 2>&1 || { cat "$build/cpack.log"; fail "cpack of the sources"; }
rm -rf "$packages/_CPack_Packages"
ls -l "$packages"
