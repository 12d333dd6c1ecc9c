#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""How many printed words an OCR program still reads after tavrix has made a picture black and white.

    words_found.py FOLDER [--tavrix PROGRAM] [--jobs N] [--only="OPTIONS OF tavrix binarize"]...

FOLDER holds pictures and words.tsv, with a row for each of them: file name, Tesseract's language, dots per
inch and all printed words, parted by tabs. Prints a table with a row for the pictures as they are, for every
mode and for the automatic mode in both scales, or for the given options alone. Words are compared as
multisets, in lower case and without signs at their ends; the better of Tesseract's page modes 3 and 11 counts.
Groups are what stands before the first "-" of the names.
"""
import argparse
import collections
import concurrent.futures
import os
import pathlib
import shlex
import subprocess
import tempfile
import unicodedata

ALL = ["", "--scale auto", "-m regions", "-m local", "-m otsu", "-m midrange", "-m peaks", "-m isodata", "-m lines",
       "-m sharp", "-m gradient"]


def counted(words):
    """The words of two characters or more as people would compare them."""
    result = collections.Counter()
    for word in words:
        word = unicodedata.normalize("NFC", word.lower()).replace("\u2019", "'").replace("\u017f", "s")
        kept = [i for i, c in enumerate(word) if c.isalnum()]
        if kept and kept[-1] > kept[0]:
            result[word[kept[0]:kept[-1] + 1]] += 1
    return result


def read(picture, language, dpi, page_mode):
    done = subprocess.run(["tesseract", picture, "-", "-l", language, "--dpi", str(dpi), "--psm", str(page_mode), "tsv"],
                          capture_output=True, text=True, check=True, env={**os.environ, "OMP_THREAD_LIMIT": "1"})
    rows = (line.split("\t") for line in done.stdout.splitlines()[1:])
    return counted(row[11] for row in rows if len(row) > 11 and row[0] == "5")


def scale_of(note):
    """From the line that --verbose writes."""
    return int(note.split("scale ")[1].split(":")[0].split(";")[0]) if "scale " in note else 1


def measure(entry, folder, options, tavrix):
    """Expected, found and given words of one picture."""
    name, language, dpi, text = entry
    expected = counted(text.split())
    picture, scale = folder / name, 1
    with tempfile.TemporaryDirectory() as place:
        if options is not None:
            result = pathlib.Path(place) / "out.png"
            done = subprocess.run([tavrix, "binarize", "-q", "-v", *shlex.split(options), picture, "-o", result],
                                  capture_output=True, text=True, check=True)
            picture, scale = result, scale_of(done.stderr)
        readings = [read(picture, language, int(dpi) * scale, page_mode) for page_mode in (3, 11)]
    found, given = max(((expected & words).total(), -words.total()) for words in readings)
    return name.split("-")[0], expected.total(), found, -given


def row(label, results, groups):
    cells = [f"{sum(r[2] for r in results if r[0] == group)}" for group in groups]
    found, given = sum(r[2] for r in results), sum(r[3] for r in results)
    mean = sum(r[2] / r[1] for r in results) / len(results)
    return f"| {label} | {' | '.join(cells)} | {found} | {found / max(1, given):.3f} | {100 * mean:.1f} % |"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--only", action="append", metavar="OPTIONS", help="a row for these options; may stand several times")
    parser.add_argument("--tavrix", default="tavrix")
    parser.add_argument("--jobs", type=int, default=1)
    arguments = parser.parse_args()
    lines = (arguments.folder / "words.tsv").read_text(encoding="utf-8").splitlines()
    entries = [line.split("\t") for line in lines if line.strip()]
    pictures = arguments.folder / "pictures"
    folder = pictures if pictures.is_dir() else arguments.folder
    groups = sorted({entry[0].split("-")[0] for entry in entries})
    expected = collections.Counter()
    for name, _, _, text in entries:
        expected[name.split("-")[0]] += counted(text.split()).total()
    heads = [f"{group} /{expected[group]}" for group in groups] + [f"all /{expected.total()}"]
    print(f"| options | {' | '.join(heads)} | precision | mean of pictures |\n|---|{'---|' * (len(groups) + 3)}", flush=True)
    for options in arguments.only or [None, *ALL]:
        with concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
            results = list(pool.map(lambda entry: measure(entry, folder, options, arguments.tavrix), entries))
        label = "the pictures as they are" if options is None else f"`{options}`" if options else "none: `auto`"
        print(row(label, results, groups), flush=True)


if __name__ == "__main__":
    main()
