#!/usr/bin/env bash
# Renders the icons of every size from resources/icons/platterscope.svg. The repository contains them, so that a build
# does not need the renderer. platterscope.png, 256 pixels wide, is also the window's icon.
#
#   tools/icons.sh            renders them after a change of the drawing
#   tools/icons.sh --check    fails if one differs from its drawing
#
# Packages: tools/setup.sh package
set -euo pipefail
cd "$(dirname "$0")/../resources/icons"

case ${1:-} in
    '') out=. ;;
    --check) out=$(mktemp -d) && trap 'rm -r "$out"' EXIT ;;
    *) sed -n '2,8p' ../../tools/icons.sh >&2; exit 2 ;;
esac
sizes=(16 22 24 32 48 64 128 256 512)    # those of hicolor, the fallback of all icon themes
for size in "${sizes[@]}"; do
    name=platterscope-$size.png
    [[ $size -ne 256 ]] || name=platterscope.png
    rsvg-convert --width "$size" --height "$size" --output "$out/$name" platterscope.svg
    [[ $out == . ]] || cmp "$out/$name" "$name"
done
