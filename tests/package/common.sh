# What the package tests share. Sourced, not run. A test that needs a tool that is not there says so and is skipped.
set -euo pipefail

skip() { echo "SKIPPED: $*"; exit 77; }
fail() { echo "FAILED: $*" >&2; exit 1; }
needs() { local tool; for tool in "$@"; do command -v "$tool" >/dev/null 2>&1 || skip "there is no $tool here"; done; }

# expect_equal WHAT EXPECTED ACTUAL
expect_equal() { [ "$2" = "$3" ] || fail "$1 is '$3', not '$2'"; }

only_file() {
    local found=("$@")
    [ "${#found[@]}" -eq 1 ] && [ -f "${found[0]}" ] || fail "there is not exactly one such file: ${found[*]}"
    printf '%s\n' "${found[0]}"
}
runtime_package() { only_file "$packages"/libquorvanevision[0-9]*.deb; }
development_package() { only_file "$packages"/libquorvanevision-dev*.deb; }
