#!/usr/bin/env bash
# Runs clang-tidy with the rules of .clang-tidy over the .cpp files of build/asan-ubsan, which has the program and its tests.
#
#   tools/tidy.sh          the changed ones: since the branch left origin/main, or, on origin/main itself, since
#                          the commit before, and what is not committed; all where there is no commit before
#                          (none in a shallow clone, which cannot tell)
#   tools/tidy.sh --all    every one (takes minutes)
#
# Two run at a time. Exit status 0 when none of them has a finding.
set -euo pipefail
cd "$(dirname "$0")/.."
database=build/asan-ubsan/compile_commands.json
[[ -f $database ]] || { echo "tidy: configure the build first: cmake --preset asan-ubsan" >&2; exit 1; }
git rev-parse --git-dir >/dev/null

# The commit to compare with; nothing where every file counts as changed.
base_commit() {
    local base
    base=$(git merge-base HEAD origin/main 2>/dev/null) || base=
    if [[ -z $base || $base == "$(git rev-parse HEAD)" ]]; then
        base=$(git rev-parse --quiet --verify HEAD~1) || base=
    fi
    echo "$base"
}

changed_sources() {
    local base
    base=$(base_commit)
    if [[ -z $base && $(git rev-parse --is-shallow-repository) == true ]]; then
        echo "tidy: a shallow clone without the commit before: nothing to compare with" >&2
    elif [[ -z $base ]]; then
        all_sources
    else
        git diff --name-only --diff-filter=d "$base" -- '*.cpp' '*.h'
        git ls-files --others --exclude-standard -- '*.cpp' '*.h'
    fi
}

all_sources() {
    git ls-files --cached --others --exclude-standard -- '*.cpp'
}

if [[ ${1:-} == --all ]]; then
    mapfile -t changed < <(all_sources | sort -u)
else
    mapfile -t changed < <(changed_sources | sort -u)
fi

sources=()
skipped=()
for file in "${changed[@]}"; do
    if grep -qF "\"file\": \"$PWD/$file\"" "$database"; then sources+=("$file"); else skipped+=("$file"); fi
done
if [[ ${#skipped[@]} -gt 0 ]]; then
    echo "tidy: skipped, no sources of this build: ${skipped[*]}"
fi
if [[ ${#sources[@]} -eq 0 ]]; then
    echo "tidy: no changed source"
    exit 0
fi
echo "tidy: ${#sources[@]} files"
# The build is GCC's, so clang meets warning options that it does not know. What it suppressed is counted on
# standard error, file by file; that is no finding.
tidy=(clang-tidy-14 --quiet -p build/asan-ubsan --extra-arg=-Wno-unknown-warning-option)
printf '%s\0' "${sources[@]}" | xargs -0 -n 1 -P 2 "${tidy[@]}" 2>build/tidy.log \
    || { grep -v ' generated\.$' build/tidy.log >&2 || true; exit 1; }
