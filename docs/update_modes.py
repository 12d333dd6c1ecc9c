#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes what `tavrix modes` prints into docs/modes.md and the manual page, between their marks.

update_modes.py COMMAND          rewrites both
update_modes.py COMMAND --check  fails when one of them says anything else
"""
import pathlib
import re
import subprocess
import sys

DOCS = pathlib.Path(__file__).parent


def markdown(modes):
    rows = [f"| {'' if number == '-' else number} | `{name}` | {advice} | {words} |\n"
            for number, name, words, advice in modes]
    return "| mode | name | choose it for | words read |\n|---|---|---|---:|\n" + "".join(rows)


def roff(modes):
    return "".join(f".br\n.BR {name} :\n{advice}; {words} words\n".replace("-", "\\-") for _, name, words, advice in modes)


PLACES = [("modes.md", "<!-- modes: made by update_modes.py -->\n", "<!-- end of modes -->", markdown),
          ("tavrix.1", ".\\\" modes: made by update_modes.py\n", ".\\\" end of modes", roff)]


def main():
    printed = subprocess.run([sys.argv[1], "modes"], capture_output=True, text=True, check=True).stdout
    modes = re.findall(r"^([-\d]) +(\S+) +(\d+)  (.+)$", printed, re.MULTILINE)
    differs = []
    for name, start, end, written in PLACES:
        text = (DOCS / name).read_text(encoding="utf-8")
        before, rest = text.split(start)
        after = rest.split(end)[1]
        wanted = before + start + written(modes) + end + after
        if wanted != text:
            differs.append(name)
            if sys.argv[2:] != ["--check"]:
                (DOCS / name).write_text(wanted, encoding="utf-8")
    if sys.argv[2:] == ["--check"] and differs:
        sys.exit(f"{', '.join(differs)}: not what tavrix modes says; run docs/update_modes.py")


main()
