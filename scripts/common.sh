# What the scripts of this folder share. Sourced, not run.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

say() { printf '%s\n' "== $*"; }

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

mkdir -p "$root/build"
