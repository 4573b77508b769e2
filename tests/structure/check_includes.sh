#!/usr/bin/env bash
# Holds every include of the project against the drawing of its rooms (docs/ARCHITECTURE.md): upper rooms may
# include lower ones, never the reverse; the readers and the native files know no Qt.
#
#   tests/structure/check_includes.sh [ROOT]      ROOT: the project's folder, by default this one
#
# Prints one line per violation; exit status 1 if there is any.
set -euo pipefail
cd "${1:-$(dirname "$0")/../..}"

# A room and the rooms it may include besides itself. A folder is a room, except app/, which holds five.
declare -A allowed=(
    [app/main]="ui report app/command_line app/translation app/log"
    [app/command_line]="app/log"
    [app/busy_task]="app/log"
    [app/translation]=""
    [app/log]=""
    [ui]="text scan monitor service app/busy_task app/log"
    [report]="text scan app/log"
    [text]="scan"
    [monitor]=""
    [etw_helper]="monitor"
    [scan]="service package bdmeta dvdmeta discio app/log"
    [service]="app/log"
    [package]="bdmeta dvdmeta discio"
    [bdmeta]="discio"
    [dvdmeta]="discio"
    [discio]=""
    [tools]=""
    [tools/make_screenshots.cpp]="any"
    [tests]="any"
    [bench]="any"
    [fuzz]="any"
)
without_qt=" discio bdmeta dvdmeta etw_helper "
native_file='_(posix|linux|windows)\.cpp$'

# The room of a source file or of an included path.
room_of() {
    case $1 in
        app/identity.h | app/terminal_text.*) echo app/log ;;
        app/*) echo "${1%.*}" ;;
        tools/make_screenshots.cpp) echo "$1" ;;    # which drives the window with parts of the tests
        *) echo "${1%%/*}" ;;
    esac
}

violations=0
report() {
    echo "$1"
    violations=$((violations + 1))
}

# check_include FILE LINE PATH: one include of the project's own kind.
check_include() {
    local file=$1 line=$2 path=$3 from to
    from=$(room_of "$file")
    to=$(room_of "$path")
    if [[ ! -v allowed[$from] ]]; then
        report "$file:$line: '$from' is no room of the drawing"
    elif [[ $path != */* ]]; then
        report "$file:$line: \"$path\" is not written from the root"
    elif [[ $from != "$to" && ${allowed[$from]} != any && " ${allowed[$from]} " != *" $to "* ]]; then
        report "$file:$line: '$from' may not include '$to' (\"$path\")"
    fi
}

# check_qt FILE LINE PATH: one include of Qt's.
check_qt() {
    local file=$1 line=$2 path=$3
    if [[ $without_qt == *" $(room_of "$file") "* || $file =~ $native_file ]]; then
        report "$file:$line: <$path> where no Qt may be"
    fi
}

includes=0
rooms=$(printf '%s\n' "${!allowed[@]}" | cut -d/ -f1 | sort -u | paste -sd'|')
include='^([^:]+):([0-9]+):[[:space:]]*#[[:space:]]*include[[:space:]]*([<"])([^">]+)[">]'
while IFS= read -r match; do
    [[ $match =~ $include ]] || continue
    file=${BASH_REMATCH[1]#./} line=${BASH_REMATCH[2]} bracket=${BASH_REMATCH[3]} path=${BASH_REMATCH[4]}
    includes=$((includes + 1))
    if [[ $path =~ ^(Q[A-Za-z]|q[a-z]+\.h$) ]]; then
        check_qt "$file" "$line" "$path"
    elif [[ $path == *.moc ]]; then
        :    # written by the meta-object compiler, included by the file it belongs to
    elif [[ $bracket == '"' || $path =~ ^($rooms)/ ]]; then
        check_include "$file" "$line" "$path"
    fi
done < <(grep -rnE --include='*.h' --include='*.cpp' --exclude-dir=build --exclude-dir='.?*' '#[[:space:]]*include' .)

[[ $includes -gt 0 ]] || { echo "no include found in $PWD"; exit 1; }
echo "includes: $includes looked at, $violations violations"
[[ $violations -eq 0 ]]
