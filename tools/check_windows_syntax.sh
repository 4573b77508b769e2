#!/usr/bin/env bash
# Checks the syntax of the program's sources with the compiler for Windows (tools/setup.sh windows) and this system's Qt
# headers, in which that compiler selects the declarations for Windows. Debian has no Qt for Windows to link with. Skips
# the files for other systems, those that the preset "windows-backends" compiles, and those that need a library whose
# headers for Windows are missing.
#
#   tools/check_windows_syntax.sh
#
# Exit status 0 if the compiler accepts every file.
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
[[ ${#sources[@]} -gt 0 ]] || { echo "windows syntax: no sources in $PWD"; exit 1; }
printf '%s\0' "${sources[@]}" | xargs -0 -n 1 -P 2 "${compile[@]}"
echo "windows syntax: ${#sources[@]} files accepted"
