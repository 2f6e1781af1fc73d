# What the package tests share. Sourced, not run.
source "$(dirname "${BASH_SOURCE[0]}")/../support/checks.sh"

only_file() {
    local found=("$@")
    [ "${#found[@]}" -eq 1 ] && [ -f "${found[0]}" ] || fail "there is not exactly one such file: ${found[*]}"
    printf '%s\n' "${found[0]}"
}
runtime_package() { only_file "$packages"/libquorvanevision[0-9]*.deb; }
development_package() { only_file "$packages"/libquorvanevision-dev*.deb; }
