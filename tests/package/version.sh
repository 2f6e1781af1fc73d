#!/usr/bin/env bash
# The version stands in the project's CMakeLists.txt alone; what has to repeat it agrees: version.sh SOURCE VERSION
source "$(dirname "$0")/common.sh"
source=$1 version=$2

grep -qE '^[0-9]+\.[0-9]+\.[0-9]+$' <<<"$version" || fail "'$version' is not a semantic version"
newest=$(sed -n 's/^## \[\([0-9][^]]*\)\].*/\1/p' "$source/CHANGELOG.md" | head -n 1)
expect_equal "the newest version of CHANGELOG.md" "$version" "$newest"
grep -qE "^## \[$version\] - [0-9]{4}-[0-9]{2}-[0-9]{2}$" "$source/CHANGELOG.md" || fail "CHANGELOG.md does not date $version"
expect_equal "the version of the API reference" "$version" "$("$source/scripts/docs.sh" --print-version)"
