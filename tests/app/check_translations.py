#!/usr/bin/python3
"""check_translations.py FILE.ts...: checks that each text has a translation with its places to fill in and line ends."""
import re, sys, xml.etree.ElementTree


def framework(text):
    return sorted(re.findall("%[0-9n]", text)), text.startswith("\n"), text.endswith("\n")


for path in sys.argv[1:]:
    messages = xml.etree.ElementTree.parse(path).findall("context/message")
    assert len(messages) > 200, path
    for message in messages:
        source, translation = message.findtext("source"), message.findtext("translation")
        assert translation.strip() and framework(translation) == framework(source), source
