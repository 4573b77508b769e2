#!/usr/bin/python3
"""screen_reader_test.py PROGRAM: looks at the program as a screen reader does, over AT-SPI, and operates it that way, on a
virtual screen with a message bus of its own. The program has no key yet: a box reports that, and then the key dialog comes.
Exit status 77 where dbus, xvfb, at-spi2-core or python3-pyatspi is not installed."""
import importlib.util, os, shutil, subprocess, sys, tempfile, time


def descend(part):
    """The part and all that is in it."""
    yield part
    for child in part:
        if child is not None:
            yield from descend(child)


def find(role, name):
    """Waits for a part of this role and name in any program and returns it."""
    end = time.monotonic() + 20
    while time.monotonic() < end:
        try:
            for part in descend(pyatspi.Registry.getDesktop(0)):
                if part.getRoleName() == role and part.name == name:
                    return part
        except Exception:  # of several libraries, each with its own: what was looked at has gone
            pass
        time.sleep(0.1)
    sys.exit(f"never seen: {role} '{name}'")


if "INSIDE" not in os.environ:
    if not (shutil.which("dbus-run-session") and shutil.which("xvfb-run") and importlib.util.find_spec("pyatspi")
            and os.path.exists("/usr/share/dbus-1/services/org.a11y.Bus.service")):
        sys.exit(77)
    with tempfile.TemporaryDirectory() as home:
        sys.exit(subprocess.run(["dbus-run-session", "--", "xvfb-run", "-a", *sys.orig_argv], env=os.environ | {
            "INSIDE": "yes", "HOME": home, "XDG_RUNTIME_DIR": home, "QT_QPA_PLATFORM": "xcb",
            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", "PLATTERSCOPE_SERVICE_URL": "http://127.0.0.1:9"}).returncode)

import pyatspi
program = subprocess.Popen(sys.argv[1:])
try:
    box = find("alert", "API Key Security")
    parts = list(descend(find("frame", "Platterscope")))
    nameless = [part.getRoleName() for part in parts
                if part.getState().contains(pyatspi.STATE_FOCUSABLE) and not part.name]
    button = next(part for part in descend(box) if part.getRoleName() == "push button")
    assert not nameless and button.name == "OK", (nameless, button.name)
    button.queryAction().doAction(0)
    find("text", "Enter your Vantor API key:")
finally:
    program.terminate()
    program.wait()
