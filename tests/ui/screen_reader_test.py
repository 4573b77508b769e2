#!/usr/bin/env python3
"""Looks at the program as a screen reader does, over AT-SPI, and operates it that way.

    screen_reader_test.py PROGRAM

It is started by screen_reader_test.sh, which gives it a screen and a message bus of its own. The program has no key
yet: a box says so, and then the key dialog comes.
"""
import subprocess
import sys
import time

import pyatspi

EXPECTED = [("tree", "Titles and streams of the disc"), ("text", "Details of the selected title or stream"),
            ("push button", "Enter My API Key"), ("push button", "Refresh"), ("push button", "Start"),
            ("list", "Open/Close Events: Playlists (.mpls)"), ("list", "Currently Open Files: Segments (.m2ts)")]
SECONDS = 20


def descend(part):
    """The part and all that is in it."""
    yield part
    for child in part:
        if child is not None:
            yield from descend(child)


def find(role, name):
    """Waits for a part of this role and name in any program and returns it."""
    end = time.monotonic() + SECONDS
    while time.monotonic() < end:
        try:
            for application in pyatspi.Registry.getDesktop(0):
                for part in descend(application):
                    if part.getRoleName() == role and part.name == name:
                        return part
        except Exception:  # of several libraries, each with its own: what was looked at has gone
            pass
        time.sleep(0.1)
    sys.exit(f"never seen: {role} '{name}'")


def problems_of(window):
    """What can have the focus and has no name, and what is expected and is not there."""
    parts = list(descend(window))
    there = {(part.getRoleName(), part.name) for part in parts}
    return [f"no name: {part.getRoleName()}" for part in parts
            if part.getState().contains(pyatspi.STATE_FOCUSABLE) and not part.name] + [
            f"not there: {role} '{name}'" for role, name in EXPECTED if (role, name) not in there]


def main():
    program = subprocess.Popen([sys.argv[1]])
    try:
        box = find("alert", "API Key Security")
        problems = problems_of(find("frame", "Platterscope"))
        button = next(part for part in descend(box) if part.getRoleName() == "push button")
        if button.name != "OK":
            problems.append(f"the box's button is called '{button.name}'")
        button.queryAction().doAction(0)
        find("text", "Enter your Vantor API key:")
    finally:
        program.terminate()
        program.wait()
    print("\n".join(problems))
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
