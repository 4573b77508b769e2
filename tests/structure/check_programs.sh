#!/usr/bin/env bash
# Holds release programs against what cmake/PlatterscopeModule.cmake asks of them, by what is in the files themselves:
# loaded at any address, all functions found before main and their table read-only by then, no stack that can be
# executed, stack and copies checked, no writable code, and no folder of the build searched for libraries. And holds the
# third-party notices against the libraries that the programs link: each is named there, and each that is named there is
# linked. Version numbers do not count: "libz.so.1" is "libz.so". The program loader, which not every program names,
# belongs to libc.so.
#
#   tests/structure/check_programs.sh NOTICES PROGRAM...
#
# Prints one line per finding; exit status 1 if there is any.
set -euo pipefail
[[ $# -gt 1 ]] || { echo "usage: $0 NOTICES PROGRAM..." >&2; exit 2; }

findings=0
report() {
    echo "$1"
    findings=$((findings + 1))
}
# expect PATTERN MESSAGE, refuse PATTERN MESSAGE: of what readelf prints about $program, in $said.
expect() { grep -qE "$1" <<<"$said" || report "$program: $2"; }
refuse() { ! grep -qE "$1" <<<"$said" || report "$program: $2"; }

notices=$1 needed=
named=$(grep -oE '\blib[A-Za-z0-9_+-]+\.so\b' "$notices")
for program in "${@:2}"; do
    said=$(LC_ALL=C readelf --wide --file-header --segments --dynamic --dyn-syms "$program")
    expect '^ *Type: +DYN ' "is not position independent"
    expect '\(FLAGS(_1)?\) .*\b(BIND_)?NOW\b' "finds functions as they are called, not at its start"
    expect '^ *GNU_RELRO ' "keeps the table of functions writable"
    expect '^ *GNU_STACK ' "does not say that its stack is not executable"
    refuse '^ *GNU_STACK .* R?W?E +0x' "has an executable stack"
    expect ' UND __stack_chk_fail\b' "does not check its stack"
    expect ' UND __[a-z]+_chk\b' "does not check its copies"
    refuse '\((RPATH|RUNPATH)\)' "looks for libraries in a folder of its own"
    refuse '\(TEXTREL\)|\(FLAGS\) .*\bTEXTREL\b' "writes to its own code when it is loaded"
    expect '\(NEEDED\)' "needs no library at all"
    libraries=$(sed -nE 's/.*\(NEEDED\).*\[(.*\.so)[.0-9]*\]$/\1/p' <<<"$said" | sed -E 's/^ld-.*/libc.so/')
    for library in $libraries; do
        grep -qxF "$library" <<<"$named" || report "$program: needs $library, which $notices does not name"
    done
    needed+=$libraries$'\n'
done
for library in $named; do
    grep -qxF "$library" <<<"$needed" || report "$notices: $library is needed by no program"
done

echo "programs: $(($# - 1)), $(wc -w <<<"$named") libraries named, $findings findings"
[[ $findings -eq 0 ]]
