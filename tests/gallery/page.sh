#!/usr/bin/env bash
# The page as a text: every section has pictures and times, every picture is there, nothing comes from elsewhere:
# page.sh FOLDER
source "$(dirname "$0")/../support/checks.sh"
folder=$1
page=$folder/index.html

# One line for each section: its title, its pictures, its times.
sections=$(awk '
    function finish() { if (title != "") printf "%s: %d pictures, %d times\n", title, pictures, times }
    /<h2 / { finish(); title = $0; gsub(/<[^>]*>/, "", title); pictures = times = 0 }
    { pictures += gsub(/<figure>/, "&"); times += gsub(/[0-9] ms/, "&") }
    END { finish() }' "$page")
echo "$sections"
[ "$(wc -l <<<"$sections")" -ge 9 ] || fail "sections are missing"
if grep -E ': 0 pictures|, 0 times' <<<"$sections"; then fail "a section shows no picture or no time"; fi

pictures=$(grep -o '<img src="[^"]*"' "$page" | cut -d '"' -f 2 | sort -u)
while read -r picture; do [ -s "$folder/$picture" ] || fail "there is no $picture"; done <<<"$pictures"
if grep -nE '(src|href)="?(https?:)?//|<script' "$page"; then fail "the page needs a network or a script"; fi
while read -r anchor; do grep -q "id=\"$anchor\"" "$page" || fail "a link leads to #$anchor, which is nowhere"; done \
    < <(grep -o 'href="#[^"]*"' "$page" | sed 's/.*#\(.*\)"/\1/')
echo "$(wc -l <<<"$pictures") pictures, all there"
