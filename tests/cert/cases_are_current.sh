#!/usr/bin/env bash
# The inputs beside the cases are the ones that their script makes today, octet by octet.
set -euo pipefail
data=$(cd "$(dirname "$0")/../data" && pwd)
again=$(mktemp -d)
trap 'rm -rf "$again"' EXIT
"$data/make-cases" --to "$again"
for topic in "$data"/*/; do
    [ -e "$topic/cases.txt" ] || continue
    name=$(basename "$topic")
    [ "$(find "$again/$name" -type f | wc -l)" -eq "$(grep -c '^== ' "$topic/cases.txt")" ]
    diff -r --exclude cases.txt "$again/$name" "$topic"
done
