#!/usr/bin/env bash
# A tree whose lower layer includes from an upper one, trees whose files need each other, and one that
# is in order.
set -euo pipefail
check=$(cd "$(dirname "$0")/../.." && pwd)/tools/check_layers.py
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
mkdir -p "$tree"/{core,asn,cert,util,app,tests}

expect() { # STATUS TEXT
    local status=0 output
    output=$(python3 "$check" "$tree") || status=$?
    if [ "$status" != "$1" ] || ! grep -qF "$2" <<<"$output"; then
        echo "expected $1 and '$2', got $status and: $output" >&2
        exit 1
    fi
}

echo '#include "asn/pxasn.h"' >"$tree/cert/good.cpp"
expect 0 "the layers hold"
echo '#include "cert/c_pxcert.h"' >"$tree/asn/bad.h"
expect 1 "asn/bad.h includes cert/c_pxcert.h"
rm "$tree/asn/bad.h"
echo '#include "signaturecore/signature_core.h"' >"$tree/tests/bad.cpp"
expect 1 "tests/bad.cpp includes signaturecore/signature_core.h"
echo '#include "core/q_dispatch.cpp"' >"$tree/tests/bad.cpp"
expect 1 "compiled once"
rm "$tree/tests/bad.cpp"

# A source needs its own header, and many may need one.
echo '#include "one.h"' >"$tree/util/one.cpp"
echo '#include "util/two.h"' | tee "$tree/util/one.h" "$tree/util/four.h" >/dev/null
expect 0 "the layers hold"
# What a source includes counts for its header as well, by either form of the name.
echo '#include "one.h"' >"$tree/util/two.cpp"
expect 1 "files that need each other: util/two -> util/one -> util/two"
echo '#include "util/three.h"' >"$tree/util/two.cpp"
expect 0 "the layers hold"
echo '#include "util/one.h"' >"$tree/util/three.cpp"
expect 1 "files that need each other: util/two -> util/three -> util/one -> util/two"
rm "$tree"/util/*
mkdir -p "$tree"/app/{look,instance}
echo '#include "app/instance/lock.h"' >"$tree/app/look/style.h"
echo '#include "app/look/style.h"' >"$tree/app/instance/lock.cpp"
expect 1 "app/instance/lock -> app/look/style -> app/instance/lock"
