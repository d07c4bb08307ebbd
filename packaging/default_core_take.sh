#!/bin/sh
# prerm, and what an RPM runs before upgrading and removing: takes away what was copied and is still as
# it was; what a suite or a user put in its place since stays.
set -e
tree=$DPKG_ROOT/usr/lib/orvane
[ "$1" != 1 ] || exit 0 # by an RPM's count of versions: after an upgrade, another one is there
[ -f "$tree/default/placed" ] || exit 0
cd "$tree/default"

while read -r file; do
    [ ! -h "$tree/$file" ] && cmp -s "$file" "$tree/$file" || continue
    rm "$tree/$file"
    (cd "$tree" && rmdir -p --ignore-fail-on-non-empty "${file%/*}")
done <placed
rm placed
