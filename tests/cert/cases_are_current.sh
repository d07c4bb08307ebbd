#!/usr/bin/env bash
# The certificates beside cases.txt are the ones that its script makes today, octet by octet.
set -euo pipefail
cases=$(cd "$(dirname "$0")/../data/extensions" && pwd)
again=$(mktemp -d)
trap 'rm -rf "$again"' EXIT
"$cases/make-cases" "$again"
[ "$(find "$again" -name '*.pem' | wc -l)" -ge 90 ]
diff -r --exclude cases.txt --exclude make-cases "$again" "$cases"
