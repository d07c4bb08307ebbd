#!/usr/bin/env bash
# bench.sh [PART...]: installs what is missing, builds, measures the viewer beside its peers and writes
# bench/RESULTS.md. The parts: start certificates rows large shapes; without any, all of them. Ends
# with 1 when a limit is missed.
set -euo pipefail
cd "$(dirname "$0")"
tools/set-up --bench
cmake --preset release -DPX_BUILD_BENCHMARKS=ON -DPX_BENCH_PEERS=ON >/dev/null
cmake --build --preset release -j "$(nproc)" -- --no-print-directory
results=$(mktemp)
trap 'rm -f "$results"' EXIT
status=0
tools/with-xvfb bench/run_benchmarks.py build/release "$@" >"$results" || status=$?
[ "$status" -le 1 ] || exit "$status"
cat bench/heading.md "$results" bench/steps.md >bench/RESULTS.md
cat "$results"
exit "$status"
