#!/usr/bin/env bash
# Takes the pictures of the README again: the real window on a virtual display, with a small disc and a service from the
# tests. build/screenshots keeps the pictures of all pages and dialogs in two languages, scales and palettes.
#
#   tools/screenshots.sh
set -euo pipefail
cd "$(dirname "$0")/.."

tools/setup.sh build test
cmake --preset release >/dev/null
cmake --build --preset release --target make_screenshots >/dev/null

# take FOLDER LOCALE SCALE [dark]
take() {
    local folder=build/screenshots/$1 locale=$2 scale=$3
    shift 3
    mkdir -p "$folder"
    env -u DISPLAY -u WAYLAND_DISPLAY LC_ALL="$locale" LANGUAGE="$locale" QT_SCALE_FACTOR="$scale" \
        QT_QPA_PLATFORM=xcb HOME="$PWD/build/screenshots" xvfb-run -a -s "-screen 0 2560x1600x24" \
        build/release/tests/make_screenshots "$folder" "$@" 2>>build/screenshots/log
}
rm -rf build/screenshots
mkdir -p docs/screenshots
for scale in 1 2; do
    take "english-$scale" C.UTF-8 "$scale"
    take "english-$scale-dark" C.UTF-8 "$scale" dark
    take "german-$scale" de_DE.UTF-8 "$scale"
    take "german-$scale-dark" de_DE.UTF-8 "$scale" dark
done

# picture PAGE NAME: reduces the colours, to make the file small, and removes the time and other metadata.
picture() {
    convert "build/screenshots/english-1/$1.png" -strip -colors 128 -define png:exclude-chunks=date,time "docs/screenshots/$2.png"
}
picture page-3-titles titles
picture page-5-configurations configurations
picture page-7-monitor monitor
ls -l docs/screenshots
