#!/usr/bin/env bash
# Makes two images of an authored DVD (the folder that contains VIDEO_TS), with different tools: a plain ISO-9660 image,
# and one with the same files under ISO-9660 and UDF 1.02, as on a pressed disc.
#
#   tools/author_dvd_images.sh DIR ISO_OUT BRIDGE_OUT
#
# Packages: tools/setup.sh dvd-authoring
set -euo pipefail

if [[ $# -ne 3 || ! -d $1/VIDEO_TS ]]; then
    echo "usage: tools/author_dvd_images.sh DIR ISO_OUT BRIDGE_OUT   (DIR contains VIDEO_TS)" >&2
    exit 2
fi

# Runs a tool; shows its output only if it fails.
quietly() {
    local output
    output=$("$@" 2>&1) || { echo "$output" >&2; echo "author_dvd_images: $1 failed" >&2; exit 1; }
}

quietly xorriso -as mkisofs -iso-level 2 -V TEST_PATTERNS -o "$2" "$1"
quietly genisoimage -dvd-video -udf -V TEST_PATTERNS -o "$3" "$1"
echo "author_dvd_images: $2 and $3"
