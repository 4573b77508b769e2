#!/usr/bin/env bash
# Takes the pictures of the README anew: the real window on a virtual display, with a small disc and a service that the
# tests make. All pages and dialogs stay in build/screenshots.
#
#   tools/screenshots.sh
set -euo pipefail
cd "$(dirname "$0")/.."

tools/setup.sh build test
cmake --preset release >/dev/null
cmake --build --preset release --target make_screenshots >/dev/null

rm -rf build/screenshots
mkdir -p build/screenshots docs/screenshots
env -u DISPLAY -u WAYLAND_DISPLAY -u LANGUAGE LC_ALL=C.UTF-8 QT_QPA_PLATFORM=xcb HOME="$PWD/build/screenshots" \
    xvfb-run -a build/release/tests/make_screenshots build/screenshots 2>build/screenshots/log

# picture PAGE NAME: with few enough colours to be small; nothing of when or where it was made.
picture() {
    convert "build/screenshots/$1.png" -strip -colors 128 -define png:exclude-chunks=date,time "docs/screenshots/$2.png"
}
picture page-3-titles titles
picture page-5-configurations configurations
picture page-7-monitor monitor
ls -l docs/screenshots
