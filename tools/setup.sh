#!/usr/bin/env bash
# Installs the Debian 12 packages that the project needs and that are missing.
#
#   tools/setup.sh                  the packages to build, run and test (groups "build" and "test")
#   tools/setup.sh GROUP...         these groups: build, test, browser, windows, bench, fuzz, dvd-authoring, package
#
# Run it as root or as a user who may use sudo.
set -euo pipefail

build=(
    g++                     # the compiler (C++20)
    cmake                   # reads CMakePresets.json
    ninja-build             # the generator of every preset
    pkg-config              # finds cpp-httplib, which has no CMake package
    lld                     # the linker of the sanitizer build
    qt6-base-dev            # Qt Core, Gui, Widgets, Test; includes the display plug-ins and a font
    qt6-tools-dev           # lets CMake find lupdate and lrelease
    qt6-l10n-tools          # lupdate and lrelease: extract texts, compile translations
    qt6-translations-l10n   # the toolkit's translations
    libcurl4-openssl-dev    # HTTPS to the Tessera service
    ca-certificates         # the certificate authorities for HTTPS
    libcjson-dev            # parses the service's replies
    zlib1g-dev              # compresses the disc package for the service
    libgtest-dev            # the tests without widgets
    libcpp-httplib-dev      # HTTP server of the local service and of the tests
    libqt6sql6-sqlite       # Qt's driver for the database of the local service, loaded at run time
)
test=(
    git                     # lists the project's files and the changed ones
    clang-format-14         # step "format"
    clang-tidy-14           # step "tidy"
    lld                     # the linker of the sanitizer build
    openssl                 # certificates for the tests of HTTPS
    locales                 # the Turkish locale, in which "I" and "i" are different letters
    xvfb                    # a virtual display
    xdotool                 # presses keys on it
    imagemagick             # takes the screenshot and counts its colours
    python3-jsonschema      # checks reports with the schema of the documents
)
browser=(
    chromium                # opens the local service's pages as their user does (tests/browser)
    chromium-driver         # types and clicks in it for the tests
    python3-selenium        # the API of the driver
)
windows=(
    g++-mingw-w64-x86-64-posix    # the compiler for Windows (preset "windows-backends")
    wine64                  # runs the compiled programs
    wine                    # the commands wine and wineserver
    googletest              # GoogleTest as sources, to compile for Windows
)
bench=(
    libbenchmark-dev        # measurements (preset "bench")
)
fuzz=(
    clang                   # compiles the fuzz targets (preset "fuzz")
    libclang-rt-14-dev      # libFuzzer and the sanitizers
)
dvd_authoring=(
    ffmpeg                  # makes pictures and sound
    dvdauthor               # makes VIDEO_TS; spumux adds subtitles
    fonts-dejavu-core       # the font of the subtitles
    genisoimage             # ISO/UDF bridge images
    xorriso                 # plain ISO-9660 images
    7zip                    # reads the UDF 2.50 images that the tests make
)
packaging=(
    dpkg-dev                # finds the dependencies of the packages
    file                    # identifies the programs for CPack
    lintian                 # checks the packages
    desktop-file-utils      # checks the desktop entry
    appstream               # checks the entry of a software catalogue
    man-db                  # checks the manual pages
    librsvg2-bin            # renders the icons
    mmdebstrap              # makes the clean system that tests the packages
)

fail() {
    echo "setup: $*" >&2
    exit 1
}

# Prints the packages among its arguments that are not installed.
missing_of() {
    local package
    for package in "$@"; do
        [[ $(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null) == installed ]] || echo "$package"
    done
}

command -v dpkg-query >/dev/null || fail "this needs Debian (dpkg-query is missing)"

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
