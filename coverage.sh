#!/usr/bin/env bash
# coverage.sh: installs what is missing, builds without optimisation and with counters, runs the tests and
# writes to build/coverage/report which lines and branches of the product they run through. Ends with 1 when
# a folder has fewer than it should (docs/coverage.md), or a test fails.
set -euo pipefail
cd "$(dirname "$0")"
tools/set-up --test --coverage
cores=$(nproc)
build=build/coverage
cmake --preset coverage >/dev/null
cmake --build --preset coverage -j "$cores"
find "$build" -name '*.gcda' -delete # the counts of earlier runs
status=0
ctest --preset coverage -j "$((cores + 2))" || status=$?

folders=(app asn cert core pxcpp signaturecore util)
# The compiler has a branch wherever something may throw or has to be cleaned up: what counts are those
# that the source has, on the lines that decide.
decisive='\b(if|for|while|case|switch)\b|\?|&&|\|\|'
mkdir -p "$build/report"
gcovr --root . "${folders[@]/#/--filter=}" --exclude-throw-branches --exclude-unreachable-branches \
    --exclude-branches-by-pattern "^(?!.*($decisive)).*$" \
    --txt "$build/report/files.txt" --html-details "$build/report/index.html" \
    --json-summary "$build/report/summary.json" "${folders[@]/#/$build/}"
tools/check_coverage.py "$build/report/summary.json" | tee "$build/report/folders.txt" || status=1
exit "$status"
