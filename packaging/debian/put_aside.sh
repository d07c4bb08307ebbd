#!/bin/sh
# preinst and prerm. dpkg replaces and removes whatever lies where a file of the package belongs. A
# suite's own core or configuration found there is put aside first; postinst and postrm put it back.
set -e
tree=usr/lib/orvane
sums=$(dpkg-query --control-show pxviewcerttool-core md5sums 2>/dev/null) || sums=

# installed_by_us FILE: it is still as this package brought it.
installed_by_us() {
    [ -f "$DPKG_ROOT/$1" ] && [ ! -h "$DPKG_ROOT/$1" ] || return 1
    sum=$(md5sum <"$DPKG_ROOT/$1")
    printf '%s\n' "$sums" | grep -qxF "${sum%% *}  $1"
}

for file in bin/PXSignatureCoreV10.so settings/CN/settings/PXClientConfig.dll \
    settings/TW/settings/PXClientConfig.dll settings/EN/settings/PXClientConfig.dll; do
    path=$DPKG_ROOT/$tree/$file
    [ -e "$path" ] || [ -h "$path" ] || continue
    installed_by_us "$tree/$file" || mv "$path" "$path.kept"
done
