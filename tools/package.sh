#!/usr/bin/env bash
# Makes the Debian packages of the release build in build/release/packages and prints their paths. They are
# reproducible: their files have the time of packaging/debian/changelog.
#
#   tools/package.sh
#
# Packages: tools/setup.sh build package
set -euo pipefail
cd "$(dirname "$0")/.."

packages=$PWD/build/release/packages
log=$PWD/build/package.log
SOURCE_DATE_EPOCH=$(dpkg-parsechangelog -l packaging/debian/changelog -S Timestamp)
export SOURCE_DATE_EPOCH
umask 022

mkdir -p build
rm -rf "$packages"
{
    cmake --preset release \
        && cmake --build --preset release --target installed \
        && cpack --config build/release/CPackConfig.cmake
} >"$log" 2>&1 || { tail -n 40 "$log" >&2; echo "package: failed (whole log: $log)" >&2; exit 1; }
ls "$packages"/*.deb
