#!/usr/bin/env bash
# Holds release programs against what cmake/PlatterscopeModule.cmake asks of them, by what is in the files themselves:
# loaded at any address, all functions found before main and their table read-only by then, no stack that can be
# executed, stack and copies checked, no writable code, and no folder of the build searched for libraries.
#
#   tests/structure/check_hardening.sh PROGRAM...
#
# Prints one line per finding; exit status 1 if there is any.
set -euo pipefail
[[ $# -gt 0 ]] || { echo "usage: $0 PROGRAM..." >&2; exit 2; }

findings=0
# expect PATTERN MESSAGE, refuse PATTERN MESSAGE: of what readelf says of $program, in $said.
expect() {
    grep -qE "$1" <<<"$said" || report "$2"
}
refuse() {
    ! grep -qE "$1" <<<"$said" || report "$2"
}
report() {
    echo "$program: $1"
    findings=$((findings + 1))
}

for program in "$@"; do
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
done

echo "hardening: $# programs, $findings findings"
[[ $findings -eq 0 ]]
