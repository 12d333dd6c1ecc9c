# SPDX-License-Identifier: MIT
"""pool.py FOLDER RESULTS: cleans every picture of a folder on all cores of this machine."""

import concurrent.futures
import os
import sys

import cards


def main(folder, results):
    os.makedirs(results, exist_ok=True)
    paths = cards.pictures_in(folder)
    with concurrent.futures.ProcessPoolExecutor() as pool:
        return cards.report(pool.map(cards.clean, paths, [results] * len(paths), chunksize=4))


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
