#!/usr/bin/env bash
# Makes everything available that building QuorvaneVision needs: a compiler, CMake, Ninja, GoogleTest, Google
# Benchmark, CLI11 (for the example programs) and an OpenCV of at least 4.9. Safe to run again at any time; what is there
# already is left alone.
#
#   scripts/install-dependencies.sh                  installs what is missing, saying what it does
#   scripts/install-dependencies.sh --tests          also what tests need: a virtual screen, packaging tools
#   scripts/install-dependencies.sh --print-prefix   prints the prefix that CMake needs to find OpenCV
#                                                    (an empty line where it needs none) and installs nothing
#
# OpenCV is taken from the first of these that has it:
#   1. an OpenCV >= 4.9 that CMake finds already, or that OpenCV_DIR names;
#   2. the distribution's own package, if that is new enough;
#   3. a build of the distribution's source package of a newer suite, kept in a cache folder of this user
#      ($QUORVANE_CACHE, else $XDG_CACHE_HOME/quorvanevision, else ~/.cache/quorvanevision).
# Nothing is changed outside that cache folder and the packages that APT installs.
set -euo pipefail

readonly minimum_opencv=4.9
readonly opencv_modules=core,imgproc,imgcodecs,calib3d,features2d,flann,objdetect,photo,highgui
# The suite whose source package is built where the distribution's own OpenCV is too old, and that package's version.
readonly source_suite=trixie
readonly source_version=4.10.0

readonly cache="${QUORVANE_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/quorvanevision}"
readonly prefix="$cache/opencv-$source_version"
readonly stamp="$prefix/.complete"

say() { printf '%s\n' "[dependencies] $*" >&2; }
fail() { say "error: $*"; exit 1; }

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# --- APT ------------------------------------------------------------------------------------------------------------

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null 2>&1; then
        sudo "$@"
    else
        fail "these packages have to be installed by an administrator: ${missing[*]:-}"
    fi
}

installed() { dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null | grep -qx installed; }

apt_lists_are_fresh=no
refresh_apt_lists() {
    [ "$apt_lists_are_fresh" = yes ] && return
    say "refreshing APT's package lists"
    as_root apt-get -qq update || say "some package lists could not be refreshed; going on with those there are"
    apt_lists_are_fresh=yes
}

install_packages() {
    missing=()
    local package
    for package in "$@"; do installed "$package" || missing+=("$package"); done
    [ "${#missing[@]}" -eq 0 ] && return
    command -v apt-get >/dev/null 2>&1 || fail "there is no apt-get here; please install: ${missing[*]}"
    refresh_apt_lists
    say "installing ${missing[*]}"
    as_root env DEBIAN_FRONTEND=noninteractive apt-get -qq -o DPkg::Lock::Timeout=600 install -y --no-install-recommends "${missing[@]}" >"$scratch/apt.log" 2>&1 ||
        { tail -n 20 "$scratch/apt.log" >&2; fail "APT could not install: ${missing[*]}"; }
}

# --- Which OpenCV -----------------------------------------------------------------------------------------------------

