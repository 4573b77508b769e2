#!/usr/bin/env bash
# Installs the Debian 12 packages that the project needs, and nothing when all are there.
#
#   tools/setup.sh                  what building, running and testing need (groups "build" and "test")
#   tools/setup.sh GROUP...         only these groups: build, test, browser, windows, bench, fuzz, dvd-authoring, package
#
# Run it as root or as a user who may use sudo.
set -euo pipefail

build=(
    g++                     # the compiler (C++20)
    cmake                   # reads CMakePresets.json
    ninja-build             # the generator of every preset
    pkg-config              # finds cpp-httplib, which has no CMake package
    qt6-base-dev            # Qt Core, Gui, Widgets, Test; brings the display plug-ins and a font
    qt6-tools-dev           # finds the translators' tools for cmake
    qt6-l10n-tools          # lupdate and lrelease: texts out of the code, translations into the program
    qt6-translations-l10n   # the toolkit's own buttons in other languages
    libcurl4-openssl-dev    # HTTPS to the Tessera service
    ca-certificates         # the authorities that HTTPS trusts
    libcjson-dev            # reads the service's replies
    zlib1g-dev              # packs the disc package for the service
    libgtest-dev            # GoogleTest, for everything without widgets
    libcpp-httplib-dev      # HTTP server of the local service and of the tests
    libsqlite3-dev          # database of the local service
)
test=(
    git                     # tells which files are the project's and which of them changed
    clang-format-14         # step "format"
    clang-tidy-14           # step "tidy"
    openssl                 # certificates for the tests of HTTPS
    xvfb                    # a screen where there is none
    xdotool                 # presses keys on it
    imagemagick             # takes the screenshot and counts its colours
    at-spi2-core            # tells screen readers of windows
    dbus                    # carries what they are told
    python3-pyatspi         # a screen reader's view, for a test
    python3-jsonschema      # checks reports with the schema of the documents
)
browser=(
    chromium                # opens the local service's pages as their user does (tests/browser)
    chromium-driver         # types and clicks in it for the tests
)
windows=(
    g++-mingw-w64-x86-64-posix    # compiles for Windows (preset "windows-backends")
    wine64                  # runs what it made
    wine                    # the command of that name, and its server's
    googletest              # GoogleTest as sources, to be compiled for Windows too
)
bench=(
    libbenchmark-dev        # measures (preset "bench")
)
fuzz=(
    clang                   # compiles the fuzz targets (preset "fuzz")
    libclang-rt-14-dev      # its fuzzer and sanitizers
)
dvd_authoring=(
    ffmpeg                  # makes pictures and sound
    dvdauthor               # makes VIDEO_TS of them; spumux adds subtitles
    fonts-dejavu-core       # the subtitles' letters
    genisoimage             # ISO/UDF bridge images
    xorriso                 # plain ISO-9660 images
    7zip                    # reads the UDF 2.50 images that the tests make
)
packaging=(
    dpkg-dev                # finds out what the packages depend on
    file                    # tells CPack which files those are that ask for libraries
    lintian                 # judges the packages
    desktop-file-utils      # judges the entry of the desktop's menu
    appstream               # judges the entry of a software catalogue
    man-db                  # judges the manual pages
    librsvg2-bin            # draws the icons
    mmdebstrap              # makes the clean system in which the packages are tried
)

fail() {
    echo "setup: $*" >&2
    exit 1
}

# Prints those of its arguments that are not installed.
missing_of() {
    local package
    for package in "$@"; do
        [[ $(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null) == installed ]] || echo "$package"
    done
}

command -v dpkg-query >/dev/null || fail "this needs Debian (dpkg-query is not here)"

[[ $# -gt 0 ]] || set -- build test
wanted=()
for group in "$@"; do
    case $group in
        build) wanted+=("${build[@]}") ;;
        test) wanted+=("${test[@]}") ;;
        browser) wanted+=("${browser[@]}") ;;
        windows) wanted+=("${windows[@]}") ;;
        bench) wanted+=("${bench[@]}") ;;
        fuzz) wanted+=("${fuzz[@]}") ;;
        dvd-authoring) wanted+=("${dvd_authoring[@]}") ;;
        package) wanted+=("${packaging[@]}") ;;
        *) fail "no group '$group'; the groups are build, test, browser, windows, bench, fuzz, dvd-authoring, package" ;;
    esac
done

mapfile -t missing < <(missing_of "${wanted[@]}")
if [[ ${#missing[@]} -eq 0 ]]; then
    echo "setup: all ${#wanted[@]} packages of '$*' are installed"
    exit 0
fi

as_root=()
if [[ $(id -u) -ne 0 ]]; then
    command -v sudo >/dev/null || fail "run this as root (there is no sudo): it installs ${missing[*]}"
    as_root=(sudo)
fi
apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -o Acquire::Retries=3)

echo "setup: installing ${missing[*]}"
"${apt[@]}" update
"${apt[@]}" install -y --no-install-recommends "${missing[@]}"
echo "setup: done"
