#!/usr/bin/env bash
# Fuzzes everything that reads bytes from a disc, the service or a helper: two targets at a time, from the seeds that
# the builders of the tests write and from the inputs that earlier runs found (build/fuzz/corpus).
#
#   tools/fuzz.sh [SECONDS [TARGET...]]    fuzzes all targets or these, each for SECONDS (default 300)
#   tools/fuzz.sh --list                   lists the targets
#
# An input that crashes a target, violates one of its assertions, or takes 10 seconds or 1 GiB ends that target. The
# input stays in build/fuzz/findings; the repair adds a test for it. build/fuzz/results.tsv has the last result of
# each target.
set -euo pipefail
cd "$(dirname "$0")/.."

mapfile -t all < <(sed -n 's/^platterscope_fuzz_target(\([a-z_]*\) .*/\1/p' fuzz/CMakeLists.txt)
if [[ ${1:-} == --list ]]; then
    printf '%s\n' "${all[@]}"
    exit 0
fi
seconds=${1:-300}
[[ $seconds =~ ^[1-9][0-9]*$ ]] || { sed -n '2,10p' "$0"; exit 2; }
shift || true
[[ $# -gt 0 ]] && targets=("$@") || targets=("${all[@]}")
for target in "${targets[@]}"; do
    [[ " ${all[*]} " == *" $target "* ]] || { echo "fuzz: no target '$target'; see tools/fuzz.sh --list" >&2; exit 2; }
done

folder=$PWD/build/fuzz
mkdir -p "$folder/findings" "$folder/logs"
cmake --preset fuzz >"$folder/logs/build.log" 2>&1 && cmake --build --preset fuzz >>"$folder/logs/build.log" 2>&1 ||
    { tail -n 40 "$folder/logs/build.log"; exit 1; }

# Some targets write small files, which is faster in memory.
if [[ -d /dev/shm && -w /dev/shm ]]; then
    export TMPDIR=/dev/shm
fi

max_length() {
    case $1 in
        *_disc) echo 65536 ;;
        ep_lookup) echo 1024 ;;    # the walk takes quadratic time
        *) echo 8192 ;;
    esac
}

# libFuzzer would cut a longer seed.
for target in "${targets[@]}"; do
    long=$(find "$folder/seeds/$target" -type f -size "+$(max_length "$target")c")
    [[ -z $long ]] || { echo "fuzz: longer than the inputs of its target: $long" >&2; exit 1; }
done

run_target() {
    local target=$1 log=$folder/logs/$1.log
    mkdir -p "$folder/corpus/$target"
    "$folder/bin/fuzz_$target" -max_total_time="$seconds" -max_len="$(max_length "$target")" -timeout=10 \
        -rss_limit_mb=1024 -print_final_stats=1 -artifact_prefix="$folder/findings/$target-" \
        "$folder/corpus/$target" "$folder/seeds/$target" >"$log" 2>&1 || echo "SUMMARY: ended with status $?" >>"$log"
}

# figure TARGET PATTERN: the group of the last match of the pattern in the target's log, or 0.
figure() {
    local value
    value=$(sed -n "s/.*$2.*/\1/p" "$folder/logs/$1.log" | tail -n 1)
    echo "${value:-0}"
}

running=0
for target in "${targets[@]}"; do
    if [[ $running -eq 2 ]]; then
        wait -n || true
        running=$((running - 1))
    fi
    run_target "$target" &
    running=$((running + 1))
done
wait || true

# Keeps the last results of the other targets.
findings=0
results=$folder/results.tsv
touch "$results"
for target in "${targets[@]}"; do
    sed -i "/^$target\t/d" "$results"
done
for target in "${targets[@]}"; do
    found=none
    if grep -q '^SUMMARY: ' "$folder/logs/$target.log" || ! grep -q '^Done [0-9]* runs' "$folder/logs/$target.log"; then
        found=$(sed -n 's/^SUMMARY: //p' "$folder/logs/$target.log" | head -n 1)
        found=${found:-unexpected end}
        findings=$((findings + 1))
    fi
    printf '%s\t%s\t%s of %s\t%s\t%s\t%s\n' "$target" "$(figure "$target" 'number_of_executed_units: \([0-9]*\)')" \
        "$(figure "$target" 'cov: \([0-9]*\)')" "$(figure "$target" 'Loaded 1 modules *(\([0-9]*\)')" \
        "$(figure "$target" 'corp: \([0-9]*\)')" "$(figure "$target" 'runs in \([0-9]*\) second')" "$found" \
        >>"$results"
done
column -t -s $'\t' "$results"
echo "fuzz: ${#targets[@]} targets, $findings findings"
[[ $findings -eq 0 ]] || { echo "see $folder/logs and $folder/findings"; exit 1; }
