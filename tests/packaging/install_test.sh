#!/usr/bin/env bash
# install_test.sh BUILD: the tree that `cmake --install` lays out, and what it leaves alone.
source "$(dirname "$0")/support.sh"
build=$1
core=bin/PXSignatureCoreV10.so
install_to() { cmake --install "$build" --prefix "$@" >"$work/log" || fail "cmake --install: $(cat "$work/log")"; }
listed() { (cd "$1" && find . ! -type d | sort); }
settings() { printf "./settings/%s/settings/PXClientConfig.dll\n" CN EN TW; }

icons() {
    for size in 16 24 32 48 64 128 256; do
        echo "./share/icons/hicolor/${size}x$size/apps/PXViewCertTool.png"
    done
    echo ./share/icons/hicolor/scalable/apps/PXViewCertTool.svg
}
viewer() {
    printf '%s\n' ./bin/PXViewCertTool ./bin/PXViewCertTool-open \
        ./languages/PXViewCertTool_Lang.ini ./share/applications/PXViewCertTool.desktop \
        ./share/man/{,zh_CN/,zh_TW/}man1/PXViewCertTool{,-open}.1 \
        ./share/metainfo/invalid.orvane.pxviewcerttool.metainfo.xml
    icons
}

# The whole, in a folder whose name a shell would stumble over.
tree="$work/a suite's folder"
install_to "$tree"
diff <(listed "$tree") <({ viewer; settings; echo "./$core"; } | sort) || fail "another tree was laid out"
opens "$tree/bin/PXViewCertTool" "$top/examples/server.pem"
opens "$tree/bin/PXViewCertTool-open" "$(long_certificate "$work")"
mv "$tree" "$work/moved"
(cd "$top/examples" && opens "$work/moved/bin/PXViewCertTool-open" server.pem)

# The viewer alone, for a suite's folder.
install_to "$work/viewer" --component viewer
diff <(listed "$work/viewer") <(viewer | sort) || fail "the viewer's component holds something else"
install_to "$work/core" --component core --strip
diff <(listed "$work/core") <({ settings; echo "./$core"; } | sort) ||
    fail "the core's component holds something else"
cmp -s "$work/core/$core" "$build/$core" && fail "the core was not stripped"

# A suite's own core and configuration stay, also those that are links or were changed later.
suite=$work/suite
mkdir -p "$suite/bin" "$suite/settings/CN/settings" "$suite/settings/TW/settings"
echo core >"$suite/$core"
echo configuration >"$suite/settings/CN/settings/PXClientConfig.dll"
ln -s /nowhere "$suite/settings/TW/settings/PXClientConfig.dll"
echo "an older viewer" >"$suite/bin/PXViewCertTool"
install_to "$suite"
grep -q "Kept: $suite/$core" "$work/log" || fail "nobody was told that the core was kept"
echo mine >"$suite/settings/EN/settings/PXClientConfig.dll"
install_to "$suite"
expect "$suite/$core" core
expect "$suite/settings/CN/settings/PXClientConfig.dll" configuration
expect "$suite/settings/EN/settings/PXClientConfig.dll" mine
[ "$(readlink "$suite/settings/TW/settings/PXClientConfig.dll")" = /nowhere ] || fail "a link was replaced"
cmp -s "$suite/bin/PXViewCertTool" "$work/moved/bin/PXViewCertTool" || fail "the viewer was not replaced"

# The same below a staging directory.
mkdir -p "$work/stage/opt/suite/bin"
echo core >"$work/stage/opt/suite/$core"
DESTDIR=$work/stage install_to /opt/suite
expect "$work/stage/opt/suite/$core" core
diff <(listed "$work/stage/opt/suite") <(listed "$work/moved") || fail "staging laid out another tree"
[ ! -e /opt/suite ] || fail "staging reached beyond its directory"
