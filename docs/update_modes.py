#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes what `tavrix modes` prints and what was measured into the documents, between their marks.

update_modes.py COMMAND          rewrites them
update_modes.py COMMAND --check  fails when one of them says anything else

Measured is what bench/ocr/words_found.md says, as words_found.py printed it; the figures that `tavrix
modes` prints must be the same.
"""
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).parents[1]
RAW = "the pictures as they are"


def markdown(modes):
    rows = [f"| {'' if number == '-' else number} | `{name}` | {advice} | {words} |\n"
            for number, name, words, _, advice in modes]
    return "| mode | name | choose it for | words read |\n|---|---|---|---:|\n" + "".join(rows)


def roff(modes):
    return "".join(f".br\n.BR {name} :\n{advice}; {words} words, {mean}\n".replace("-", "\\-")
                   for _, name, words, mean, advice in modes)


def measured():
    """How many words were printed, and name, words, share and precision, from the best to the worst, auto first."""
    lines = (ROOT / "bench/ocr/words_found.md").read_text(encoding="utf-8").splitlines()
    head, _, *rows = [[cell.strip() for cell in line.strip("|").split("|")] for line in lines]
    names = {"none: `auto`": "`auto`", "`--scale auto`": "`auto --scale auto`"}
    found = [(names.get(row[0], row[0].replace("-m ", "")), int(row[-3]), row[-1], row[-2]) for row in rows]
    return int(head[-3].split("/")[1]), sorted(found, key=lambda row: ("auto" not in row[0], row[0] != "`auto`", -row[1]))


def words_table(_):
    rows = [f"| {name} | {words} | {share} | {precision} |\n" for name, words, share, precision in measured()[1]]
    return "| | words | mean | precision |\n|---|---|---|---|\n" + "".join(rows)


def words_sentence(_):
    printed, rows = measured()
    words = {row[0]: row[1] for row in rows}
    best = max(found for name, found in words.items() if "auto" not in name and name != RAW)
    return (f"It chooses how to make a picture black and white by itself: on 22 photographs and scans with {printed:,} printed words an\n"
            f"OCR program reads {words['`auto`']:,} of its result, {words[RAW]:,} of the pictures as they are, and {best:,} at best of "
            "one fixed mode\n([docs/modes.md](docs/modes.md)).\n")


PLACES = [("docs/modes.md", "<!-- modes: made by update_modes.py -->\n", "<!-- end of modes -->", markdown),
          ("docs/modes.md", "<!-- words: made by update_modes.py -->\n", "<!-- end of words -->", words_table),
          ("README.md", "<!-- words: made by docs/update_modes.py -->\n", "<!-- end of words -->", words_sentence),
          ("docs/tavrix.1", ".\\\" modes: made by update_modes.py\n", ".\\\" end of modes", roff)]


def main():
    printed = subprocess.run([sys.argv[1], "modes"], capture_output=True, text=True, check=True).stdout
    modes = re.findall(r"^([-\d]) +(\S+) +(\d+) +([\d.]+ %)  (.+)$", printed, re.MULTILINE)
    total, rows = measured()
    found = {name.strip("`"): (words, mean) for name, words, mean, _ in rows}
    beside = "Of the pictures as they are {}, {}; with --scale auto {}, {}.".format(
        *found[RAW], *found["auto --scale auto"])
    outdated = [name for _, name, words, mean, _ in modes if found[name] != (int(words), mean)]
    if outdated or f" {total} printed" not in printed or beside not in printed:
        sys.exit(f"tavrix modes: other figures than bench/ocr/words_found.md has {outdated}")
    differs = []
    for name, start, end, written in PLACES:
        text = (ROOT / name).read_text(encoding="utf-8")
        before, rest = text.split(start)
        after = rest.split(end)[1]
        wanted = before + start + written(modes) + end + after
        if wanted != text:
            differs.append(name)
            if sys.argv[2:] != ["--check"]:
                (ROOT / name).write_text(wanted, encoding="utf-8")
    if sys.argv[2:] == ["--check"] and differs:
        sys.exit(f"{', '.join(differs)}: not what tavrix modes and bench/ocr/words_found.md say; run docs/update_modes.py")


main()
