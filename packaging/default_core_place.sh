#!/bin/sh
# postinst, and what an RPM runs after installing: the default core and its settings are copied to where
# the viewer looks for them, unless a suite's lie there. What was copied is remembered. dpkg runs it
# again when a package brings or takes away such files, so that the default follows a suite that goes.
set -e
tree=$DPKG_ROOT/usr/lib/orvane
cd "$tree/default"
touch placed

for file in bin/* settings/*/settings/*; do
    [ -e "$tree/$file" ] || [ -h "$tree/$file" ] && continue
    mkdir -p "$tree/${file%/*}"
    cp "$file" "$tree/$file"
    grep -qxF "$file" placed || echo "$file" >>placed
done
