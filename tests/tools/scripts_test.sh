#!/usr/bin/env bash
# The shell scripts of the project: with-xvfb gives each caller a display of its own and hands on the
# command's status, run.sh refuses a file that is not there, and bench.sh's measuring takes all parts when
# none is named.
set -euo pipefail
top=$(cd "$(dirname "$0")/../.." && pwd)

fail() {
    echo "$1" >&2
    exit 1
}

for script in "$top"/run.sh "$top"/test.sh "$top"/coverage.sh "$top"/fuzz.sh "$top"/bench.sh "$top"/.ci/run "$top"/tools/{check,set-up,with-xvfb,window-picture}; do
    [ -x "$script" ] || fail "$script is not executable"
    bash -n "$script"
done

displays=$(for _ in 1 2 3 4; do "$top/tools/with-xvfb" sh -c 'sleep 1; echo "$DISPLAY"' & done | sort -u)
[ "$(wc -l <<<"$displays")" = 4 ] || fail "displays were shared: $displays"

status=0
"$top/tools/with-xvfb" sh -c 'exit 7' || status=$?
[ $status = 7 ] || fail "with-xvfb lost the command's status: $status"

screen=$("$top/tools/with-xvfb" xdpyinfo | grep dimensions)
[[ $screen == *1920x1080* ]] || fail "the screen has another size: $screen"

status=0
output=$("$top/run.sh" "$top/no such file" 2>&1) || status=$?
[ $status = 1 ] && grep -q 'there is no file' <<<"$output" || fail "run.sh took a file that is not there: $output"

output=$("$top/bench/run_benchmarks.py" "$top/no such build" 2>&1) && fail "it measured what is not there"
grep -q 'no such build/bin' <<<"$output" || fail "no part is measured: $output"
