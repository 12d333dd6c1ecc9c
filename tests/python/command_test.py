# SPDX-License-Identifier: MIT
"""What the module gives is what the command gives."""

import json
import os
import pathlib
import subprocess
import tempfile
import unittest

import tavrix

SAMPLE = str(pathlib.Path(__file__).resolve().parents[2] / "samples/card-colour.jpg")
COMMAND = os.environ["TAVRIX_COMMAND"]


def run(*arguments):
    return subprocess.run([COMMAND, *arguments], check=True, stdout=subprocess.PIPE).stdout


def box_of(found):
    return found and dict(zip(("left", "top", "right", "bottom"), found))


def line_of(line):
    heights = {"characterHeight": line.height} if line.height else {}
    components = [{"box": box_of(c), **({"pixels": c.pixels} if c.pixels else {})} for c in line.components]
    return {"box": box_of(line), **heights, "components": components}


def blocks_of(blocks):
    return [{"box": box_of(block), "lines": [line_of(line) for line in block.lines]} for block in blocks]


def card_of(card):
    return {"blocks": blocks_of(card.blocks), "lines": [line_of(line) for line in card.lines],
            "trueLine": box_of(card.true_line), "logo": box_of(card.logo)}


class CommandTest(unittest.TestCase):
    def setUp(self):
        self.picture = tavrix.read(SAMPLE)

    def test_pictures(self):
        modes = [(f"binarize -m {mode}", tavrix.binarize, mode) for mode in ("auto", *tavrix.MODES)]
        blocks = [(f"binarize --blocks -m {mode}", lambda p, m: tavrix.binarize(p, m, by_blocks=True), mode)
                  for mode in ("local", 5, "lines")]
        turns = [(f"turn -m 6 -b 100,50,700,900 --code {code}",
                  lambda p, c: tavrix.turn(p, c, (100, 50, 700, 900), 6), code) for code in tavrix.TURNS]
        angles = [(f"rotate -a {angle}", tavrix.rotate, angle) for angle in (0, 90, -90, 540, 2.5, -100.25)]
        filters = [(f"morph -m 6 --op {operation}", lambda p, o: tavrix.morph(p, o, 6), operation)
                   for operation in tavrix.OPERATIONS]
        others = [("pad -m regions", tavrix.pad, "regions"),
                  ("binarize --scale 2", lambda p, s: tavrix.binarize(p, scale=s), 2),
                  ("binarize --scale auto", lambda p, s: tavrix.binarize(p, scale=s), 0)]
        with tempfile.TemporaryDirectory() as folder:
            for words, function, argument in modes + blocks + turns + angles + filters + others:
                with self.subTest(words):
                    path = os.path.join(folder, "result.png")
                    run(*words.split(), SAMPLE, "-o", path)
                    expected, got = tavrix.read(path), function(self.picture, argument)
                    self.assertEqual((got.dtype, got.shape), (expected.dtype, expected.shape))
                    self.assertTrue((got == expected).all())

    def test_findings(self):
        cases = [(f"card -m {mode}", lambda p, mode=mode: card_of(tavrix.card(p, mode)))
                 for mode in ("auto", *tavrix.MODES)]
        cases += [
            ("card -m 5 --join-pieces --split-wide",
             lambda p: card_of(tavrix.card(p, 5, join_pieces=True, split_wide=True))),
            ("lines -m 6 --from-left", lambda p: {"lines": [line_of(l) for l in tavrix.lines(p, 6, from_left=True)]}),
            ("trueline -m lines", lambda p: {"trueLine": box_of(tavrix.true_line(p, "lines"))}),
            ("logo", lambda p: {"logo": box_of(tavrix.logo(p))}),
            ("components -m 6 --grow 3,1 --noise 4,4 --line-noise --group aligned",
             lambda p: {"blocks": blocks_of(
                 tavrix.blocks(p, 6, group="aligned", grow=(3, 1), noise=(4, 4), line_noise=True))}),
        ]
        for words, function in cases:
            with self.subTest(words):
                expected = json.loads(run(*words.split(), "--json", SAMPLE))
                got = function(self.picture)
                self.assertEqual(got, {key: expected[key] for key in got})


if __name__ == "__main__":
    unittest.main()
