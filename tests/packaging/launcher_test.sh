#!/usr/bin/env bash
# What the launcher hands to the viewer, here a script that writes it down.
source "$(dirname "$0")/support.sh"
mkdir -p "$work/tree/bin" "$work/bin" "$work/start"
cp "$top/packaging/PXViewCertTool-open" "$work/tree/bin/"
cat >"$work/tree/bin/PXViewCertTool" <<'VIEWER'
#!/bin/sh
printf '%s|' "$@" >"$WORK/arguments"
[ $# -eq 0 ] || [ ! -f "$1" ] && [ ! -c "$1" ] || cat "$1" >"$WORK/content"
exit 7
VIEWER
chmod +x "$work/tree/bin/PXViewCertTool"
ln -s ../tree/bin/PXViewCertTool-open "$work/bin/PXViewCertTool-open"
export WORK=$work

# hands ARGUMENTS CONTENT [ARGUMENT...]: through the link, as installed, from the folder "start"
hands() {
    local arguments=$1 content=$2 status=0
    shift 2
    rm -f "$work/arguments" "$work/content"
    touch "$work/content"
    (cd "$work/start" && timeout 10 "$work/bin/PXViewCertTool-open" "$@") || status=$?
    [ $status = 7 ] || fail "the viewer's status became $status for: $*"
    expect "$work/arguments" "$arguments"
    expect "$work/content" "$content"
}
# of_length N: a path below "start" of N octets in all
of_length() {
    local path=$work/start/d
    while [ $(($1 - ${#path})) -gt 200 ]; do path=$path/$(printf 'd%.0s' $(seq 100)); done
    mkdir -p "$path"
    path=$path/
    printf '%s%s' "$path" "$(printf 'f%.0s' $(seq $(($1 - ${#path}))))"
}

hands '|' ''

for name in plain -dash 'two words' '"$(quote)`' $'new\nline' 'café' $'latin\xe9' 证书.cer; do
    echo "text of $name" >"$work/start/$name"
    hands "$work/start/$name|" "text of $name" "$work/start/$name"
    hands "$work/start/$name|" "text of $name" "$name"
done
hands "$work/start/plain|" "text of plain" plain -dash
hands "$work/start/missing|" '' missing

path=$(of_length 255)
echo "255 octets" >"$path"
hands "$path|" "255 octets" "$path"
path=$(of_length 256)
echo "256 octets" >"$path"
hands '/dev/fd/3|' "256 octets" "$path"
hands '/dev/fd/3|' "256 octets" "${path#"$work/start/"}"
rm "$path"
hands '/dev/fd/3|' '' "$path"
mkdir "$path"
hands '/dev/fd/3|' '' "$path"
rmdir "$path"
mkfifo "$path"
hands '/dev/fd/3|' '' "$path"
echo stray >"$work/stray"
hands '/dev/fd/3|' '' "$path" 3<"$work/stray"

path=$(long_certificate "$work/start")
hands '/dev/fd/3|' "$(cat "$path")" "$path"

# A file that may not be read; root may read all, so root becomes nobody.
unreadable=$(of_length 256)
rm -f "$unreadable"
echo secret >"$unreadable"
chmod 000 "$unreadable"
chmod 711 "$work"
chmod 777 "$work/start"
touch "$work/arguments" "$work/content"
chmod 666 "$work/arguments" "$work/content"
: >"$work/arguments" >"$work/content"
as_nobody=()
[ "$(id -u)" -ne 0 ] || as_nobody=(setpriv --reuid 65534 --regid 65534 --clear-groups)
status=0
"${as_nobody[@]}" timeout 10 "$work/bin/PXViewCertTool-open" "$unreadable" || status=$?
[ $status = 7 ] || fail "no viewer for an unreadable file: $status"
expect "$work/arguments" '/dev/fd/3|'
expect "$work/content" ''
