#!/usr/bin/env bash
# Runs screen_reader_test.py on a virtual screen with a message bus of its own:
#
#   screen_reader_test.sh PROGRAM
#
# Exit status 77, with a word on why, where the packages that it takes are not installed: dbus, xvfb, at-spi2-core
# and python3-pyatspi.
set -euo pipefail

skip() {
    echo "skipped: $* is not installed"
    exit 77
}

for command in dbus-run-session xvfb-run; do
    command -v "$command" >/dev/null || skip "$command"
done
[[ -e /usr/share/dbus-1/services/org.a11y.Bus.service ]] || skip at-spi2-core
/usr/bin/python3 -c 'import pyatspi' 2>/dev/null || skip python3-pyatspi

home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
export HOME=$home XDG_RUNTIME_DIR=$home QT_QPA_PLATFORM=xcb QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1
export PLATTERSCOPE_SERVICE_URL=http://127.0.0.1:9    # nothing is asked of it
dbus-run-session -- xvfb-run -a /usr/bin/python3 "$(dirname "$0")/screen_reader_test.py" "$1"
