#!/usr/bin/env bash
# Installs the packages into a scratch root with dpkg, which checks their dependencies against this machine's packages;
# builds a stranger's program against them, runs it, and removes the packages again without a trace:
# install.sh PACKAGES SCRATCH HOST LIBDIR CXX GENERATOR
source "$(dirname "$0")/common.sh"
packages=$1 scratch=$2 host=$3 libdir=$4 cxx=$5 generator=$6
needs dpkg cmake pkg-config
runtime=$(runtime_package) development=$(development_package)

as_root=()
if [ "$(id -u)" -ne 0 ]; then needs fakeroot; as_root=(fakeroot); fi
grep -q script-chrootless <<<"$(dpkg --force-help)" || skip "this dpkg runs no scripts outside the root they are for"

root=$scratch/root
rm -rf "$scratch" && mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates" "$scratch/bin"
# The scratch root claims this machine's packages, without their files.
cp /var/lib/dpkg/status "$root/var/lib/dpkg/status"
dpkg-query --show --showformat='${binary:Package}\n${Package}\n' | while read -r name; do : >"$root/var/lib/dpkg/info/$name.list"; done
# The loader's cache of this machine is left alone: what the packages would refresh it with is noted down.
printf '#!/bin/sh\necho "$DPKG_MAINTSCRIPT_NAME" >>"%s"\n' "$scratch/ldconfig-calls" >"$scratch/bin/ldconfig"
chmod +x "$scratch/bin/ldconfig"
in_root() {
    PATH="$scratch/bin:$PATH:/usr/sbin:/sbin" "${as_root[@]}" dpkg --root="$root" --force-not-root --force-script-chrootless \
        --log="$scratch/dpkg.log" "$@" >"$scratch/output.log" 2>&1 || { cat "$scratch/output.log"; fail "dpkg $*"; }
}
state() { dpkg-query --root="$root" --show --showformat='${db:Status-Status}' "$1" 2>/dev/null || echo gone; }

own=$(dpkg-deb --field "$runtime" Package)
if ! PATH="$scratch/bin:$PATH:/usr/sbin:/sbin" dpkg --root="$root" --force-not-root --dry-run --install "$runtime" >"$scratch/output.log" 2>&1 &&
    grep -q 'is not installed' "$scratch/output.log"; then
    skip "this machine lacks packages that ours depend on: $(grep 'is not installed' "$scratch/output.log" | tr '\n' ' ')"
fi

in_root --install "$runtime" "$development"
expect_equal "the state of $own" installed "$(state "$own")"
expect_equal "the state of libquorvanevision-dev" installed "$(state libquorvanevision-dev)"
expect_equal "what refreshed the loader's cache" postinst "$(cat "$scratch/ldconfig-calls")"

# A stranger's program, once through CMake and once through pkg-config.
env -u OpenCV_DIR cmake -G "$generator" -S "$host" -B "$scratch/with-cmake" -D CMAKE_BUILD_TYPE=Release \
    -D CMAKE_CXX_COMPILER="$cxx" -D CMAKE_PREFIX_PATH="$root/usr" >"$scratch/output.log" 2>&1 &&
    cmake --build "$scratch/with-cmake" >>"$scratch/output.log" 2>&1 || { cat "$scratch/output.log"; fail "the host with CMake"; }
flags=$(PKG_CONFIG_PATH="$root/usr/$libdir/pkgconfig" pkg-config --cflags --libs quorvanevision)
# shellcheck disable=SC2086 # the flags are several words
"$cxx" -std=c++17 "$host/host.cpp" -o "$scratch/with-pkg-config" $flags || fail "the host with pkg-config"
for program in "$scratch/with-cmake/host" "$scratch/with-pkg-config"; do
    output=$(LD_LIBRARY_PATH="$root/usr/$libdir" "$program") || fail "$program does not run"
    expect_equal "what $program says" "status 0, dots 8 x 8" "$output"
    loaded=$(LD_LIBRARY_PATH="$root/usr/$libdir" ldd "$program")
    grep -q "libQuorvaneVision.* => $root/" <<<"$loaded" || fail "$program did not load the installed library"
    if [ -d "$root/usr/$libdir/quorvanevision/opencv" ] && grep 'libopencv_' <<<"$loaded" | grep -v "$root/"; then
        fail "$program loads another OpenCV than the one that was installed"
    fi
done

# The runtime package must stay while the development package is there; then both go, with every file.
if PATH="$scratch/bin:$PATH:/usr/sbin:/sbin" "${as_root[@]}" dpkg --root="$root" --force-not-root --remove "$own" >/dev/null 2>&1; then
    fail "the runtime package could be removed under the development package"
fi
in_root --purge libquorvanevision-dev
in_root --purge "$own"
expect_equal "the state of $own" gone "$(state "$own" | sed 's/not-installed/gone/')"
expect_equal "what refreshed the loader's cache" "postinst postrm" "$(paste -sd ' ' "$scratch/ldconfig-calls")"
left=$(find "$root" -path "$root/var" -prune -o \( -type f -o -type l \) -print)
[ -z "$left" ] || fail "left behind: $left"
echo "installed, loaded by two hosts, and removed without a trace"
