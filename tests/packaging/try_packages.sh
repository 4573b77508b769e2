#!/usr/bin/env bash
# Installs the packages in a clean Debian, uses the programs there as a user would, and removes them again.
#
#   tests/packaging/try_packages.sh DIRECTORY DISC      DIRECTORY holds the packages, DISC is a Blu-ray's directory
#
# The clean system holds what Debian marks as essential, and apt. It is made once and kept in build/clean-root, beside
# the Debian packages that were downloaded; each run has a fresh copy in memory, which ends with the script. What runs
# in it sees no other file; the display alone is one of this machine's, a virtual one. Nothing recommended is installed.
#
# Exit status 77 where such a system cannot be made or entered, or Debian cannot be reached: nothing was judged then.
# Packages: tools/setup.sh test package
#
# shellcheck disable=SC2317  # functions that wait_for calls
set -euo pipefail

self=$(realpath "$0") inside=no
[[ ${1:-} != --inside ]] || { inside=yes; shift; }
[[ $# -eq 2 && -d $1 && -d $2/BDMV ]] || { sed -n '2,4p' "$0" >&2; exit 2; }
directory=$(realpath "$1") disc=$(realpath "$2")
cd "$(dirname "$self")/../.."
state=$PWD/build/clean-root
memory=$state/memory
root=$memory/root
packages=(platterscope platterscope-tessera-local)
readonly user=1000    # whoever that is

fail() { echo "try_packages: $*" >&2; exit 1; }
cannot() { echo "try_packages: not tried: $*"; exit 77; }

# start LOG COMMAND...: starts a command that prints one line when it is ready, and puts that line into $ready_line.
start() {
    local log=$1 pipe=$state/ready.$$ ready
    shift
    mkfifo "$pipe"
    "$@" >"$pipe" 2>"$log" &
    started=$!
    exec {ready}<"$pipe"
    rm "$pipe"
    read -r -t 30 ready_line <&"$ready" || { cat "$log" >&2; fail "$* did not start"; }
}

# The display first, then the rest with mounts and processes of its own, of which none outlives it.
if [[ $inside == no ]]; then
    [[ $(id -u) -eq 0 ]] || cannot "that takes root"
    unshare --mount --pid --fork true 2>/dev/null || cannot "no namespaces can be made here"
    mkdir -p "$state"
    trap '[[ -z ${started:-} ]] || { kill "$started"; wait "$started" || true; }' EXIT
    trap 'exit 130' INT
    trap 'exit 143' TERM
    # A reset, when the last window is gone, would throw out who comes just then.
    start "$state/display.log" Xvfb -displayfd 1 -noreset -screen 0 1280x800x24
    DISPLAY=:$ready_line unshare --mount --pid --fork --kill-child --mount-proc "$self" --inside "$directory" "$disc"
    exit
fi

# ---- The clean system ----

# Runs a command in it: as_root COMMAND...; as_user [VAR=VALUE...] COMMAND...
as_root() {
    env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 HOME=/root DEBIAN_FRONTEND=noninteractive \
        ${http_proxy:+http_proxy="$http_proxy"} chroot "$root" "$@"
}
as_user() {
    as_root setpriv --reuid="$user" --regid="$user" --clear-groups env HOME=/home/user \
        PATH=/usr/bin:/bin XDG_RUNTIME_DIR=/home/user/run "$@"
}

make_system() {
    local sources=()
    mkdir -p "$state/archives" "$memory"
    mount -t tmpfs -o mode=755,size=3g clean-root "$memory" || cannot "nothing can be mounted here"
    mkdir "$root" "$memory/tmp"
    if [[ ! -f $state/base.tar ]]; then
        mapfile -t sources < <(find /etc/apt/sources.list.d/debian.sources /etc/apt/sources.list -size +0 2>/dev/null)
        TMPDIR=$memory/tmp mmdebstrap --mode=root --variant=apt --format=tar --dpkgopt=force-unsafe-io \
            bookworm "$state/base.tar.new" "${sources[@]}" >"$state/base.log" 2>&1 \
            || cannot "no Debian can be made here ($state/base.log)"
        mv "$state/base.tar.new" "$state/base.tar"
    fi
    tar -C "$root" -xpf "$state/base.tar"
    mount -t proc proc "$root/proc" || cannot "nothing can be mounted here"
    cp /etc/resolv.conf "$root/etc/"
    find "$state/archives" -name '*.deb' -exec cp -t "$root/var/cache/apt/archives" {} +
    as_root apt-get -q -o Acquire::Retries=3 -o APT::Update::Error-Mode=any update >"$state/update.log" 2>&1 \
        || cannot "Debian cannot be reached ($state/update.log)"
}

# A user with a disc and a key.
make_user() {
    local home=$root/home/user
    mkdir -p "$home/.127.0.0.1" "$home/run"
    cp -r "$disc" "$home/disc"
    echo try >"$home/.127.0.0.1/ApiKey.txt"
    echo try=user >"$home/keys"
    chown -R "$user:$user" "$home"
    chmod 700 "$home/.127.0.0.1" "$home/run"
    chmod 600 "$home/.127.0.0.1/ApiKey.txt"
}

install_packages() {
    mkdir "$root/packages" && cp "$directory"/*.deb "$root/packages/"
    as_root sh -c 'apt-get -q install -y --no-install-recommends /packages/*.deb' >"$state/install.log" 2>&1 \
        || { tail -n 30 "$state/install.log" >&2; fail "they cannot be installed"; }
    cp -n "$root/var/cache/apt/archives"/*.deb "$state/archives/"
    [[ -z $(as_root dpkg --verify "${packages[@]}") ]] || fail "what is installed is not what was packed"
    as_root dpkg -L "${packages[@]}" >"$state/files"
}

remove_packages() {
    local file left=
    as_root dpkg --remove "${packages[@]}" >"$state/remove.log" 2>&1 || fail "they cannot be removed"
    as_root dpkg --purge "${packages[@]}" >>"$state/remove.log" 2>&1 || fail "they cannot be purged"
    while read -r file; do
        [[ ! -e $root$file || -d $root$file && $file != *platterscope* ]] || left+=" $file"
    done <"$state/files"
    left+=$(find "$root" -xdev \( -path "$root/home" -o -path "$root/packages" -o -path "$root/var/log" \) -prune \
        -o -iname '*platterscope*' -print -o -iname '*tessera*' -print)
    [[ -z $left ]] || fail "left behind:$left"
}

# ---- The person ----

# wait_for WHAT COMMAND...: repeats the command until it succeeds.
wait_for() {
    local deadline=$((SECONDS + 30)) what=$1
    shift
    until "$@"; do
        kill -0 "$program" 2>/dev/null || { cat "$state/program.log" >&2; fail "the program ended before $what"; }
        if ((SECONDS >= deadline)); then
            import -window root "$state/screenshot.png"
            fail "waited in vain for $what; the screen is in $state/screenshot.png"
        fi
        sleep 0.1
    done
}

# Finds a visible window by its title (a pattern) and gives it the keyboard, since no window manager does.
focus_window() {
    local window
    window=$(xdotool search --onlyvisible --name "$1" 2>/dev/null | head -n 1)
    [[ -n $window ]] && timeout 5 xdotool windowfocus --sync "$window" 2>/dev/null
}

# ---- The trial ----

use_programs() {
    local version service program status=0
    version=$(dpkg-deb -f "$directory"/platterscope_*.deb Version)
    [[ $(as_user platterscope --version 2>/dev/null) == "Platterscope ${version%-*}" ]] || fail "platterscope --version"
    [[ $(as_user tessera_local --version) == "tessera_local ${version%-*}" ]] || fail "tessera_local --version"

    start "$state/service.log" as_user tessera_local --keys-file /home/user/keys --database /home/user/discs.db
    service=${ready_line##* }
    as_user DISPLAY="$DISPLAY" PLATTERSCOPE_SERVICE_URL="$service" platterscope /home/user/disc \
        2>"$state/program.log" &
    program=$!

    wait_for "the question whether to add the disc" focus_window '^Add disc to Tessera\?$'
    xdotool key Escape
    wait_for "the disc in the title" focus_window '^Platterscope - '
    import -window root "$state/screenshot.png"
    xdotool key Alt_L Down Up Return    # the File menu's last entry: Quit
    timeout 20 tail --pid="$program" -s 0.1 -f /dev/null || fail "the program did not quit by its menu"
    wait "$program" || status=$?
    [[ $status -eq 0 ]] || fail "the program ended with $status"
    grep -q 'scan finished: Blu-ray' "$state/program.log" || { cat "$state/program.log" >&2; fail "no disc was read"; }
}

make_system
make_user
install_packages
use_programs
remove_packages
needed=$(($(grep -c '^Unpacking ' "$state/install.log") - ${#packages[@]}))
echo "try_packages: installed with $needed packages that they need, used and removed, in $SECONDS s"