# Whether CMake finds a new enough OpenCV with every module, looking into the prefix given (or into none).
cmake_finds_opencv() {
    command -v cmake >/dev/null 2>&1 || return 1
    local probe="$scratch/probe"
    rm -rf "$probe" && mkdir -p "$probe"
    cat >"$probe/CMakeLists.txt" <<CMAKE
cmake_minimum_required(VERSION 3.22)
project(probe LANGUAGES CXX)
find_package(OpenCV $minimum_opencv REQUIRED COMPONENTS ${opencv_modules//,/ })
CMAKE
    local generator=()
    command -v ninja >/dev/null 2>&1 && generator=(-G Ninja)
    cmake "${generator[@]}" -S "$probe" -B "$probe/build" ${1:+-DCMAKE_PREFIX_PATH="$1"} ${OpenCV_DIR:+-DOpenCV_DIR="$OpenCV_DIR"} >/dev/null 2>&1
}

opencv_candidate() { apt-cache policy libopencv-dev 2>/dev/null | sed -n 's/^ *Candidate: //p' | grep -vx '(none)' || true; }

packaged_opencv_is_new_enough() {
    command -v apt-cache >/dev/null 2>&1 || return 1
    local candidate
    candidate=$(opencv_candidate)
    if [ -z "$candidate" ]; then
        refresh_apt_lists
        candidate=$(opencv_candidate)
    fi
    [ -n "$candidate" ] && dpkg --compare-versions "$candidate" ge "$minimum_opencv" && dpkg --compare-versions "$candidate" lt 5
}

# --- Building OpenCV from the distribution's source package -----------------------------------------------------------

# The address of the mirror that this machine itself is set up to use.
mirror() {
    apt-get indextargets --format '$(ORIGIN) $(CREATED_BY) $(SUITE) $(SITE) $(REPO_URI)' 2>/dev/null |
        awk '$1 == "Debian" && $2 == "Packages" && $3 !~ /security|updates|backports/ { print $NF; exit }'
}

fetch_source() {
    local archive="opencv_$source_version+dfsg.orig.tar.xz" address
    if [ -f "$cache/$archive" ]; then return; fi
    address=$(mirror)
    if [ -z "$address" ]; then
        refresh_apt_lists
        address=$(mirror)
    fi
    [ -n "$address" ] || fail "this machine has no Debian mirror set up, so OpenCV's source package cannot be fetched"
    say "fetching the source package of OpenCV $source_version (suite $source_suite)"
    local apt="$scratch/apt" keyring=/usr/share/keyrings/debian-archive-keyring.gpg
    mkdir -p "$apt/lists/partial" "$apt/cache/archives/partial" "$apt/etc/sources.list.d" "$apt/download"
    printf 'deb-src [signed-by=%s] %s %s main\n' "$keyring" "$address" "$source_suite" >"$apt/etc/sources.list"
    local options=(-qq -o Dir::Etc::sourcelist="$apt/etc/sources.list" -o Dir::Etc::sourceparts="$apt/etc/sources.list.d"
        -o Dir::State::lists="$apt/lists" -o Dir::Cache="$apt/cache" -o APT::Sandbox::User=root)
    apt-get "${options[@]}" update >"$scratch/fetch.log" 2>&1 || { cat "$scratch/fetch.log" >&2; fail "the source lists of $source_suite could not be read"; }
    # The small description file may be missing on a mirror, so APT's verdict on the whole does not count; what counts
    # is that the tarball has the checksum of the signed source list. An interrupted download leaves a shorter one.
    local checksum
    checksum=$(apt-get "${options[@]}" source --print-uris opencv | awk -v name="$archive" '$2 == name { sub("^SHA256:", "", $4); print $4 }')
    (cd "$apt/download" && apt-get "${options[@]}" source --download-only opencv >"$scratch/fetch.log" 2>&1) || true
    printf '%s  %s\n' "$checksum" "$apt/download/$archive" | sha256sum --check --status 2>/dev/null ||
        { cat "$scratch/fetch.log" >&2; fail "the source package of OpenCV $source_version could not be fetched whole; please try again"; }
    mv "$apt/download/$archive" "$cache/$archive.part" && mv "$cache/$archive.part" "$cache/$archive"
}

unpack_source() {
    local source="$cache/source-$source_version"
    [ -f "$source/.unpacked" ] && return
    say "unpacking OpenCV $source_version"
    rm -rf "$source" && mkdir -p "$source"
    tar -xf "$cache/opencv_$source_version+dfsg.orig.tar.xz" -C "$source" --strip-components=1
    touch "$source/.unpacked"
}

configure_build() {
    say "configuring OpenCV $source_version"
    local off=() feature
    for feature in IPP ITT PROTOBUF OPENCL EIGEN LAPACK ADE JASPER OPENJPEG OPENEXR WEBP QUIRC FFMPEG GSTREAMER V4L 1394 VTK FLATBUFFERS; do
        off+=("-DWITH_$feature=OFF")
    done
    cmake -G Ninja -S "$cache/source-$source_version" -B "$cache/build-$source_version" \
        -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$prefix" -DBUILD_LIST="$opencv_modules" \
        -DBUILD_SHARED_LIBS=ON -DBUILD_TESTS=OFF -DBUILD_PERF_TESTS=OFF -DBUILD_EXAMPLES=OFF -DBUILD_DOCS=OFF \
        -DBUILD_opencv_apps=OFF -DBUILD_opencv_python3=OFF -DBUILD_JAVA=OFF -DBUILD_ZLIB=OFF -DBUILD_JPEG=OFF \
        -DBUILD_PNG=OFF -DBUILD_TIFF=OFF -DWITH_JPEG=ON -DWITH_PNG=ON -DWITH_TIFF=ON -DWITH_GTK=ON \
        -DOPENCV_GENERATE_PKGCONFIG=ON -DCMAKE_INSTALL_RPATH="$prefix/lib" -DCMAKE_INSTALL_LIBDIR=lib -DOPENCV_LIB_INSTALL_PATH=lib \
        "${off[@]}" >"$cache/configure.log" 2>&1 || { tail -n 30 "$cache/configure.log" >&2; fail "OpenCV could not be configured"; }
}

# Ninja's own lines, thinned to one every five percent.
show_progress() {
    awk -v log_file="$cache/build.log" '
        { print >log_file; fflush(log_file) }
        match($0, /^\[[0-9]+%\]/) {
            percent = substr($0, 2, RLENGTH - 3) + 0
            if (percent >= next_percent) { printf "[dependencies] building OpenCV: %d %%\n", percent; fflush(); next_percent = percent - percent % 5 + 5 }
        }' >&2
}

build_and_install() {
    say "building OpenCV $source_version on $(nproc) cores (about five minutes on two)"
    NINJA_STATUS='[%p] ' ninja -C "$cache/build-$source_version" | sed -u 's/^\[ */[/' | show_progress ||
        { tail -n 40 "$cache/build.log" >&2; fail "OpenCV could not be built"; }
    cmake --install "$cache/build-$source_version" >"$cache/install.log" 2>&1 || fail "OpenCV could not be installed into $prefix"
    cmake_finds_opencv "$prefix" || fail "the OpenCV built in $prefix cannot be used"
    date >"$stamp"
    rm -rf "$cache/build-$source_version" "$cache/source-$source_version"
    say "OpenCV $source_version is installed in $prefix"
}

build_opencv() {
    install_packages pkg-config xz-utils libjpeg-dev libpng-dev libtiff-dev zlib1g-dev libgtk-3-dev
    mkdir -p "$cache"
    exec 9>"$cache/.lock"
    flock --nonblock 9 || { say "another run is building OpenCV in $cache; waiting for it"; flock 9; }
    if [ -f "$stamp" ] && cmake_finds_opencv "$prefix"; then return; fi
    fetch_source
    unpack_source
    configure_build
    build_and_install
}

# --- The ways to call this script ---------------------------------------------------------------------------------

with_virtual_screen=no
case "${1:-}" in
    --tests) with_virtual_screen=yes ;;
    --print-prefix)
        if [ -f "$stamp" ] && ! cmake_finds_opencv ""; then printf '%s\n' "$prefix"; else printf '\n'; fi
        exit 0 ;;
    "") ;;
    *) fail "unknown argument '$1' (there are --tests and --print-prefix)" ;;
esac

install_packages g++ cmake ninja-build libgtest-dev libgmock-dev libbenchmark-dev libcli11-dev
if [ "$with_virtual_screen" = yes ]; then install_packages libx11-dev libxtst-dev xvfb dpkg-dev fakeroot file xz-utils; fi

if [ -n "${OpenCV_DIR:-}" ] && ! cmake_finds_opencv ""; then
    fail "OpenCV_DIR names $OpenCV_DIR, which is not an OpenCV of at least $minimum_opencv with the modules $opencv_modules"
elif cmake_finds_opencv ""; then
    say "an OpenCV of at least $minimum_opencv is installed"
elif [ -f "$stamp" ] && cmake_finds_opencv "$prefix"; then
    say "using the OpenCV $source_version built earlier in $prefix"
elif packaged_opencv_is_new_enough; then
    install_packages libopencv-dev
    cmake_finds_opencv "" || fail "the distribution's OpenCV cannot be used"
else
    build_opencv
fi
say "everything that the build needs is there"
