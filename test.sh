#!/usr/bin/env bash
# test.sh: installs what is missing, builds, and runs the whole test suite.
set -euo pipefail
cd "$(dirname "$0")"
tools/set-up --test
cores=$(nproc)
# Tests wait for windows, processes and timers as long as they work.
export CMAKE_BUILD_PARALLEL_LEVEL=$cores CTEST_PARALLEL_LEVEL=$((cores + 2))
exec cmake --workflow --preset test
