# Sourced by the tests of this folder: a working directory of the test's own, and nothing of the user's
# that could decide what a program sees.
# shellcheck shell=bash
set -euo pipefail
export LC_ALL=C.UTF-8
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
top=$(cd "$here/../.." && pwd)
work=$(realpath "$(mktemp -d)")
trap 'rm -rf "$work"' EXIT

unset PX_CONFIG_PATH XDG_CURRENT_DESKTOP DESKTOP_SESSION
export HOME=$work/home XDG_CONFIG_HOME=$work/home/.config XDG_DATA_HOME=$work/home/.local/share
export XDG_CACHE_HOME=$work/home/.cache XDG_RUNTIME_DIR=$work/runtime QT_FORCE_STDERR_LOGGING=1
mkdir -p "$HOME" "$XDG_CONFIG_HOME" "$XDG_DATA_HOME"
mkdir -m 700 "$XDG_RUNTIME_DIR"

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

# expect FILE TEXT: the file holds this text, and nothing else.
expect() {
    [ "$(tr -d '\0' <"$1")" = "$2" ] || fail "$1 holds '$(head -c 200 "$1" | tr -d '\0')', not '$2'"
}

# opens COMMAND...: the command, on an X server of its own, shows a certificate in the viewer's window.
opens() {
    timeout 120 "$top/tools/with-xvfb" "$here/expect_window" "$@" || fail "no certificate was shown by: $*"
}

# A certificate whose path is longer than the viewer takes for a path, in Chinese; below the folder $1.
long_certificate() {
    local name=证书
    while [ ${#name} -lt 80 ]; do name=$name证书; done
    mkdir -p "$1/$name"
    cp "$top/examples/server.pem" "$1/$name/$name.pem"
    echo "$1/$name/$name.pem"
}
