#!/usr/bin/env bash
# Runs the demo host: run-demo.sh DEMO FOLDER
source "$(dirname "$0")/../support/checks.sh"
demo=$1 folder=$2
rm -rf "$folder"
"$demo" "$folder"
[ -s "$folder/index.html" ] || fail "the demo wrote no page"
