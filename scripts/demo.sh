#!/usr/bin/env bash
# Installs what is missing, builds the library and its demo host, runs the host over pictures and writes an HTML report.
set -euo pipefail
source "$(dirname "$0")/common.sh"

build_preset release quorvane_demo
say "Running the library's jobs"
"$root/build/release/examples/demo/quorvane_demo" "$root/build/demo" || { say "FAILED: the demo"; exit 1; }
say "DONE: open $root/build/demo/index.html"
