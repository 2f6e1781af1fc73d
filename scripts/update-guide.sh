#!/usr/bin/env bash
# Writes every snippet of examples/snippets anew into the page that shows it: into the first block of C++ behind the line
# with the link to the snippet. A test holds pages and sources equal.
set -euo pipefail
cd "$(dirname "$0")/.."

for page in docs/guide/*.md README.md; do
    awk '
        match($0, /examples\/snippets\/[A-Za-z]+\.cpp\)/) { source = substr($0, RSTART, RLENGTH - 1) }
        $0 == "```" { inside = 0 }
        !inside { print }
        $0 == "```cpp" && source { while ((getline line < source) > 0) print line; close(source); source = ""; inside = 1 }
    ' "$page" >"$page.new"
    if cmp -s "$page" "$page.new"; then rm "$page.new"; else cat "$page.new" >"$page"; rm "$page.new"; echo "updated $page"; fi
done
