#!/usr/bin/env bash
# Draws the icons of every size from resources/icons/platterscope.svg. They are kept in the repository, so that a
# build needs no drawing program; platterscope.png, 256 pixels wide, is the window's icon too.
#
#   tools/icons.sh            draws them again, after a change of the drawing
#   tools/icons.sh --check    fails where one is not what its drawing gives
#
# Packages: tools/setup.sh package
set -euo pipefail
cd "$(dirname "$0")/../resources/icons"

case ${1:-} in
    '') out=. ;;
    --check) out=$(mktemp -d) && trap 'rm -r "$out"' EXIT ;;
    *) sed -n '2,8p' ../../tools/icons.sh >&2; exit 2 ;;
esac
sizes=(16 22 24 32 48 64 128 256 512)    # those of the icon theme that every other one falls back to
for size in "${sizes[@]}"; do
    name=platterscope-$size.png
    [[ $size -ne 256 ]] || name=platterscope.png
    rsvg-convert --width "$size" --height "$size" --output "$out/$name" platterscope.svg
    [[ $out == . ]] || cmp "$out/$name" "$name"
done
