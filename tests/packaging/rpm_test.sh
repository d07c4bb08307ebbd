#!/usr/bin/env bash
# rpm_test.sh PACKAGES: the RPM holds the same tree as the Debian package, and asks for a core as it does.
source "$(dirname "$0")/support.sh"
deb=$(echo "$1"/pxviewcerttool_*.deb)
rpm=$(echo "$1"/pxviewcerttool-*.rpm)
said() { rpm --dbpath "$work/rpmdb" -qp "$@" "$rpm"; }

# Each file's mode, owner, size and target; folders but the package's own belong to the system.
diff <(dpkg-deb -c "$deb" | awk '$1 !~ /^d/ {print $1, $2, $3, substr($6, 2), $8}' | sort) \
    <(said --qf '[%{FILEMODES:perms} %{FILEUSERNAME}/%{FILEGROUPNAME} %{FILESIZES} %{FILENAMES} %{FILELINKTOS}\n]' |
        awk '$1 !~ /^d/ {if ($1 ~ /^l/) $3 = 0; print $1, $2, $3, $4, $5}' | sort) ||
    fail "the packages hold different trees"
folders=$(said --qf '[%{FILEMODES:perms} %{FILENAMES}\n]' | sed -n 's/^d[^ ]* //p' | grep -v orvane || true)
[ "$folders" = /usr/share/doc/pxviewcerttool ] || fail "the RPM owns folders of the system: $folders"

said --requires | grep -qxF '(pxviewcerttool-core or pxviewcerttool-core-provider)' || fail "it asks for no core"
said --provides | grep -q '^pxviewcerttool-core = ' || fail "it brings no core"
