#!/usr/bin/env bash
# validate_test.sh BUILD PACKAGES: what is installed pleases the tools that look at such files.
source "$(dirname "$0")/support.sh"
build=$1
packages=$2
metainfo=$build/packaging/invalid.orvane.pxviewcerttool.metainfo.xml
desktop=$top/packaging/PXViewCertTool.desktop

complaints=$(desktop-file-validate --warn-kde "$desktop" 2>&1) || true
[ -z "$complaints" ] || fail "desktop-file-validate: $complaints"
appstreamcli validate --no-net "$metainfo" || fail "appstreamcli"
for manual in "$top"/packaging/man/{,zh_CN/,zh_TW/}PXViewCertTool.1; do
    complaints=$(man --warnings -E UTF-8 -l -Tutf8 -Z "$manual" 2>&1 >/dev/null)
    [ -z "$complaints" ] || fail "man --warnings: $complaints"
done
lintian --fail-on error,warning "$packages"/*.deb || fail "lintian"

# The tools do find fault.
sed 's/^Type=.*//' "$desktop" >"$work/bad.desktop"
desktop-file-validate "$work/bad.desktop" >/dev/null && fail "a bad desktop entry passed"
grep -v '<id>' "$metainfo" >"$work/bad.metainfo.xml"
appstreamcli validate --no-net "$work/bad.metainfo.xml" >/dev/null && fail "bad metainfo passed"
sed 's/\.SH NAME/.SH NAME\n.nosuchmacro/' "$top/packaging/man/PXViewCertTool.1" >"$work/bad.1"
complaints=$(man --warnings -E UTF-8 -l -Tutf8 -Z "$work/bad.1" 2>&1 >/dev/null)
[ -n "$complaints" ] || fail "a bad manual page passed"

# What is said in one language is said in all, and by the manual of the same keys.
for key in Name Comment Keywords; do
    for language in '' '\[zh_CN\]' '\[zh_TW\]' '\[zh_HK\]'; do
        grep -q "^$key$language=." "$desktop" || fail "the desktop entry has no $key$language"
    done
done
keys() { grep -E '^\.(BR?|IR?) (Tab|Left|Up|Ctrl|Alt|Space|Escape)' "$1"; }
for language in zh_CN zh_TW; do
    diff <(keys "$top/packaging/man/PXViewCertTool.1") <(keys "$top/packaging/man/$language/PXViewCertTool.1") ||
        fail "the manual in $language names other keys"
done
grep -q '^Exec=PXViewCertTool-open %f$' "$desktop" || fail "the desktop entry bypasses the launcher"
types='application/pkix-cert;application/pkix-cert+pem;application/x-x509-ca-cert;'
types+='application/x-x509-user-cert;application/x-pem-file;'
grep -qxF "MimeType=$types" "$desktop" || fail "the desktop entry names other types"

# The screenshots are those of docs/screenshots.
shots=$(sed -n 's#.*<image>.*/\(docs/screenshots/.*\)</image>.*#\1#p' "$metainfo")
[ -n "$shots" ] || fail "the metainfo shows no screenshot"
for shot in $shots; do
    [ -f "$top/$shot" ] || fail "there is no $shot"
done
