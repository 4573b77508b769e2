#!/usr/bin/env bash
# The tables of docs/RELIABILITY.md, made from what was run and never by hand.
#
#   tools/reliability.sh faults FILE             writes the table of faults from FILE, which the tests wrote
#   tools/reliability.sh --check faults FILE     fails where the document says anything else
#   tools/reliability.sh --check-ran faults FILE the same for the faults in FILE alone: where some tests were skipped
#   tools/reliability.sh fuzzing FILE            writes the table of fuzzing from FILE, which tools/fuzz.sh wrote
#
# The tests write FILE where PLATTERSCOPE_FAULT_TABLE names it.
set -euo pipefail
cd "$(dirname "$0")/.."

document=docs/RELIABILITY.md

fail() {
    echo "reliability: $*" >&2
    exit 1
}

# "class answer cases" in lines that may repeat becomes one row a class: all its cases, and each answer with its own.
faults_table() {
    echo "| What was tried | Cases | What happened |"
    echo "|---|---:|---|"
    LC_ALL=C sort "$1" | awk -F '\t' '
        { cases[$1] += $3; answers[$1 FS $2] += $3 }
        !seen[$1 FS $2]++ { if (!($1 in order)) { order[$1] = ++classes; name[classes] = $1 }
                            list[$1] = list[$1] (list[$1] == "" ? "" : FS) $2 }
        END {
            for (i = 1; i <= classes; ++i) {
                count = split(list[name[i]], answer, FS)
                text = ""
                for (j = 1; j <= count; ++j) {
                    text = text (j > 1 ? "; " : "") answer[j]
                    if (count > 1) { text = text " (" answers[name[i] FS answer[j]] ")" }
                }
                printf "| %s | %d | %s |\n", name[i], cases[name[i]], text
            }
        }'
}

# "target executions edges corpus seconds findings"
fuzzing_table() {
    echo "| Target | Executions | Edges covered | Inputs kept | Seconds | Findings |"
    echo "|---|---:|---:|---:|---:|---:|"
    LC_ALL=C sort "$1" | awk -F '\t' '{ printf "| %s | %d | %s | %s | %d | %s |\n", $1, $2, $3, $4, $5, $6 }'
}

# The lines of the document between the marks of a table.
written_table() {
    sed -n "/<!-- begin $1 -->/,/<!-- end $1 -->/p" "$document" | sed '1d;$d'
}

replace_table() {
    local table=$1 text=$2
    grep -q "<!-- begin $table -->" "$document" || fail "$document has no table '$table'"
    awk -v table="$table" -v file="$text" '
        { if ($0 == "<!-- end " table " -->") { inside = 0 } }
        !inside { print }
        $0 == "<!-- begin " table " -->" { inside = 1; while ((getline line < file) > 0) { print line } }
    ' "$document" >"$document.new"
    mv "$document.new" "$document"
}

check=
case ${1:-} in
    --check | --check-ran) check=$1; shift ;;
esac
[[ $# -eq 2 && ($1 == faults || $1 == fuzzing) ]] || { sed -n '2,10p' "$0"; exit 2; }
table=$1 file=$2
[[ -s $file ]] || fail "nothing was recorded in $file"

new=$(mktemp)
trap 'rm -f "$new"' EXIT
"${table}_table" "$file" >"$new"
case $check in
    '') replace_table "$table" "$new" ;;
    --check) diff <(written_table "$table") "$new" || fail "$document differs: tools/reliability.sh $table $file" ;;
    --check-ran) ! grep -vxFf <(written_table "$table") "$new" || fail "$document lacks these rows" ;;
esac
