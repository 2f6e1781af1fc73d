# What the scripts of this folder share. Sourced, not run.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

mkdir -p "$root/build"

say() { printf '%s\n' "== $*"; }

# Installs packages of the distribution: install_with_apt doxygen ...
install_with_apt() {
    local as_root
    as_root=$([ "$(id -u)" -eq 0 ] || command -v sudo) && command -v apt-get >/dev/null ||
        { say "FAILED: an administrator has to install $*"; exit 1; }
    $as_root apt-get -qq update || true
    $as_root env DEBIAN_FRONTEND=noninteractive apt-get -qq -o DPkg::Lock::Timeout=600 install -y --no-install-recommends "$@" \
        >"$root/build/.apt.log" 2>&1 || { cat "$root/build/.apt.log"; say "FAILED: APT could not install $*"; exit 1; }
}

# Installs what is missing, then configures and builds a preset: build_preset release [target ...]
# dependencies_for=--tests also installs what only the tests need.
build_preset() {
    local preset=$1 prefix targets=()
    shift
    [ "$#" -gt 0 ] && targets=(--target "$@")
    say "Dependencies"
    "$root/scripts/install-dependencies.sh" ${dependencies_for:-}
    prefix=$("$root/scripts/install-dependencies.sh" --print-prefix)
    say "Building ($preset)"
    (cd "$root" && cmake --preset "$preset" ${prefix:+-DCMAKE_PREFIX_PATH="$prefix"} >"$root/build/.configure-$preset.log" 2>&1) ||
        { cat "$root/build/.configure-$preset.log"; say "FAILED: the build could not be configured"; exit 1; }
    (cd "$root" && cmake --build --preset "$preset" "${targets[@]}") || { say "FAILED: the build"; exit 1; }
}
