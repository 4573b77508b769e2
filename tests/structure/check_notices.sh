#!/usr/bin/env bash
# Holds the third-party notices against what programs really link: every library that one of them needs is
# named there, and every library that is named there is needed by one of them. Version numbers do not count:
# "libz.so.1" is "libz.so". The program loader, which not every program names, belongs to libc.so.
#
#   tests/structure/check_notices.sh NOTICES PROGRAM...
#
# Prints one line per violation; exit status 1 if there is any.
set -euo pipefail

notices=$1
shift

violations=0
report() {
    echo "$1"
    violations=$((violations + 1))
}

# The libraries that a program's dynamic section names.
needed_by() {
    readelf -d "$1" | sed -nE 's/.*\(NEEDED\).*\[(.*\.so)[.0-9]*\]$/\1/p' | sed -E 's/^ld-.*/libc.so/'
}

named=()
while IFS=: read -r line name; do
    named+=("$name")
    lines[${#named[@]} - 1]=$line
done < <(grep -noE '\blib[A-Za-z0-9_+-]+\.so\b' "$notices")

needed=' '
for program in "$@"; do
    libraries=$(needed_by "$program")
    [[ -n $libraries ]] || report "$program: needs no library at all"
    for library in $libraries; do
        needed+="$library "
        [[ " ${named[*]} " == *" $library "* ]] || report "$program: needs $library, which $notices does not name"
    done
done
for i in "${!named[@]}"; do
    [[ $needed == *" ${named[i]} "* ]] || report "$notices:${lines[i]}: ${named[i]} is needed by no program"
done

echo "notices: ${#named[@]} libraries named, $violations violations"
[[ $violations -eq 0 ]]
