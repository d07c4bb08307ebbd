#!/bin/sh
# preinst and prerm. dpkg replaces and removes whatever lies where a file of the package belongs. A
# suite's own core or configuration found there is put aside first; postinst and postrm put it back.
set -e
tree=usr/lib/orvane
sums=$(dpkg-query --control-show pxviewcerttool-core md5sums 2>/dev/null) || sums=

for file in bin/PXSignatureCoreV10.so settings/CN/settings/PXClientConfig.dll \
    settings/TW/settings/PXClientConfig.dll settings/EN/settings/PXClientConfig.dll; do
    path=$DPKG_ROOT/$tree/$file
    if [ -h "$path" ]; then
        mv "$path" "$path.kept"
    elif [ -f "$path" ]; then
        sum=$(md5sum <"$path")
        case $sums in
        *"${sum%% *}  $tree/$file"*) ;; # the package's own, as it was installed
        *) mv "$path" "$path.kept" ;;
        esac
    fi
done
