# What the tests that are shell scripts share. Sourced, not run. A test that needs a tool that is not there says so and
# ends with 77, which CTest shows as skipped.
set -euo pipefail

skip() { echo "SKIPPED: $*"; exit 77; }
fail() { echo "FAILED: $*" >&2; exit 1; }
needs() { local tool; for tool in "$@"; do command -v "$tool" >/dev/null 2>&1 || skip "there is no $tool here"; done; }

# expect_equal WHAT EXPECTED ACTUAL
expect_equal() { [ "$2" = "$3" ] || fail "$1 is '$3', not '$2'"; }
