#!/usr/bin/env bash
# checks_notice_faults.sh BUILD: in a tree of its own that is in order every habit passes, and each one
# fails on a fault of its kind. BUILD is a configured tree whose compiler flags serve.
set -euo pipefail
top=$(cd "$(dirname "$0")/../.." && pwd)
tree=$(realpath "$(mktemp -d)")
trap 'rm -rf "$tree"' EXIT
mkdir -p "$tree"/{tools,app,asn,cert,core,pxcpp,util,signaturecore,tests,build}
cp "$top"/tools/check{,_layers.py} "$tree/tools"
cp "$top"/{.clang-format,.clang-tidy,CMakeLists.txt} "$tree"
export PX_BUILD_DIR=$tree/build

# commands UNIT...: the units are compiled as the window's are.
commands() {
    python3 -c '
import json, sys
build, tree, *units = sys.argv[1:]
entry = next(e for e in json.load(open(build)) if e["file"].endswith("/app/mainwindow.cpp"))
print(json.dumps([{"directory": tree, "file": unit, "command": entry["command"].replace(entry["file"], unit)}
                  for unit in (f"{tree}/{name}" for name in units)]))
' "$1/compile_commands.json" "$tree" "${@:2}" >"$tree/build/compile_commands.json"
}
in_order() {
    printf '#pragma once\n\n#include <QStringList>\n\nQStringList given();\n' >"$tree/app/some.h"
    printf '#include "some.h"\n\nQStringList given()\n{\n    return {};\n}\n' >"$tree/app/some.cpp"
}
notices() { # HABIT TEXT
    local status=0 output
    output=$("$tree/tools/check" "$1" 2>&1) || status=$?
    if [ $status = 0 ] || ! grep -qF -- "$2" <<<"$output"; then
        echo "$1 should have failed on '$2', but ended with $status and: $output" >&2
        exit 1
    fi
    in_order
}

commands "$1" app/some.cpp
in_order
"$tree/tools/check"

printf '\nint  x = 1;\n' >>"$tree/app/some.cpp"
notices format some.cpp
printf '\nint  x();\n' >>"$tree/app/some.h"
notices format some.h
sed -i '/#include/d' "$tree/app/some.h"
notices headers QStringList
printf '\nint *nothing()\n{\n    return 0;\n}\n' >>"$tree/app/some.cpp"
notices tidy modernize-use-nullptr
printf '\nint sizes()\n{\n    int sum = 0;\n    for (const QString &text : given())\n        sum += int(text.size());\n    return sum;\n}\n' \
    >>"$tree/app/some.cpp"
notices clazy clazy-range-loop-detach
printf '#include "cert/c_pxcert.h"\n' >"$tree/asn/some.h"
notices layers "asn/some.h includes cert/c_pxcert.h"
rm "$tree/asn/some.h"

# What finds nothing to look at has not passed.
commands "$1"
notices tidy "no translation unit"
notices clazy "no translation unit"
