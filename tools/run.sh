#!/usr/bin/env bash
# Builds the program and runs it against a Tessera service of its own on this machine.
#
#   tools/run.sh [DISC]      opens DISC, a disc's folder or image; by default authors and opens a small DVD
#   tools/run.sh --bluray    opens a small Blu-ray disc that the builders of the tests write
#
# build/run contains the service's database, the key, the authored DVD and the program's home folder, so that no key of
# the user is read or written. Delete it to start again.
#
# Without a display the script uses a virtual one: it answers the program's question, selects titles by the keyboard,
# writes build/run/screenshot.png and quits the program by its menu.
#
# The exit status is the program's.
#
# shellcheck disable=SC2317  # some functions are called through their names: by a trap, by wait_for
set -euo pipefail

fail() {
    echo "run: $*" >&2
    exit 1
}

usage() {
    echo "usage: tools/run.sh [DISC | --bluray]" >&2
    exit 2
}

[[ $# -le 1 ]] || usage
disc= make_bluray=no
if [[ ${1:-} == --bluray ]]; then
    make_bluray=yes
elif [[ ${1:-} == -* ]]; then
    usage
elif [[ $# -eq 1 ]]; then
    [[ -e $1 ]] || fail "'$1' does not exist"
    disc=$(realpath -- "$1")
fi
cd "$(dirname "$0")/.."
state=$PWD/build/run
bin=$PWD/build/release/bin
headless=no
[[ -n ${DISPLAY:-} || -n ${WAYLAND_DISPLAY:-} ]] || headless=yes

# ---- The processes and their end ----

processes=()

# Ends the processes, the last first, so that the display outlives the program.
end_processes() {
    local i
    for ((i = ${#processes[@]} - 1; i >= 0; i--)); do
        kill "${processes[i]}" 2>/dev/null || continue
        wait "${processes[i]}" 2>/dev/null || true
    done
}
trap end_processes EXIT
trap 'exit 129' HUP
trap 'exit 130' INT
trap 'exit 143' TERM

# ---- Preparation ----

prepare() {
    local groups=(build) targets=(platterscope tessera_local) log=$state/build.log
    [[ $headless == no ]] || groups+=(test)
    [[ $make_bluray == no ]] || { groups+=(test); targets+=(make_sample_bluray); }
    [[ -n $disc || $make_bluray == yes ]] || groups+=(dvd-authoring)
    tools/setup.sh "${groups[@]}"

    mkdir -p "$state"
    echo "run: building (log: $log)"
    { cmake --preset release && cmake --build --preset release --target "${targets[@]}"; } \
        >"$log" 2>&1 || { tail -n 40 "$log" >&2; fail "the build failed"; }

    if [[ $make_bluray == yes ]]; then
        disc=$state/bluray
        build/release/tests/make_sample_bluray "$disc"
    elif [[ -z $disc ]]; then
        disc=$state/disc
        [[ -d $disc/VIDEO_TS ]] || tools/author_dvd.sh "$disc"
    fi
}

# Makes one key for all runs, and writes it to the service's list of keys and to the program's key file.
store_key() {
    (
        umask 077
        mkdir -p "$state/home/.127.0.0.1" "$state/runtime"
        [[ -s $state/keys ]] || echo "$(od -An -N16 -tx1 /dev/urandom | tr -d ' \n')=$(id -un)" >"$state/keys"
        cut -d= -f1 "$state/keys" >"$state/home/.127.0.0.1/ApiKey.txt"
    )
}

# start LOG COMMAND...: starts a command and waits for its first line of output, which becomes $ready_line.
start() {
    local log=$1 pipe=$state/ready.$$ ready
    shift
    mkfifo "$pipe"
    "$@" >"$pipe" 2>"$log" &
    processes+=("$!")
    exec {ready}<"$pipe"
    rm "$pipe"
    read -r -t 30 ready_line <&"$ready" || { cat "$log" >&2; fail "$(basename "$1") did not start"; }
}

start_service() {
    local database=$state/tessera.db
    if [[ $headless == yes ]]; then
        database=$state/headless.db    # always new, so that the disc is new to the service
        rm -f "$database"*
    fi
    start "$state/service.log" "$bin/tessera_local" --keys-file "$state/keys" --database "$database" --port 0
    [[ $ready_line =~ ^tessera_local:\ listening\ on\ (http://127\.0\.0\.1:[0-9]+)$ ]] \
        || fail "unexpected line of the service: $ready_line"
    service=${BASH_REMATCH[1]}
    echo "run: service at $service (log: $state/service.log)"
}

# Starts the program with its own home. On X11 the cookie of the display is in the user's home, so names it.
start_program() {
    local environment=(HOME="$state/home" PLATTERSCOPE_SERVICE_URL="$service")
    [[ -n ${XAUTHORITY:-} || ! -e ${HOME:-}/.Xauthority ]] || environment+=(XAUTHORITY="$HOME/.Xauthority")
    env "${environment[@]}" "$@" "$bin/platterscope" "$disc" 2> >(exec tee "$state/program.log" >&2) &
    program=$!
    processes+=("$program")
}

# ---- Without a display: a virtual display and keyboard ----

# wait_for SECONDS WHAT COMMAND...: repeats the command until it succeeds.
wait_for() {
    local deadline=$((SECONDS + $1)) what=$2
    shift 2
    until "$@"; do
        if ! kill -0 "$program" 2>/dev/null; then
            echo "run: the program ended; the script was waiting for $what" >&2
            wait "$program" && exit 1    # a failure even if the program returned 0
            exit
        fi
        if ((SECONDS >= deadline)); then
            import -window root "$state/screenshot.png"
            fail "timeout while waiting for $what; the screen is in $state/screenshot.png"
        fi
        sleep 0.1
    done
}

# Gives the keyboard focus to the visible window whose title matches the pattern; there is no window manager.
focus_window() {
    local window
    window=$(xdotool search --onlyvisible --name "$1" 2>/dev/null | head -n 1)
    [[ -n $window ]] && timeout 5 xdotool windowfocus --sync "$window" 2>/dev/null
}

both_scans_finished() {
    [[ $(grep -c 'scan finished' "$state/program.log") -ge 2 ]]
}

# Takes a screenshot. Succeeds if it equals the one before and differs from $old_picture.
is_new_picture_stable() {
    local before=$picture
    import -window root "$state/screenshot.png"
    picture=$(identify -format '%#' "$state/screenshot.png")
    [[ $picture == "$before" && $picture != "$old_picture" ]]
}

press_keys() {
    wait_for 60 "the question whether to add the disc" focus_window '^Add disc to Tessera\?$'
    xdotool key Tab space                        # from No, the default, to Yes
    wait_for 60 "the second scan" both_scans_finished
    wait_for 60 "the disc's name in the title" focus_window '^Platterscope - '
    picture='' old_picture=''
    wait_for 20 "the titles" is_new_picture_stable
    old_picture=$picture
    xdotool key Home Right Down Down             # open the first title, go to its second stream
    wait_for 20 "the details of a stream" is_new_picture_stable
    echo "run: screenshot in $state/screenshot.png"
    xdotool key Alt_L Down Up Return             # the menu bar, the File menu, its last entry: Quit
    timeout 20 tail --pid="$program" -s 0.1 -f /dev/null || fail "the program did not quit by its menu"
}

prepare
store_key
if [[ $headless == yes ]]; then
    # Without -noreset the server would reset after its last client, and disconnect a new one.
    start "$state/display.log" Xvfb -displayfd 1 -noreset -screen 0 1280x800x24
    export DISPLAY=:$ready_line
    start_service
    start_program LC_ALL=C.UTF-8 QT_QPA_PLATFORM=xcb XDG_RUNTIME_DIR="$state/runtime"
    press_keys
else
    start_service
    start_program
fi
status=0
wait "$program" || status=$?
exit "$status"
