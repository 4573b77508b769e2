#!/usr/bin/env bash
# Runs the tests in named steps and stops at the first failure. build/logs has the output of the builds.
#
#   tools/test.sh             runs the steps that every change must pass; takes minutes
#   tools/test.sh --full      runs all steps: before a release, or after a change of the build, the readers, the
#                             monitor, the packages or the Windows files
#   tools/test.sh STEP...     runs these steps; each builds what it needs
#   tools/test.sh --list      lists the steps
#
# shellcheck disable=SC2317  # the steps are called by their names
set -euo pipefail
cd "$(dirname "$0")/.."

quick=(setup format structure translations product tests tidy)
full=("${quick[@]}" tests-release tsan fuzz authored browser windows package window tidy-all)
authored=$PWD/build/authored    # the discs of the steps authored and window
logs=$PWD/build/logs

# git would refuse this checkout if another user owns it, as in a container.
export GIT_CONFIG_COUNT=1 GIT_CONFIG_KEY_0=safe.directory GIT_CONFIG_VALUE_0=$PWD

# ---- The steps ----

step_setup() {    # the Debian packages
    tools/setup.sh
}

step_format() {    # clang-format 14 would change no source
    git ls-files -z --cached --others --exclude-standard --deduplicate -- '*.h' '*.cpp' \
        | while IFS= read -r -d '' file; do if [[ -f $file ]]; then printf '%s\0' "$file"; fi; done \
        | xargs -0 --no-run-if-empty -n 40 -P 2 clang-format-14 --dry-run -Werror
}

step_structure() {    # the rules for includes, platform macros and manual memory management
    tests/structure/check_sources.sh
}

step_translations() {    # every translation is complete
    tools/translations.sh --check
}

step_product() {    # the release build without tests: warnings as errors, libraries, hardening
    build_release OFF all
    tests/structure/check_programs.sh docs/THIRD_PARTY_NOTICES.txt build/release/bin/{platterscope,tessera_local}
}

step_tests() {    # all tests, and each fuzz target over its seeds, with the address and undefined behaviour sanitizers
    build asan-ubsan all
    run_ctest asan-ubsan --label-exclude '^(authored|browser)$'
}

step_tidy() {    # clang-tidy 14 over the changed sources
    build asan-ubsan all    # generates the sources of the meta-object compiler
    tools/tidy.sh
}

step_tidy_all() {    # clang-tidy 14 over all sources
    build asan-ubsan all
    tools/tidy.sh --all
}

step_tests_release() {    # all tests on the release build; each public header compiles alone
    build_release ON all all_verify_interface_header_sets
    run_ctest release --label-exclude '^(authored|browser)$'
}

step_tsan() {    # the threads without Qt, with the thread sanitizer; Debian's Qt is not built for it
    build tsan all
    run_ctest tsan
}

step_fuzz() {    # every fuzz target for a few seconds, from its seeds
    tools/setup.sh fuzz
    tools/fuzz.sh 4
}

step_authored() {    # tests with DVDs of an independent authoring tool, as folders and images
    author_discs
    local preset
    build_release ON all
    build asan-ubsan all
    for preset in release asan-ubsan; do
        PLATTERSCOPE_AUTHORED_DIR=$authored run_ctest "$preset" --label-regex '^authored$'
    done
}

step_browser() {    # disc, local service and a real browser, if one can be installed
    if ! tools/setup.sh browser; then
        echo "skipped: no browser can be installed here"
        skipped=$((skipped + 1))
        return
    fi
    build_release ON all
    run_ctest release --label-regex '^browser$'
}

step_windows() {    # the code that calls Windows directly, run by wine, if compiler and wine can be installed
    if ! tools/setup.sh windows; then
        echo "skipped: the compiler for Windows and wine cannot be installed here"
        skipped=$((skipped + 1))
        return
    fi
    build windows-backends all
    local status=0
    run_ctest windows-backends || status=$?
    tools/wine.sh --end
    [[ $status -eq 0 ]] || return "$status"
    tools/check_windows_syntax.sh
}

step_package() {    # makes and checks the Debian packages, then installs, uses and removes them in a clean Debian
    if ! tools/setup.sh package; then
        echo "skipped: the tools that make and check packages cannot be installed here"
        skipped=$((skipped + 1))
        return
    fi
    build_release ON installed make_sample_bluray
    tools/package.sh
    tests/packaging/check_packages.sh build/release/packages
    build/release/tests/make_sample_bluray build/sample-bluray
    local status=0
    tests/packaging/try_packages.sh build/release/packages build/sample-bluray || status=$?
    if [[ $status -eq 77 ]]; then
        skipped=$((skipped + 1))
        status=0
    fi
    return "$status"
}

