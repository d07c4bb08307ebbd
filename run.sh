#!/usr/bin/env bash
# run.sh [CERTIFICATE]: installs what is missing, builds, and opens the certificate in the viewer
# (without one, a certificate of examples/). Without a display it saves a picture of the window as
# viewer.png in the working directory.
set -euo pipefail

caller=$PWD
top=$(cd "$(dirname "$0")" && pwd)
certificate=${1:-$top/examples/server.pem}
case $certificate in
/*) ;;
*) certificate=$caller/$certificate ;;
esac
if [ ! -e "$certificate" ]; then
    echo "run.sh: there is no file $certificate" >&2
    exit 1
fi

"$top/tools/set-up"
display=no
xdpyinfo >/dev/null 2>&1 && display=yes
[ $display = yes ] || "$top/tools/set-up" --headless

cd "$top"
cmake --preset release >/dev/null
cmake --build --preset release -j "$(nproc)" --target PXViewCertTool >/dev/null
viewer=$top/build/release/bin/PXViewCertTool

if [ $display = yes ]; then
    exec "$viewer" "$certificate"
fi
locale=()
case ${LC_ALL:-${LC_TIME:-${LANG:-C}}} in
C | C.* | POSIX) # a desktop has a language; dates in none would be cut short in the picture
    locale=(env -u LC_ALL LC_CTYPE=C.UTF-8 LC_TIME=en_US.UTF-8)
    ;;
esac
"$top/tools/with-xvfb" "$top/tools/window-picture" "$caller/viewer.png" "${locale[@]}" "$viewer" "$certificate"
echo "run.sh: there is no display; a picture of the window is in $caller/viewer.png"
