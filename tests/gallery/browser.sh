#!/usr/bin/env bash
# Looks at a page in a browser without a window, at one width, and keeps a picture of it: browser.sh FOLDER WIDTH
# With a third argument, "broken", a copy with faults is looked at, and the faults must be found.
source "$(dirname "$0")/../support/checks.sh"
folder=$1 width=$2 kind=${3:-whole}
here=$(cd "$(dirname "$0")" && pwd)

browser=""
for name in chromium chromium-browser google-chrome; do command -v "$name" >/dev/null 2>&1 && browser=$name && break; done
[ -n "$browser" ] || skip "there is no Chromium here"

profile=$(mktemp -d)
trap 'rm -rf "$profile"' EXIT
page=$folder/inspected-$kind-$width.html
frame=$folder/frame-$kind-$width.html
log=$folder/inspected-$kind-$width.log
{
    if [ "$kind" = broken ]; then
        sed -e '0,/picture-1\.png/s//no-such-picture.png/' -e '0,/<h2/s//<div style="width: 3000px">wide<\/div><p style="font-size: 8px">small<\/p>&/' \
            "$folder/index.html"
        echo '<script>console.error("a fault of the page")</script>'
    else
        cat "$folder/index.html"
    fi
    echo "<script>"
    cat "$here/inspect.js"
    echo "</script>"
} >"$page"
# A browser's own window cannot be as narrow as a phone, but a frame can; it also takes down what the page tells it.
cat >"$frame" <<HTML
<!DOCTYPE html><meta charset="utf-8"><pre id="inspection"></pre>
<script>addEventListener("message", (event) => document.getElementById("inspection").append(event.data));</script>
<iframe src="$(basename "$page")" style="width: ${width}px; height: 1000px; border: 0"></iframe>
HTML

browse() {
    timeout 120 "$browser" --headless=new --no-sandbox --disable-gpu --hide-scrollbars --user-data-dir="$profile" \
        --enable-logging=stderr "$@"
}
dom=$(browse --window-size=1600,1200 --virtual-time-budget=10000 --dump-dom "file://$frame" 2>"$log") || { cat "$log"; fail "the browser"; }
inspection=${dom#*<pre id=\"inspection\">}
inspection=${inspection%%</pre>*}
[ -n "$inspection" ] || fail "the page was not inspected"
messages=$(grep 'CONSOLE' "$log" | sed 's/.*CONSOLE[^"]*//' || true)
printf '%s\n' "$inspection" "$messages"

grep -q "^window $width, pictures [1-9]" <<<"$inspection" || fail "the window is not $width wide, or there are no pictures"
if [ "$kind" = broken ]; then
    for fault in "not loaded: no-such-picture.png" "the page is wider than the window" "beyond the window: &lt;div&gt;" "too small to read: 8 px"; do
        grep -qF "$fault" <<<"$inspection" || fail "the inspection overlooks: $fault"
    done
    grep -qF "a fault of the page" <<<"$messages" || fail "the console's messages are overlooked"
    exit
fi
! grep '^finding' <<<"$inspection" || fail "the page at $width"
[ -z "$messages" ] || fail "messages on the console: $messages"
# A picture of the top of the page for people, beside the page.
browse --window-size="$width,2000" --screenshot="$folder/screenshot-$width.png" "file://$folder/index.html" >/dev/null 2>&1 || fail "the screenshot"
[ -s "$folder/screenshot-$width.png" ] || fail "there is no screenshot"
