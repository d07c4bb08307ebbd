#!/usr/bin/env bash
# pack.sh BUILD PACKAGES: both kinds of package of the build tree, made by a user who keeps files to
# himself.
set -euo pipefail
umask 077
rm -rf "$2"
cd "$1"
for kind in DEB RPM; do
    cpack -G "$kind" -B "$2"
done
rm -rf "$2/_CPack_Packages"
packages=$(cd "$2" && echo *)
[[ $packages == "pxviewcerttool-"*".rpm pxviewcerttool_"*".deb" ]] || {
    echo "not the two packages: $packages" >&2
    exit 1
}
