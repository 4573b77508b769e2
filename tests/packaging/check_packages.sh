#!/usr/bin/env bash
# Judges the packages that tools/package.sh made, without installing them: by the tools that Debian and the desktops
# judge by, and by what those cannot know. (lintian knows the sums, rights, owners, stripping, library paths, the warnings
# of man and the sizes of icons.)
#
#   tests/packaging/check_packages.sh DIRECTORY      DIRECTORY holds the packages
#
# Prints one line per fault; exit status 1 if there is any. Packages: tools/setup.sh package
set -euo pipefail

[[ $# -eq 1 && -d $1 ]] || { sed -n '2,7p' "$0" >&2; exit 2; }
directory=$(realpath "$1")
cd "$(dirname "$0")/../.."
application_id=$(sed -n 's/.*kDesktopFileName\[\] = "\(.*\)";/\1/p' base/identity.h)
version=$(sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
unpacked=$(mktemp -d)
trap 'rm -r "$unpacked"' EXIT

faults=0
fault() {
    echo "$*"
    faults=$((faults + 1))
}

# expect WHAT FOUND WANTED
expect() { [[ $2 == "$3" ]] || fault "$1 is '$2', not '$3'"; }

# What is written down in more places than one.
check_agreement() {
    local metainfo=packaging/$application_id.metainfo.xml page
    expect "the version of packaging/debian/changelog" \
        "$(dpkg-parsechangelog -l packaging/debian/changelog -S Version)" "$version-1"
    expect "the newest release of $metainfo" \
        "$(sed -n '0,/.*<release version="\([^"]*\)".*/s//\1/p' "$metainfo")" "$version"
    for page in packaging/*.1; do
        expect "the version of $page" "$(sed -n '1s/.*"Platterscope \(.*\)" "User Commands"/\1/p' "$page")" "$version"
    done
    tools/icons.sh --check || fault "resources/icons: run tools/icons.sh"
}

# Its manual page knows its options.
check_program() {
    local program=$1 page option text
    page=$2/usr/share/man/man1/$(basename "$program").1.gz
    [[ -f $page ]] || { fault "$program: has no manual page"; return; }
    text=$(MANWIDTH=1000 man --local-file "$page" | col -b)
    while read -r option; do
        grep -qwe "$option" <<<"$text" || fault "$page: says nothing of $option"
    done < <("$program" --help 2>/dev/null | grep -oE -- '--[a-z][a-z-]*' | sort -u)
}

shopt -s nullglob
check_agreement
packages=("$directory"/*.deb)
expect "the number of packages" "${#packages[@]}" 2
for package in "${packages[@]}"; do
    root=$unpacked/$(dpkg-deb -f "$package" Package)
    dpkg-deb --extract "$package" "$root"
    stray=$(find "$root" -mindepth 1 -not -path "$root/usr*" -o -type d -empty)
    [[ -z $stray ]] || fault "$package: outside /usr or empty: $stray"
    for program in "$root"/usr/bin/*; do check_program "$program" "$root"; done
    for file in "$root"/usr/share/applications/*.desktop; do desktop-file-validate "$file" || fault "$file"; done
    for file in "$root"/usr/share/metainfo/*.metainfo.xml; do
        said=$(appstreamcli validate --no-net --no-color "$file") || fault "$file"$'\n'"$said"
    done
    lintian --allow-root --profile debian --fail-on error,warning --display-info "$package" || fault "$package: lintian"
done
for name in "applications/$application_id.desktop" "metainfo/$application_id.metainfo.xml" \
    "icons/hicolor/scalable/apps/$application_id.svg" doc/platterscope/CONFIGURATION_LIBRARY.md \
    doc/platterscope/THIRD_PARTY_NOTICES.txt doc/platterscope/REPORT.md doc/platterscope/report.schema.json \
    platterscope/translations/platterscope_de.qm icons/hicolor/{16x16,32x32,48x48,256x256}/apps/"$application_id.png"; do
    [[ -f $unpacked/platterscope/usr/share/$name ]] || fault "the package platterscope lacks share/$name"
done

echo "packages: ${#packages[@]} judged, $faults faults"
[[ $faults -eq 0 ]]
