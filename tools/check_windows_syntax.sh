#!/usr/bin/env bash
# Holds the program's sources against the compiler for Windows (tools/setup.sh windows), which there is no Qt to
# link with: only the syntax is checked, with this system's headers of Qt. Their declarations for Windows are what
# the compiler sees then. Passed over are the files for other systems, those that the preset "windows-backends"
# really compiles, and those that need a library without headers for Windows here.
#
#   tools/check_windows_syntax.sh
#
# Exit status 0 when the compiler takes every one.
set -euo pipefail
cd "$(dirname "$0")/.."

folders=(app base bdmeta dvdmeta monitor package report scan service text ui)
headers=$(qtpaths6 --query QT_INSTALL_HEADERS)
compile=(
    x86_64-w64-mingw32-g++-posix -std=c++20 -fsyntax-only -w
    -DNOMINMAX -DUNICODE -DWIN32_LEAN_AND_MEAN '-DPLATTERSCOPE_SERVICE_URL=""' '-DPLATTERSCOPE_VERSION=""'
    -I . -isystem "$headers" -isystem "$headers/QtCore" -isystem "$headers/QtGui" -isystem "$headers/QtWidgets"
)

mapfile -t sources < <(find "${folders[@]}" -name '*.cpp' ! -name '*_posix.cpp' ! -name '*_linux.cpp' \
    ! -name '*_windows.cpp' -print0 | xargs -0 grep -LE '^#include <(curl|cjson|zlib)' | sort)
[[ ${#sources[@]} -gt 0 ]] || { echo "windows syntax: no source found in $PWD"; exit 1; }
printf '%s\0' "${sources[@]}" | xargs -0 -n 1 -P 2 "${compile[@]}"
echo "windows syntax: ${#sources[@]} files taken"
