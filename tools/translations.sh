#!/usr/bin/env bash
# Updates translations/*.ts from the texts in the code.
#
#   tools/translations.sh            adds new texts as unfinished and removes those that the code no longer has. Then
#                                    translate the unfinished ones, by hand or with Qt Linguist
#   tools/translations.sh --check    fails if a text is missing or unfinished
set -euo pipefail
cd "$(dirname "$0")/.."
lupdate=/usr/lib/qt6/bin/lupdate
[[ -x $lupdate ]] || { echo "translations: $lupdate is missing; see tools/setup.sh" >&2; exit 1; }

# The folders with texts that a user can see.
folders=(app base bdmeta discio dvdmeta monitor package report scan service text ui)

# update FOLDER: updates its .ts files, without line numbers, which would change with every commit.
update() {
    local file
    for file in "$1"/*.ts; do
        "$lupdate" -tr-function-alias QT_TRANSLATE_NOOP+=MESSAGE_NOOP -silent -locations none -no-obsolete -I . "${folders[@]}" -ts "$file"
    done
}

if [[ ${1:-} != --check ]]; then
    update translations
    grep -c 'type="unfinished"' translations/*.ts || true
    exit 0
fi

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cp translations/*.ts "$scratch"
update "$scratch"
diff -r translations "$scratch" || { echo "translations: run tools/translations.sh" >&2; exit 1; }
if grep -n -B 2 'type="unfinished"' translations/*.ts; then
    echo "translations: these texts are not translated" >&2
    exit 1
fi
echo "translations: $(grep -c '<source>' translations/*.ts) texts, all translated"
