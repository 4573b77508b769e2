#!/usr/bin/env bash
# Runs a Windows program without a display, such as the tests of the preset "windows-backends". The first call makes the
# Windows directory tree build/windows-backends/wine (700 MB).
#
#   tools/wine.sh PROGRAM.exe ARGUMENT...
#   tools/wine.sh --end      ends wine's server, which otherwise runs some seconds longer than the last program
set -euo pipefail

export WINEPREFIX=${PLATTERSCOPE_WINEPREFIX:-$(cd "$(dirname "$0")/.." && pwd)/build/windows-backends/wine}
export WINEDEBUG=-all                        # only the program prints
export WINEDLLOVERRIDES='mscoree,mshtml='    # no download of components that no test needs
unset DISPLAY WAYLAND_DISPLAY

server() {
    "$(command -v wineserver || echo /usr/lib/wine/wineserver)" "$@"
}

if [[ ${1:-} == --end ]]; then
    [[ ! -d $WINEPREFIX ]] || server -k || true    # fails if none runs
    exit
fi

mkdir -p "$WINEPREFIX"
# Concurrent calls wait until the first one has made the tree.
(
    flock 9
    [[ -f $WINEPREFIX/made ]] || { wine wineboot -i >/dev/null 2>&1 && touch "$WINEPREFIX/made"; }
) 9>"$WINEPREFIX.lock"

# Uses files instead of pipes: wine's server, if this call starts it, would keep a pipe open long after the program's
# end.
printed=$(mktemp -d)
trap 'rm -rf "$printed"' EXIT
status=0
wine "$@" >"$printed/out" 2>"$printed/err" </dev/null || status=$?
tr -d '\r' <"$printed/out"
tr -d '\r' <"$printed/err" >&2
exit "$status"
