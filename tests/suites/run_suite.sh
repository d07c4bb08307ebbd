#!/usr/bin/env bash
# run_suite.sh PRESET: configures, builds and tests the preset's tree. What does not depend on the
# build (habits, packages) is tested once, by the caller.
set -euo pipefail
cd "$(dirname "$0")/../.."
cmake --preset "$1" -DPX_WERROR=ON >/dev/null
cmake --build --preset "$1" -j "$(nproc)" -- --no-print-directory >/dev/null
exec ctest --preset "$1" -j "$(nproc)" --label-exclude 'habit|package|foreign'
