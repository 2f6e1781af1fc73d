#!/usr/bin/env bash
# Writes docs/interface.md: every exported name with its header and the first sentence of its comment, from the exported
# headers and the list of the library's symbols (tests/install/exported-symbols.txt).
#
#   scripts/interface.sh            writes the page
#   scripts/interface.sh --check    says whether the page is what this script would write, and changes nothing
#
# It is an error if no header declares a symbol, or if a public name has no comment.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
page=docs/interface.md

# What each header declares, one name a line: header <tab> kind <tab> qualified name <tab> first sentence
declared() {
    awk '
    function sentence(text) {
        gsub(/^ +| +$/, "", text)
        if (match(text, /\. +[-A-Z0-9(`]/)) text = substr(text, 1, RSTART)
        gsub(/\|/, "\\|", text)
        return text
    }
    function row(kind, name) {
        if (!((FILENAME, name) in seen)) printf "%s\t%s\t%s\t%s\n", FILENAME, kind, name, sentence(comment)
        seen[FILENAME, name] = 1
    }
    function forget() { comment = ""; paragraphs = 0 }
    FNR == 1 { space = ""; class = ""; access = ""; in_statement = 0; in_enum = 0; group = 0; named = 0; forget() }
    in_enum { if (/[}]/) in_enum = 0; forget(); next }
    in_statement { if (/;|[{] *[}]/) in_statement = 0; next }
    /^ *\/\/\/ ?@[{]/ { group = !named; named = 0; group_comment = ""; forget(); next }
    /^ *\/\/\/ ?@[}]/ { group = 0; forget(); next }
    /^ *\/\/\/ @name/ { named = 1; next }  # the functions of a named group have comments of their own
    /^ *\/\/\/ *$/ { if (comment != "") paragraphs = 1; next }
    /^ *\/\/\// { if (!paragraphs) { line = $0; sub(/^ *\/\/\/ ?/, "", line); comment = comment " " line }; next }
    /^ *(\/\/.*)?$/ { forget(); next }
    /^#/ { next }
    /^namespace .*[{][}]/ { forget(); next }
    /^namespace / { space = $2; forget(); next }
    /^[}]  \/\/ namespace/ { space = ""; next }
    /^class QUORVANE_EXPORT|^struct QUORVANE_EXPORT/ {
        kind = $1; class = $3; access = (kind == "class") ? "private" : "public"
        row(kind, space "::" class); forget(); if (/[}];/) class = ""; next
    }
    /^[}];/ { class = ""; forget(); next }
    /^ *(public|protected|private):/ { access = $1; sub(/:/, "", access); forget(); next }
    {
        scope = space (class == "" ? "" : "::" class)
        if ($1 == "enum") {
            name = ($2 == "class") ? $3 : $2
            row("enum", scope "::" name); forget(); in_enum = !/[}]/; next
        }
        if (!/;|[{] *[}]/) in_statement = 1
        if (group && comment == "") comment = group_comment
        if (group && group_comment == "") group_comment = comment
        if ((class != "" || /QUORVANE_EXPORT/) && match($0, /(operator=|~?[A-Za-z_][A-Za-z_0-9]*)\(/)) {
            name = substr($0, RSTART, RLENGTH - 1)
            if (comment == "" && substr(name, 1, 1) == "~") comment = "The destructor."
            row(/= 0;/ ? "abstract" : (access == "private" && class != "") ? "private" : "function", scope "::" name)
        }
        forget()
    }' "$@"
}

# The qualified names of the library's symbols, without arguments.
exported() {
    sed -e '/^typeinfo\|^vtable/d' -e 's/\[abi:[a-z0-9]*\]//' -e 's/(.*//' tests/install/exported-symbols.txt | sort -u
}

write_page() {
    local headers table
    headers=$(scripts/docs.sh --list-headers)
    table=$(mktemp)
    # shellcheck disable=SC2086 # one word for each header
    declared $headers >"$table"
    cat <<'MARKDOWN'
# Every exported name

Written by `scripts/interface.sh` from the headers and the list of the library's symbols; do not edit. `QuorvaneVision.h`
includes all of these headers. The reference (`scripts/docs.sh`) has their whole comments.
MARKDOWN
    exported | awk -F '\t' '
    FNR == NR && FILENAME != "-" {
        order[++count] = $3; header[$3] = $1; kind[$3] = $2; what[$3] = $4; next
    }
    { symbol[$1] = 1 }
    END {
        failed = 0
        for (name in symbol) if (!(name in header)) { print "no header declares " name >"/dev/stderr"; failed = 1 }
        for (i = 1; i <= count; ++i) {
            name = order[i]
            is_type = kind[name] ~ /class|struct|enum/
            if (!is_type && !(name in symbol) && kind[name] != "abstract" && !is_special(name)) continue
            if (kind[name] == "private") text = what[name] == "" ? "Private, but exported." : "Private, but exported. " what[name]
            else text = what[name]
            if (text == "") { print "no comment tells what " name " is for" >"/dev/stderr"; failed = 1 }
            if (header[name] != last) { printf "\n## %s\n\n| name | what it is for |\n|---|---|\n", header[name]; last = header[name] }
            printf "| %s`%s` | %s |\n", is_type ? kind[name] " " : "", name, text
        }
        exit failed
    }
    # A constructor or destructor that the header defaults has no symbol.
    function is_special(name, parts, n) { n = split(name, parts, "::"); return parts[n] == parts[n - 1] || parts[n] == "~" parts[n - 1] }
    ' "$table" - || { rm -f "$table"; return 1; }
    rm -f "$table"
}

case "${1:-}" in
    "") text=$(write_page); printf '%s\n' "$text" >"$page" ;;
    --check)
        text=$(write_page)
        diff <(printf '%s\n' "$text") "$page" || { echo "$page is not in step with the headers: run scripts/interface.sh"; exit 1; } ;;
    *) echo "unknown argument '$1' (there is --check)" >&2; exit 2 ;;
esac
