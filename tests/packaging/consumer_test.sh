#!/usr/bin/env bash
# consumer_test.sh QT: a project that adds this one builds it from nothing with warnings as errors, can
# use each public header, and gets neither tests nor anything to install. Not optimised and a library's
# sources together, which takes a quarter of the time and tells the same.
source "$(dirname "$0")/support.sh"
build=$work/build
quietly() { "$@" >"$work/log" 2>&1 || fail "$*: $(tail -n 40 "$work/log")"; }

quietly cmake -S "$here/consumer" -B "$build" -DPX_SOURCE="$top" -DPX_QT_MAJOR="$1" -DPX_WERROR=ON \
    -DCMAKE_BUILD_TYPE= -DCMAKE_UNITY_BUILD=ON -DCMAKE_UNITY_BUILD_BATCH_SIZE=20
quietly cmake --build "$build" -j "$(nproc)"
! grep -i 'warning' "$work/log" || fail "the build warned"
programs=("$build"/use_*_h)
[ ${#programs[@]} = 11 ] || fail "built: ${programs[*]}"
[ -x "$build/viewer/bin/PXViewCertTool" ] || fail "the viewer was not built"

[ -z "$(find "$build" -name 'tst_*')" ] || fail "tests were built"
ctest --test-dir "$build" -N | grep -q '^Total Tests: 0$' || fail "tests would run"
quietly cmake --install "$build" --prefix "$work/installed"
[ ! -e "$work/installed" ] || fail "something was installed: $(ls -R "$work/installed")"
