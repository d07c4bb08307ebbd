#!/usr/bin/env bash
# fresh_root_test.sh PACKAGES CACHE: in a Debian that holds nothing but the bare system and a desktop's
# openers, apt installs the package with all it depends on, an ordinary user opens certificates, and
# the package is removed; then the same with the RPM. Needs root, or sudo without a password, and a Debian mirror the first time;
# where it cannot have these it says so and is counted as not run (package_test.sh needs neither).
if [ "$(id -u)" -ne 0 ] && sudo -n true 2>/dev/null; then
    exec sudo -n "$0" "$@"
fi
if [ -z "${PX_OWN_MOUNTS-}" ] && unshare --mount true 2>/dev/null; then
    PX_OWN_MOUNTS=yes exec unshare --mount --propagation private "$0" "$@"
fi
source "$(dirname "$0")/support.sh"
deb=$(echo "$1"/pxviewcerttool_*.deb)
rpm=$(echo "$1"/pxviewcerttool-*.rpm)
cache=$2
cannot() {
    echo "NOT RUN: a fresh root $*" >&2
    exit 77
}
[ -n "${PX_OWN_MOUNTS-}" ] || cannot "needs root (or sudo without a password) and a mount namespace"

tools=libglib2.0-bin,xdg-utils,shared-mime-info,desktop-file-utils
release=$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)
wanted=$({ echo "$release $tools"; dpkg-deb -f "$deb" Depends; } |
    sha256sum | cut -c1-16)
base=$cache/fresh-root-$wanted.tar
if [ ! -f "$base" ]; then
    mkdir -p "$cache"
    # What the package depends on is fetched, but not installed.
    export DEB=$deb UNSATISFIABLE=$work/unsatisfiable
    install='apt-get install --no-install-recommends /viewer.deb'
    mmdebstrap --variant=apt --include="$tools" --skip=cleanup/apt --format=tar \
        --customize-hook='cp "$DEB" "$1/viewer.deb"' \
        --customize-hook="chroot \"\$1\" sh -c '$install --simulate' || { touch \$UNSATISFIABLE; exit 1; }" \
        --customize-hook="chroot \"\$1\" sh -c '$install --yes --download-only'" \
        --customize-hook='rm "$1/viewer.deb"' \
        "$release" - >"$base.part" 2>"$work/log" || {
        [ ! -e "$UNSATISFIABLE" ] || fail "Debian cannot satisfy what the package depends on: $(cat "$work/log")"
        cannot "could not be made: $(grep '^E:' "$work/log" | tail -n 3)"
    }
    mv "$base.part" "$base"
fi

root=$work/root
mkdir "$root"
tar -C "$root" -xf "$base"
mount -t proc proc "$root/proc"
trap 'umount "$root/proc"; rm -rf --one-file-system "$work"' EXIT
inside() { chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin DEBIAN_FRONTEND=noninteractive "$@"; }
must() { inside "$@" >"$work/log" 2>&1 || fail "$*: $(tail -n 20 "$work/log")"; }

cp "$deb" "$root/viewer.deb"
must apt-get install -y --no-install-recommends /viewer.deb
must useradd --create-home tester
home=$root/home/tester
cp "$top/examples/server.pem" "$home/"
path=$(long_certificate "$home")
path=${path#"$root"}

# as_tester COMMAND...: in the fresh root, on the display that "opens" provides
cat >"$work/as_tester" <<E2
#!/bin/sh
exec chroot --userspec=tester:tester "$root" env -i -C /home/tester HOME=/home/tester PATH=/usr/bin:/bin \\
    DISPLAY="\$DISPLAY" XDG_CURRENT_DESKTOP=GNOME QT_FORCE_STDERR_LOGGING=1 "\$@"
E2
chmod +x "$work/as_tester"
entry=/usr/share/applications/PXViewCertTool.desktop
opens "$work/as_tester" PXViewCertTool server.pem
opens "$work/as_tester" gio launch $entry server.pem
opens "$work/as_tester" gio launch $entry "$path"
opens "$work/as_tester" xdg-open server.pem
opens "$work/as_tester" xdg-open "$path"

nothing_left() {
    local left
    rm -rf "$root/tmp/"* # the guard of the single instance, which outlives it
    left=$(find "$root" -xdev \( -iname '*pxview*' -o -iname '*pxsignature*' -o -iname '*orvane*' \) -print
        grep -rl PXViewCertTool "$root/usr/share" "$root/etc" "$root/var/lib/dpkg" || true)
    left=$(grep -v '/var/lib/dpkg/\(status\|available\)-old$' <<<"$left" || true)
    [ -z "$left" ] || fail "removing left: $left"
}
must dpkg --purge pxviewcerttool
rm "$root/viewer.deb"
rm -r "$root/home/tester"
nothing_left

# The RPM, put there by the machine's rpm; its records know nothing of what dpkg installed.
rpm_there() { rpm --root "$root" --nodeps "$@" >"$work/log" 2>&1 || fail "rpm $*: $(cat "$work/log")"; }
core=$root/usr/lib/orvane/bin/PXSignatureCoreV10.so
install -d -o 1000 -g 1000 "$home"
install -m 644 "$top/examples/server.pem" "$home/"
rpm_there --install "$rpm"
opens "$work/as_tester" PXViewCertTool server.pem
opens "$work/as_tester" gio launch $entry server.pem
rpm_there --upgrade --force "$rpm"
cmp -s "$core" "$root/usr/lib/orvane/default/bin/PXSignatureCoreV10.so" || fail "upgrading lost the core"
rm "$core"
echo "suite's core" >"$core"
rpm_there --upgrade --force "$rpm"
rpm_there --erase pxviewcerttool
expect "$core" "suite's core"
rm -r "$root/usr/lib/orvane" "$root/home/tester"
nothing_left
