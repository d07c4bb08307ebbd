#!/usr/bin/env bash
# accessible_bus_test.sh VIEWER CERTIFICATE: the window appears and is closed by keyboard where there
# is no bus for screen readers, where it has died before the window, and where it dies while the
# window is open. Needs an X server, dbus-daemon, at-spi2-core and xdotool.
set -euo pipefail
viewer=$1
certificate=$2
work=$(mktemp -d)
buses=()
trap 'stop_buses; rm -rf "$work"' EXIT
export XDG_RUNTIME_DIR=$work QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1

fail() {
    echo "accessible_bus_test: $*" >&2
    exit 1
}

start_buses() {
    rm -f "$work/address"
    setsid dbus-daemon --session --nofork --print-address=3 3>"$work/address" 2>/dev/null &
    buses=($!)
    for _ in $(seq 100); do
        [ -s "$work/address" ] && break
        sleep 0.1
    done
    DBUS_SESSION_BUS_ADDRESS=$(head -1 "$work/address")
    export DBUS_SESSION_BUS_ADDRESS
    setsid /usr/libexec/at-spi-bus-launcher --launch-immediately >/dev/null 2>&1 &
    buses+=($!)
    sleep 1
}

stop_buses() { # each with what it started itself
    local bus
    for bus in "${buses[@]}"; do
        kill -KILL -- "-$bus" 2>/dev/null || true
        wait "$bus" 2>/dev/null || true
    done
    buses=()
}

open_window() {
    "$viewer" "$certificate" >/dev/null 2>"$work/errors" &
    program=$!
    window=
    for _ in $(seq 300); do
        window=$(xdotool search --onlyvisible --pid $program 2>/dev/null | head -1) || true
        [ -n "$window" ] && return
        kill -0 $program 2>/dev/null || break
        sleep 0.1
    done
    fail "no window: $1"
}

# close_window WHEN KEY...: sends the keys, then the one that closes it.
close_window() {
    local when=$1
    shift
    xdotool windowfocus --sync "$window"
    for key in "$@"; do
        xdotool key "$key"
        sleep 0.1
    done
    xdotool key Escape
    local status=0
    timeout 30 tail --pid=$program -f /dev/null || fail "it stays open: $when"
    wait $program || status=$?
    [ $status = 0 ] || fail "it ended with $status: $when"
}

DBUS_SESSION_BUS_ADDRESS=unix:path=$work/none open_window "without a bus"
close_window "without a bus" Tab Right

start_buses
stop_buses
open_window "with a dead bus"
close_window "with a dead bus" Tab Right

start_buses
open_window "with a bus"
xdotool windowfocus --sync "$window" key Tab
sleep 1
stop_buses
close_window "after the bus died" Tab Tab Tab Tab Right Tab Down Up Tab Down Right Tab
