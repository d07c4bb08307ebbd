#!/usr/bin/env bash
# fuzz.sh SECONDS [TARGET...]: installs what is missing, builds the fuzz targets with clang's sanitizers, and
# runs each of those named (asn, model, ...; all without any) for so long, beginning with its corpus and what
# was found before. Tells a line for each: inputs tried, edges of the code covered, findings. What is new
# goes into build/fuzz/found/TARGET, an input that ends a target into build/fuzz/findings/TARGET, beside the
# log. Ends with 1 when there is any.
#
# fuzz.sh merge [TARGET...]: makes the corpus anew of the fewest inputs that cover what it and those found do.
set -euo pipefail
cd "$(dirname "$0")"
order=${1:?usage: fuzz.sh SECONDS|merge [TARGET...]}
shift
targets=(fuzz/corpus/*)
[ $# -gt 0 ] || set -- "${targets[@]##*/}"
tools/set-up --fuzz
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz -j "$(nproc)" >/dev/null

# Paths are absolute: some targets change the working directory.
export LSAN_OPTIONS=suppressions=$PWD/tests/lsan.supp:print_suppressions=0

# run TARGET OPTION...: leaks are looked for at the end, since looking after each input takes most of the time.
run() {
    build/fuzz/bin/fuzz_"$1" -detect_leaks=0 "${@:2}" "$PWD/build/fuzz/found/$1" "$PWD/fuzz/corpus/$1"
}

merge() {
    local fewest=$PWD/build/fuzz/fewest/$1
    rm -rf "$fewest"
    mkdir -p "$fewest"
    run "$1" -merge=1 -set_cover_merge=1 "$fewest" 2>"$fewest.log"
    rm -r "fuzz/corpus/$1"
    mv "$fewest" "fuzz/corpus/$1"
    printf '%-14s %5s inputs %8s octets\n' "$1" "$(find "fuzz/corpus/$1" -type f | wc -l)" "$(du -sb "fuzz/corpus/$1" | cut -f 1)"
}

# Whether there is no finding.
fuzz() {
    local findings=$PWD/build/fuzz/findings/$1 log=$PWD/build/fuzz/findings/$1/log inputs edges count status=0
    mkdir -p "$findings"
    run "$1" -max_total_time="$order" -timeout=25 -rss_limit_mb=3000 -print_final_stats=1 \
        -artifact_prefix="$findings/" >"$log" 2>&1 || status=1
    inputs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    edges=$(sed -n 's/^#[0-9].* cov: \([0-9]*\) .*/\1/p' "$log" | tail -n 1)
    count=$(find "$findings" -type f ! -name log | wc -l)
    printf '%-14s %10s inputs %6s edges %3s findings\n' "$1" "${inputs:-?}" "${edges:-?}" "$count"
    return $status
}

status=0
for target in "$@"; do
    mkdir -p "build/fuzz/found/$target"
    if [ "$order" = merge ]; then
        merge "$target"
    else
        fuzz "$target" || status=1
    fi
done
exit $status
