#!/usr/bin/env bash
# Keeps translations/*.ts in step with the texts of the code.
#
#   tools/translations.sh            takes new texts over as unfinished ones and drops those that are gone; what is
#                                    unfinished is then translated in the file, by hand or with Qt Linguist
#   tools/translations.sh --check    fails where a text is missing or unfinished
set -euo pipefail
cd "$(dirname "$0")/.."
lupdate=/usr/lib/qt6/bin/lupdate
[[ -x $lupdate ]] || { echo "translations: there is no $lupdate; see tools/setup.sh" >&2; exit 1; }

# The rooms whose texts a user can see.
rooms=(app base monitor package report scan service text ui)

# update FOLDER: the files of that folder; without line numbers, which would change with every commit.
update() {
    local file
    for file in "$1"/*.ts; do
        "$lupdate" -silent -locations none -no-obsolete -I . "${rooms[@]}" -ts "$file"
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
