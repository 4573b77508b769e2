#!/usr/bin/env bash
# Runs clang-tidy over .cpp files of build/asan-ubsan, which contains the program and its tests. Two run at a time. Exit
# status 0 if there are no findings.
#
#   tools/tidy.sh          checks the files that changed since the branch left origin/main or, on origin/main, since the
#                          previous commit, and uncommitted changes. Without a previous commit checks all files, or none
#                          in a shallow clone
#   tools/tidy.sh --all    checks all files (takes minutes)
set -euo pipefail
cd "$(dirname "$0")/.."
database=build/asan-ubsan/compile_commands.json
[[ -f $database ]] || { echo "tidy: configure the build first: cmake --preset asan-ubsan" >&2; exit 1; }
git rev-parse --git-dir >/dev/null

# The commit to compare with; empty if every file counts as changed.
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
        echo "tidy: a shallow clone without the previous commit: nothing to compare with" >&2
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
    echo "tidy: skipped, not sources of this build: ${skipped[*]}"
fi
if [[ ${#sources[@]} -eq 0 ]]; then
    echo "tidy: no changed source"
    exit 0
fi
echo "tidy: ${#sources[@]} files"
# The database has GCC's warning options, some of which clang does not support. For each file clang-tidy prints the
# number of suppressed warnings to standard error; these lines are no findings.
tidy=(clang-tidy-14 --quiet -p build/asan-ubsan --extra-arg=-Wno-unknown-warning-option)
printf '%s\0' "${sources[@]}" | xargs -0 -n 1 -P 2 "${tidy[@]}" 2>build/tidy.log \
    || { grep -v ' generated\.$' build/tidy.log >&2 || true; exit 1; }