step_window() {    # the program on a virtual display and keyboard, with an authored DVD
    local picture=$PWD/build/run/screenshot.png colours
    author_discs
    rm -f "$picture"
    env -u DISPLAY -u WAYLAND_DISPLAY tools/run.sh "$authored/pal"
    colours=$(identify -format '%k' "$picture")
    echo "$picture has $colours colours"
    [[ $colours -ge 100 ]] || { echo "the screen is empty"; return 1; }
}

# ---- Helpers ----

# logged NAME COMMAND...: writes the command's output to a log file and shows the end of it if the command fails.
logged() {
    local log=$logs/$1.log status=0
    shift
    "$@" >"$log" 2>&1 || status=$?
    if [[ $status -ne 0 ]]; then
        tail -n 60 "$log"
        echo "(whole log: $log)"
    fi
    return "$status"
}

# build PRESET TARGET...: configures and builds.
build() {
    local preset=$1
    shift
    logged "$preset-configure" cmake --preset "$preset"
    logged "$preset-build" cmake --build --preset "$preset" --target "$@"
}

# build_release ON|OFF TARGET...: the release build with or without tests, in one folder.
build_release() {
    local tests=$1
    shift
    logged release-configure cmake --preset release -DPLATTERSCOPE_TESTS="$tests"
    logged release-build cmake --build --preset release --target "$@"
}

# run_ctest PRESET OPTION...: runs ctest and adds its counts to the totals.
run_ctest() {
    local preset=$1 result=$logs/$current.xml status=0 suite
    shift
    rm -f "$result"
    ctest --preset "$preset" --parallel 3 --output-junit "$result" "$@" || status=$?
    if [[ -f $result ]]; then
        suite=$(grep -m 1 -A 10 '<testsuite ' "$result")
        ran=$((ran + $(count tests) - $(count skipped) - $(count disabled)))
        failed=$((failed + $(count failures)))
        skipped=$((skipped + $(count skipped) + $(count disabled)))
    fi
    return "$status"
}

# count NAME: the attribute of $suite.
count() {
    sed -n "s/.*[[:space:]]$1=\"\([0-9]*\)\".*/\1/p" <<<"$suite" | head -n 1
}

# Makes build/authored/{pal,ntsc}, and of each NAME.iso (ISO-9660) and NAME_bridge.iso (ISO-9660 and UDF).
author_discs() {
    local standard
    tools/setup.sh dvd-authoring
    for standard in pal ntsc; do
        [[ ! -f $authored/${standard}_bridge.iso ]] || continue
        rm -rf "${authored:?}/$standard"*
        tools/author_dvd.sh "$authored/$standard" "$standard"
        tools/author_dvd_images.sh "$authored/$standard" "$authored/$standard.iso" "$authored/${standard}_bridge.iso"
    done
}

# ---- The run ----

current=
ran=0 failed=0 skipped=0
table=()

note_time() {
    local line
    printf -v line '%-13s %-7s %4d s' "$current" "$1" $((SECONDS - started))
    table+=("$line")
    echo "== step $current: $1 after $((SECONDS - started)) s"
}

# Prints the steps with their times and the numbers of tests, also after a failure.
summary() {
    local status=$?
    [[ -z $current ]] || note_time FAILED
    [[ ${#table[@]} -gt 0 ]] || exit "$status"
    echo
    printf '%s\n' "${table[@]}"
    echo "total $SECONDS s"
    [[ $skipped -eq 0 ]] || echo "$skipped skipped"
    echo "$((ran - failed)) passed, $failed failed"
    exit "$status"
}

if [[ ${1:-} == --list ]]; then
    for step in "${full[@]}"; do
        sed -n "s/^step_${step//-/_}() {    # /$step\t/p" "$0"
    done | expand -t 16
    exit 0
fi
case ${1:---quick} in
    --quick) set -- "${quick[@]}" ;;
    --full) set -- "${full[@]}" ;;
esac
for step in "$@"; do
    [[ " ${full[*]} " == *" $step "* ]] || { echo "test: no step '$step'; see tools/test.sh --list" >&2; exit 2; }
done

mkdir -p "$logs"
trap summary EXIT
trap 'exit 130' INT
trap 'exit 143' TERM
for step in "$@"; do
    current=$step started=$SECONDS
    echo "== step: $step"
    "step_${step//-/_}"
    note_time passed
    current=
done
