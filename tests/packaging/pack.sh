#!/usr/bin/env bash
# pack.sh BUILD DEBS: the Debian packages of the build tree, made by a user who keeps files to himself.
set -euo pipefail
umask 077
rm -rf "$2"
cd "$1"
cpack -G DEB -B "$2"
rm -rf "$2/_CPack_Packages"
packages=$(cd "$2" && echo *.deb)
[[ $packages == "pxviewcerttool-core_"*".deb pxviewcerttool_"*".deb" ]] || {
    echo "not the two packages: $packages" >&2
    exit 1
}
