#!/usr/bin/env bash
# Two rules of the sources. Platforms are told apart by files (x_posix.cpp, x_windows.cpp) that CMake picks, so
# no platform macro stands in any source. Memory is owned by containers and smart pointers, so nothing allocates
# or releases by hand; a deleter does (a line that holds operator()), widgets belong to their parents, and
# exhaustion_test.cpp has an allocator of its own.
#
#   tests/structure/check_platform.sh [ROOT]      ROOT: the project's folder, by default this one
#
# Prints one line per violation; exit status 1 if there is any.
set -euo pipefail
cd "${1:-$(dirname "$0")/../..}"

macros='\b(_?WIN(32|64)|__(linux|unix|APPLE|MINGW32|MINGW64|CYGWIN|FreeBSD)(__)?|_MSC_VER|Q_OS_[A-Z0-9_]+)\b'
allocation='\b(malloc|calloc|realloc|free)\s*\(|\bdelete\b(\[\])?\s*[A-Za-z_(:*]'
new='\bnew\s+[A-Za-z_:]'

# Every line of code as "file:line:text", without the contents of texts and without comments.
code=$(grep -rn --include='*.h' --include='*.cpp' --exclude-dir=build --exclude-dir='.?*' '' . \
    | sed -E "s#^\./##; s#'\"'##g; "'s#"([^"\\]|\\.)*"#""#g; s#//.*##; s#/\*.*\*/##g')
[[ -n $code ]] || { echo "no source found in $PWD"; exit 1; }

violations=0
# forbid MESSAGE PATTERN: PATTERN in the lines on standard input.
forbid() {
    local found
    found=$(grep -P "^[^:]+:[0-9]+:.*($2)") || return 0
    printf '%s:\n%s\n' "$1" "$found"
    violations=$((violations + $(wc -l <<<"$found")))
}

forbid "platform macro" "$macros" <<<"$code"
forbid "memory by hand" "$allocation" < <(grep -vE '^tests/[a-z_]+/exhaustion_test\.cpp:|operator\(\)' <<<"$code")
forbid "memory by hand" "$new" < <(grep -vE '^(ui|app|tests)/|operator()' <<<"$code")

echo "platform: $(wc -l <<<"$code") lines looked at, $violations violations"
[[ $violations -eq 0 ]]
