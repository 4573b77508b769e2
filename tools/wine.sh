#!/usr/bin/env bash
# Runs a Windows program: the tests of the preset "windows-backends" are run through this. Without a display, and
# in a Windows directory tree of its own, build/windows-backends/wine, which the first call makes (700 MB).
#
#   tools/wine.sh PROGRAM.exe ARGUMENT...
#   tools/wine.sh --end      ends wine's server, which otherwise ends some seconds after the last program
set -euo pipefail

export WINEPREFIX=${PLATTERSCOPE_WINEPREFIX:-$(cd "$(dirname "$0")/.." && pwd)/build/windows-backends/wine}
export WINEDEBUG=-all                        # what is printed is the program's alone
export WINEDLLOVERRIDES='mscoree,mshtml='    # nothing is to be downloaded for what no test needs
unset DISPLAY WAYLAND_DISPLAY

server() {
    "$(command -v wineserver || echo /usr/lib/wine/wineserver)" "$@"
}

if [[ ${1:-} == --end ]]; then
    [[ ! -d $WINEPREFIX ]] || server -k || true    # which fails where none runs
    exit
fi

mkdir -p "$WINEPREFIX"
# Programs that come at the same time wait for the first one to have made the tree.
(
    flock 9
    [[ -f $WINEPREFIX/made ]] || { wine wineboot -i >/dev/null 2>&1 && touch "$WINEPREFIX/made"; }
) 9>"$WINEPREFIX.lock"

# By way of files: the server and its like, where they are started by this, would hold a pipe open long after the
# program's end.
printed=$(mktemp -d)
trap 'rm -rf "$printed"' EXIT
status=0
wine "$@" >"$printed/out" 2>"$printed/err" </dev/null || status=$?
tr -d '\r' <"$printed/out"
tr -d '\r' <"$printed/err" >&2
exit "$status"
