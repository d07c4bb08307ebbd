#!/usr/bin/env bash
# package_test.sh DEBS: the packages installed below a root of the test's own by dpkg, which runs their
# scripts with that root named to them; the same as root and as a plain user (whose dpkg is told to go
# on where it may not give files to root). What they depend on is the machine's own.
source "$(dirname "$0")/support.sh"
core_deb=$(echo "$1"/pxviewcerttool-core_*.deb)
viewer_deb=$(echo "$1"/pxviewcerttool_*.deb)
core=usr/lib/orvane/bin/PXSignatureCoreV10.so
settings=usr/lib/orvane/settings
export PATH=$PATH:/usr/sbin:/sbin
root=

new_root() {
    root=$work/root-$1
    mkdir -p "$root"/var/lib/dpkg/{info,updates}
    touch "$root/var/lib/dpkg/status"
}
dpkg_there() {
    dpkg --root="$root" --log=/dev/null --force-depends --force-not-root --force-script-chrootless \
        "$@" >"$work/log" 2>&1
}
must() { dpkg_there "$@" || fail "dpkg $*: $(cat "$work/log")"; }
# What lies in the root, but dpkg's own records of it.
listed() { (cd "$root" && find . -path ./var/lib/dpkg -prune -o -print | sort); }
put() { # FILE TEXT: as a suite's own installer would, which removes what is there first
    mkdir -p "$(dirname "$root/$1")"
    rm -f "$root/$1"
    printf %s "$2" >"$root/$1"
}
holds() { expect "$root/$1" "$2"; }
nothing_aside() { [ -z "$(find "$root" -name '*.kept')" ] || fail "something stayed aside"; }

# A package as it would be released next, with another core in it.
repack() { # DEB NAME
    dpkg-deb -R "$1" "$work/repack"
    sed -i 's/^Version: .*/Version: 99/' "$work/repack/DEBIAN/control"
    printf "next core" >"$work/repack/$core"
    (cd "$work/repack" && find usr -type f -print0 | sort -z | xargs -0 md5sum >DEBIAN/md5sums)
    dpkg-deb --root-owner-group -b "$work/repack" "$work/$2.deb" >/dev/null
    rm -r "$work/repack"
}
repack "$core_deb" next

# Installed, used and removed.
new_root plain
before=$(listed)
must -i "$core_deb" "$viewer_deb"
for folder in bin languages settings; do
    [ -d "$root/usr/lib/orvane/$folder" ] || fail "the tree lacks $folder"
done
[ "$(readlink -f "$root/usr/bin/PXViewCertTool")" = "$root/usr/lib/orvane/bin/PXViewCertTool" ] ||
    fail "/usr/bin has no link to the viewer"
MANPATH=$root/usr/share/man man -w PXViewCertTool PXViewCertTool-open >/dev/null || fail "no manual page"

update-desktop-database "$root/usr/share/applications" # as dpkg's trigger does on a desktop
export XDG_DATA_DIRS=$root/usr/share:/usr/local/share:/usr/share PATH=$root/usr/bin:$PATH
entry=$root/usr/share/applications/PXViewCertTool.desktop
certificate=$work/server.pem
cp "$top/examples/server.pem" "$certificate"
opens PXViewCertTool "$certificate"
opens gio launch "$entry" "$certificate"
opens gio launch "$entry" "$(long_certificate "$work")"
(cd "$work" && opens gio launch "$entry" server.pem)

# As who double-clicks it, once this viewer was chosen for such files.
for type in $(sed -n 's/^MimeType=//p' "$entry" | tr ';' ' '); do
    gio mime "$type" PXViewCertTool.desktop >/dev/null || fail "the entry is not offered for $type"
done
XDG_CURRENT_DESKTOP=GNOME opens xdg-open "$certificate"
openssl x509 -in "$certificate" -outform DER -out "$work/binary.cer"
XDG_CURRENT_DESKTOP=GNOME opens xdg-open "$work/binary.cer"

rm "$root/usr/share/applications/mimeinfo.cache" # the trigger's, too
must -P pxviewcerttool pxviewcerttool-core
diff <(echo "$before") <(listed) || fail "removing left something"

# The package's own core is replaced by its next version, and goes with it.
new_root upgrade
before=$(listed)
must -i "$core_deb"
must -i "$work/next.deb"
holds $core "next core"
must -P pxviewcerttool-core
diff <(echo "$before") <(listed) || fail "removing left something after an upgrade"

# A suite that was there first: nothing of it is replaced, and nothing goes with the package.
new_root suite
put $core "suite's core"
put $settings/CN/settings/PXClientConfig.dll "suite's configuration"
put $settings/TW/settings/PXClientConfig.dll ''
ln -sf nowhere "$root/$settings/TW/settings/PXClientConfig.dll"
before=$(listed)
suite_is_whole() {
    holds $core "suite's core"
    holds $settings/CN/settings/PXClientConfig.dll "suite's configuration"
    [ "$(readlink "$root/$settings/TW/settings/PXClientConfig.dll")" = nowhere ] || fail "a link was replaced"
    nothing_aside
}
must -i "$core_deb"
suite_is_whole
must -i "$core_deb"
suite_is_whole
must -i "$work/next.deb"
suite_is_whole
must -r pxviewcerttool-core
suite_is_whole
must -P pxviewcerttool-core
suite_is_whole
diff <(echo "$before") <(listed) || fail "removing left something beside the suite's files"

# A suite that came later, over the package's files; and a configuration that somebody changed.
new_root later
must -i "$core_deb"
put $core "suite's core"
put $settings/EN/settings/PXClientConfig.dll "my configuration"
must -i "$work/next.deb"
holds $core "suite's core"
holds $settings/EN/settings/PXClientConfig.dll "my configuration"
must -P pxviewcerttool-core
holds $core "suite's core"
holds $settings/EN/settings/PXClientConfig.dll "my configuration"
nothing_aside

# An unpacking that breaks off puts everything back.
head -c -2000 "$core_deb" >"$work/broken.deb"
new_root broken
put $core "suite's core"
put $settings/EN/settings/PXClientConfig.dll/readme "a folder in the way"
before=$(listed)
dpkg_there -i "$work/broken.deb" && fail "dpkg unpacked half a package"
holds $core "suite's core"
must -i "$core_deb"
holds $core "suite's core"
holds $settings/EN/settings/PXClientConfig.dll/readme "a folder in the way"
dpkg_there -i "$work/broken.deb" && fail "dpkg unpacked half a package"
holds $core "suite's core"
must -P pxviewcerttool-core
holds $core "suite's core"
diff <(echo "$before") <(listed) || fail "removing left something after a failure"

# A suite that is a package itself: dpkg lets nobody replace its core, and the viewer does without ours.
mkdir -p "$work/suite/DEBIAN" "$work/suite/usr/lib/orvane/bin"
printf "suite's core" >"$work/suite/$core"
printf '%s\n' 'Package: suite' 'Version: 1' 'Architecture: all' 'Maintainer: a suite <suite@orvane.invalid>' \
    'Description: a suite with a core' >"$work/suite/DEBIAN/control"
dpkg-deb --root-owner-group -b "$work/suite" "$work/suite.deb" >/dev/null
new_root packaged
must -i "$work/suite.deb"
dpkg_there -i "$core_deb" && fail "dpkg replaced another package's core"
holds $core "suite's core"
nothing_aside
must -i "$viewer_deb"
must -P pxviewcerttool
holds $core "suite's core"
