#!/usr/bin/env bash
# Holds the sources against three rules.
# Includes follow the drawing of the rooms (docs/ARCHITECTURE.md): upper rooms may include lower ones, never the reverse;
# the readers and the native files know no Qt. Platforms are told apart by files (x_posix.cpp, x_windows.cpp) that CMake
# picks, so no platform macro stands in any source. Memory is owned by containers and smart pointers, so nothing
# allocates or releases by hand; a deleter does (a line that holds operator()), widgets belong to their parents, and
# exhaustion_test.cpp has an allocator of its own.
#
#   tests/structure/check_sources.sh [ROOT]      ROOT: the project's folder, by default this one
#
# Prints one line per violation; exit status 1 if there is any.
set -euo pipefail
cd "${1:-$(dirname "$0")/../..}"

# A room and the rooms it may include besides itself. A folder is a room, except app/, which holds three, and base/,
# which holds base/native.
declare -A allowed=(
    [app/main]="ui report app/command_line app/translation base"
    [app/command_line]=""
    [app/translation]=""
    [ui]="text scan monitor service base"
    [report]="text scan base"
    [text]="scan"
    [monitor]="base/native"
    [etw_helper]="monitor base/native"
    [scan]="service package bdmeta dvdmeta discio base"
    [service]="base base/native"
    [base]=""
    [base/native]=""
    [package]="base bdmeta dvdmeta discio"
    [bdmeta]="discio"
    [dvdmeta]="discio"
    [discio]="base/native"
    [tools]=""
    [tools/make_screenshots.cpp]="any"
    [tests]="any"
    [bench]="any"
    [fuzz]="any"
)
without_qt=" discio bdmeta dvdmeta etw_helper base/native "
native_file='_(posix|linux|windows)\.cpp$'

# Puts the room of a source file or of an included path into $room.
find_room() {
    case $1 in
        app/*) room=${1%.*} ;;
        base/native/*) room=base/native ;;
        tools/make_screenshots.cpp) room=$1 ;;    # drives the window with parts of the tests
        *) room=${1%%/*} ;;
    esac
}

violations=0 includes=0
report() {
    echo "$file:$line: $1"
    violations=$((violations + 1))
}

include='^([^:]+):([0-9]+):[[:space:]]*#[[:space:]]*include[[:space:]]*([<"])([^">]+)[">]'
while IFS= read -r match; do
    [[ $match =~ $include ]] || continue
    file=${BASH_REMATCH[1]#./} line=${BASH_REMATCH[2]} bracket=${BASH_REMATCH[3]} path=${BASH_REMATCH[4]}
    includes=$((includes + 1))
    find_room "$file" && from=$room
    find_room "$path" && to=$room
    if [[ $path =~ ^(Q[A-Za-z]|q[a-z]+\.h$) ]]; then
        [[ $without_qt != *" $from "* && ! $file =~ $native_file ]] || report "<$path> where no Qt may be"
    elif [[ $path == *.moc || ($bracket == '<' && ! -d ${path%%/*}) ]]; then
        :    # written by the meta-object compiler, or a library's
    elif [[ ! -v allowed[$from] ]]; then
        report "'$from' is no room of the drawing"
    elif [[ $path != */* ]]; then
        report "\"$path\" is not written from the root"
    elif [[ $from != "$to" && ${allowed[$from]} != any && " ${allowed[$from]} " != *" $to "* ]]; then
        report "'$from' may not include '$to' (\"$path\")"
    fi
done < <(grep -rnE --include='*.h' --include='*.cpp' --exclude-dir=build --exclude-dir='.?*' '#[[:space:]]*include' .)

# Every line of code as "file:line:text", without the contents of texts and without comments.
code=$(grep -rn --include='*.h' --include='*.cpp' --exclude-dir=build --exclude-dir='.?*' '' . \
    | sed -E "s#^\./##; s#'\"'##g; "'s#"([^"\\]|\\.)*"#""#g; s#//.*##; s#/\*.*\*/##g')

# forbid MESSAGE PATTERN: PATTERN in the lines on standard input.
forbid() {
    local found
    found=$(grep -P "^[^:]+:[0-9]+:.*($2)") || return 0
    printf '%s:\n%s\n' "$1" "$found"
    violations=$((violations + $(wc -l <<<"$found")))
}

forbid "platform macro" <<<"$code" \
    '\b(_?WIN(32|64)|__(linux|unix|APPLE|MINGW32|MINGW64|CYGWIN|FreeBSD)(__)?|_MSC_VER|Q_OS_[A-Z0-9_]+)\b'
forbid "memory by hand" '\b(malloc|calloc|realloc|free)\s*\(|\bdelete\b(\[\])?\s*[A-Za-z_(:*]' \
    < <(grep -vE '^tests/[a-z_]+/exhaustion_test\.cpp:|operator\(\)' <<<"$code")
forbid "memory by hand" '\bnew\s+[A-Za-z_:]' < <(grep -vE '^(ui|app|tests)/|operator()' <<<"$code")

[[ $includes -gt 0 ]] || { echo "no include found in $PWD"; exit 1; }
echo "sources: $includes includes and $(wc -l <<<"$code") lines looked at, $violations violations"
[[ $violations -eq 0 ]]
