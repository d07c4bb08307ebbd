#!/usr/bin/env bash
# package_test.sh PACKAGES: the Debian package installed below a root of the test's own by dpkg, which
# runs its scripts with that root named to them; the same as root and as a plain user (whose dpkg is told
# to go on where it may not give files to root). What it depends on is the machine's own.
source "$(dirname "$0")/support.sh"
deb=$(echo "$1"/pxviewcerttool_*.deb)
default=usr/lib/orvane/default/bin/PXSignatureCoreV10.so
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
holds_default() { cmp -s "$root/$default" "$root/$core" || fail "the core is not the default one"; }

# A package as it would be released next, with another core in it. It depends on nothing: dpkg runs no
# trigger while something is missing.
repack() { # DEB NAME
    dpkg-deb -R "$1" "$work/repack"
    sed -i 's/^Version: .*/Version: 99/; /^Depends:/d' "$work/repack/DEBIAN/control"
    printf "next core" >"$work/repack/$default"
    (cd "$work/repack" && find usr -type f -print0 | sort -z | xargs -0 md5sum >DEBIAN/md5sums)
    dpkg-deb --root-owner-group -b "$work/repack" "$work/$2.deb" >/dev/null
    rm -r "$work/repack"
}
repack "$deb" next

# Installed, used and removed.
new_root plain
before=$(listed)
must -i "$deb"
for folder in bin languages settings; do
    [ -d "$root/usr/lib/orvane/$folder" ] || fail "the tree lacks $folder"
done
[ "$(readlink -f "$root/usr/bin/PXViewCertTool")" = "$root/usr/lib/orvane/bin/PXViewCertTool" ] ||
    fail "/usr/bin has no link to the viewer"
for manual in PXViewCertTool PXViewCertTool-open zh_CN/PXViewCertTool-open zh_TW/PXViewCertTool-open; do
    folder=$root/usr/share/man/$(dirname "$manual")
    MANPATH=$folder man "$(basename "$manual")" 2>&1 | grep -q QT_QPA_PLATFORM || fail "no manual page $manual"
done

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
must -P pxviewcerttool
diff <(echo "$before") <(listed) || fail "removing left something"

# The package's own core is replaced by its next version, and goes with it.
new_root upgrade
before=$(listed)
must -i "$deb"
holds_default
must -i "$work/next.deb"
holds $core "next core"
must -P pxviewcerttool
diff <(echo "$before") <(listed) || fail "removing left something after an upgrade"

# A suite that was there first: nothing of it is replaced, and nothing goes with the package, not even
# what is the same as the package's own.
new_root suite
put $core "suite's core"
put $settings/CN/settings/PXClientConfig.dll "suite's configuration"
put $settings/TW/settings/PXClientConfig.dll ''
ln -sf nowhere "$root/$settings/TW/settings/PXClientConfig.dll"
put $settings/EN/settings/PXClientConfig.dll "$(cat "$top/settings/EN/settings/PXClientConfig.dll")"
before=$(listed)
suite_is_whole() {
    holds $core "suite's core"
    holds $settings/CN/settings/PXClientConfig.dll "suite's configuration"
    [ "$(readlink "$root/$settings/TW/settings/PXClientConfig.dll")" = nowhere ] || fail "a link was replaced"
}
must -i "$deb"
suite_is_whole
must -i "$deb"
suite_is_whole
must -i "$work/next.deb"
suite_is_whole
must -r pxviewcerttool
suite_is_whole
must -P pxviewcerttool
suite_is_whole
diff <(echo "$before") <(listed) || fail "removing left something, or took something, beside the suite's files"

# A suite that came later, over the package's files; and a configuration that somebody changed.
new_root later
must -i "$deb"
put $core "suite's core"
put $settings/EN/settings/PXClientConfig.dll "my configuration"
must -i "$work/next.deb"
holds $core "suite's core"
holds $settings/EN/settings/PXClientConfig.dll "my configuration"
must -P pxviewcerttool
holds $core "suite's core"
holds $settings/EN/settings/PXClientConfig.dll "my configuration"

# An unpacking that breaks off leaves everything as it was.
head -c -20000 "$deb" >"$work/broken.deb"
new_root broken
put $core "suite's core"
put $settings/EN/settings/PXClientConfig.dll/readme "a folder in the way"
before=$(listed)
dpkg_there -i "$work/broken.deb" && fail "dpkg unpacked half a package"
holds $core "suite's core"
must -i "$deb"
holds $core "suite's core"
holds $settings/EN/settings/PXClientConfig.dll/readme "a folder in the way"
dpkg_there -i "$work/broken.deb" && fail "dpkg unpacked half a package"
holds $core "suite's core"
must -P pxviewcerttool
holds $core "suite's core"
diff <(echo "$before") <(listed) || fail "removing left something after a failure"

new_root broken-alone
must -i "$deb"
dpkg_there -i "$work/broken.deb" && fail "dpkg unpacked half a package"
holds_default

# A suite that is a package itself, before and after the viewer; when it goes, the default core returns.
mkdir -p "$work/suite/DEBIAN" "$work/suite/usr/lib/orvane/bin"
printf "suite's core" >"$work/suite/$core"
printf '%s\n' 'Package: suite' 'Version: 1' 'Architecture: all' 'Maintainer: a suite <suite@orvane.invalid>' \
    'Provides: pxviewcerttool-core-provider' 'Description: a suite with a core' >"$work/suite/DEBIAN/control"
dpkg-deb --root-owner-group -b "$work/suite" "$work/suite.deb" >/dev/null
new_root packaged
must -i "$work/suite.deb"
before=$(listed)
must -i "$deb"
holds $core "suite's core"
must -P pxviewcerttool
holds $core "suite's core"
diff <(echo "$before") <(listed) || fail "removing left something beside a packaged suite"

new_root packaged-later
before=$(listed)
must -i "$deb"
must -i "$work/suite.deb"
holds $core "suite's core"
must -i "$work/next.deb"
holds $core "suite's core"
must -P suite
holds $core "next core"
must -P pxviewcerttool
diff <(echo "$before") <(listed) || fail "removing left something after a packaged suite"

# What a packager relies on.
field() { dpkg-deb -f "$deb" "$1"; }
[[ $(field Depends) == "pxviewcerttool-core | pxviewcerttool-core-provider, "* ]] ||
    fail "depends on $(field Depends)"
[[ $(field Provides) == "pxviewcerttool-core (= "* ]] || fail "provides $(field Provides)"
