#!/usr/bin/env bash
# test.sh: installs what is missing, builds, and runs the whole test suite.
set -euo pipefail
cd "$(dirname "$0")"
tools/set-up --test
cmake --preset release -DPX_WERROR=ON -DPX_OTHER_SUITES=ON -DPX_BUILD_BENCHMARKS=ON
cmake --build --preset release -j "$(nproc)" -- --no-print-directory
exec ctest --preset release -j "$(nproc)"
