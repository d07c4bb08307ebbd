#!/bin/sh
# postinst and postrm: a suite's files that preinst or prerm put aside come back.
set -e
tree=$DPKG_ROOT/usr/lib/orvane

for file in bin/PXSignatureCoreV10.so settings/CN/settings/PXClientConfig.dll \
    settings/TW/settings/PXClientConfig.dll settings/EN/settings/PXClientConfig.dll; do
    if [ -e "$tree/$file.kept" ] || [ -h "$tree/$file.kept" ]; then
        rm -f "$tree/$file"
        mv "$tree/$file.kept" "$tree/$file"
    fi
done
