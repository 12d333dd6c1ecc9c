# SPDX-License-Identifier: MIT
"""What the examples do with one file: a clean TIFF and its findings as JSON, or the reason why not."""

import json
import os
import warnings

import tavrix

SUFFIXES = (".bmp", ".jpeg", ".jpg", ".png", ".ppm", ".tif", ".tiff", ".webp")


def pictures_in(folder):
    return sorted(os.path.join(folder, name) for name in os.listdir(folder) if name.lower().endswith(SUFFIXES))


def clean(path, folder):
    """Writes NAME.tif and NAME.json into the folder. Returns the path and None, or the reason of the failure."""
    target = os.path.join(folder, os.path.basename(path))
    try:
        with warnings.catch_warnings(record=True) as caught:
            warnings.simplefilter("always", tavrix.LostTextWarning)
            card = tavrix.card(tavrix.read(path))
        found = {"lines": [line.box._asdict() for line in card.lines],
                 "trueLine": card.true_line and card.true_line._asdict(), "logo": card.logo and card.logo._asdict(),
                 "warnings": [str(warning.message) for warning in caught]}
        tavrix.to_image(card.black_and_white).save(target + ".part", "TIFF", compression="group4")
        os.replace(target + ".part", target + ".tif")  # a file is there whole or not at all
        with open(target + ".part", "w") as file:
            json.dump(found, file)
        os.replace(target + ".part", target + ".json")
    except Exception as error:  # one bad picture must not end the others
        return path, f"{type(error).__name__}: {error}"
    return path, None


def report(results):
    """Prints what failed, and returns an exit code."""
    reasons = [f"{path}: {reason}" for path, reason in results if reason]
    print(*reasons, f"{len(reasons)} failed", sep="\n")
    return 1 if reasons else 0
