#!/usr/bin/env bash
# checks_notice_faults.sh QT: in a small project that is in order every habit passes, and each one fails
# on a fault of its kind.
set -euo pipefail
top=$(cd "$(dirname "$0")/../.." && pwd)
tree=$(realpath "$(mktemp -d)")
trap 'rm -rf "$tree"' EXIT
mkdir -p "$tree"/{tools,app,asn,cert,core,docs,pxcpp,util,signaturecore,tests}
cp "$top"/tools/check* "$tree/tools"
cp "$top"/{.clang-format,.clang-tidy} "$tree"
printf '// Read together with some.cpp.\nint notGiven()\n{\n    return 1;\n}\n' >"$tree/app/other.cpp"
export PX_BUILD_DIR=$tree/build

cat >"$tree/CMakeLists.txt" <<PROJECT
cmake_minimum_required(VERSION 3.25)
project(small LANGUAGES CXX)
include("$top/cmake/PXTargets.cmake")
find_package(Qt$1 REQUIRED COMPONENTS Core)
px_add_library(small SOURCES app/some.cpp app/some.h app/other.cpp LINK Qt$1::Core)
PROJECT
in_order() {
    printf '#pragma once\n\n#include <QStringList>\n\nQStringList given();\n' >"$tree/app/some.h"
    printf -- '-> given  app/some.cpp  what is given, see `app/some.h`; held by `tst_some first second`\n' \
        >"$tree/docs/architecture.md"
    printf 'class TestSome\n{\n    void first();\n    void second();\n};\n' >"$tree/tests/tst_some.cpp"
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
# source_notices HABIT TEXT LINE...: with these lines at the end of a source.
source_notices() {
    printf '%s\n' '' "${@:3}" >>"$tree/app/some.cpp"
    notices "$1" "$2"
}

in_order
cmake -S "$tree" -B "$tree/build" >/dev/null
"$tree/tools/check"

source_notices format some.cpp 'int  x = 1;'
printf '\nint  x();\n' >>"$tree/app/some.h"
notices format some.h
printf '\nint  x();\n' >>"$tree/app/some.h"
"$tree/tools/check" fix
"$tree/tools/check" format
grep -q 'int x();' "$tree/app/some.h" || { echo "check fix left the format as it was" >&2 && exit 1; }
in_order

sed -i '/#include/d' "$tree/app/some.h"
notices headers QStringList
printf '#pragma once\n' >"$tree/app/another.h"
notices headers 'app/another.h is listed in no CMakeLists.txt'
rm "$tree/app/another.h"

sed -i 's/given/taken/' "$tree/docs/architecture.md"
notices docs 'says that taken is in app/some.cpp, where it is not'
sed -i 's/some.h/other.h/' "$tree/docs/architecture.md"
notices docs 'names app/other.h, which is not there'
sed -i 's/second`/third`/' "$tree/docs/architecture.md"
notices docs 'names the test tst_some third, which is not there'
rm "$tree/tests/tst_some.cpp"
notices docs 'names the test tst_some, which is not there'
echo 'The road.' >"$tree/docs/architecture.md"
notices docs 'draws no road'

source_notices tidy modernize-use-nullptr 'int *nothing()' '{' '    return 0;' '}'
source_notices tidy clang-analyzer-core.NullDereference \
    'int pointed(int *place)' '{' '    if (!place)' '        return *place;' '    return 1;' '}'
source_notices tidy modernize-deprecated-headers '#include <stdlib.h>'
# Sources that define the same can't be read as one.
printf 'static int one() { return 1; }\n' >>"$tree/app/other.cpp"
source_notices tidy modernize-use-nullptr 'static int *one()' '{' '    return 0;' '}'
# What passed is looked at again when a header that it includes has changed.
printf '\ninline int *nothing()\n{\n    return 0;\n}\n' >>"$tree/app/some.h"
notices tidy modernize-use-nullptr
source_notices clazy clazy-range-loop-detach \
    'int sizes()' '{' '    int sum = 0;' '    for (const QString &text : given())' \
    '        sum += int(text.size());' '    return sum;' '}'
source_notices clazy clazy-function-args-by-ref \
    'int size(QString text)' '{' '    return int(text.size());' '}'

source_notices dialect 'some.cpp:10: a body of one line' \
    'void f(int *x)' '{' '    if (x) {' '        *x = 1;' '    }' '}'
source_notices dialect 'some.cpp:10: a body of one line' \
    'void f(int *x)' '{' '    if (x)' '        *x = 1;' '    else {' '        f(x);' '    }' '}'
source_notices dialect 'some.cpp:12: a pointer' \
    'void f(int *x)' '{' '    if (x)' '        return;' '    while (x == nullptr)' '        f(x);' '}'
source_notices dialect 'some.cpp:10: a pointer' \
    'bool f(int *x)' '{' '    return x != nullptr && *x;' '}'
source_notices dialect 'tst_some: a test' 'QTEST_MAIN(tst_some)'

printf '#include "cert/c_pxcert.h"\n' >"$tree/asn/some.h"
notices layers "asn/some.h includes cert/c_pxcert.h"
rm "$tree/asn/some.h"

# What finds nothing to look at has not passed.
echo '[]' >"$tree/build/compile_commands.json"
notices tidy "no translation unit"
notices clazy "no translation unit"
