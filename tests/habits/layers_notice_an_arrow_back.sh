#!/usr/bin/env bash
# A tree whose lower layer includes from an upper one, and one that is in order.
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
