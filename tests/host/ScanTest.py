# SPDX-License-Identifier: MIT
"""Cleaner pictures: what is small goes, and nothing else."""
import unittest

from PIL import ImageDraw
from support import *


class DespeckleTest(CommandTest):
    def test_only_what_is_small_goes(self):
        drawn, kept = Image.new("1", (900, 700), 1), Image.new("1", (900, 700), 1)
        def draw(boxes, *pictures):  # right and bottom inclusive
            for picture in pictures:
                for box in boxes:
                    ImageDraw.Draw(picture).rectangle(box, fill=0)
        draw([(50, 60, 52, 63), (60, 60, 60, 60), (120, 100, 123, 102)], drawn, kept)  # each beyond a limit, or
        draw([(20, 20, 21, 22), (300, 500, 301, 500), (0, 0, 1, 1), (898, 699, 899, 699)], drawn)  # within both
        draw([(60, 61, 60, 64)], drawn, kept)  # grows out of the dot above it
        draw([(500, 10, 899, 12)], drawn)  # a rule
        for corner in (300, 100, 700, 101), (300, 100, 301, 480), (300, 479, 700, 480), (699, 100, 700, 480):
            draw([corner], drawn)  # a frame
        draw([(400, 200, 430, 240)], drawn, kept)  # a letter in it
        drawn.save(self.folder / "drawn.png")
        self.succeed("binarize", "drawn.png", "--despeckle", "2,3", "-o", "clean.png")
        self.assertEqual(self.open("clean.png").tobytes(), kept.tobytes())
        self.assertEqual(self.succeed("components", "drawn.png", "--noise", "2,3"), self.succeed("components", "clean.png").replace(b"clean", b"drawn"))

    def test_more_specks_than_the_store_holds(self):
        drawn = Image.new("1", (2400, 2400), 1)
        for y in range(0, 2400, 8):
            drawn.paste(0, (0, y, 2400, y + 1))
        for x in range(0, 2400, 8):
            drawn.paste(1, (x + 1, 0, x + 8, 2400))
        drawn.paste(0, (1000, 1200, 1300, 1230))
        drawn.save(self.folder / "specks.png")
        self.succeed("binarize", "specks.png", "--despeckle", "1,1", "-o", "clean.png")
        self.assertEqual(self.open("clean.png").convert("L").histogram()[0], self.black_of_block(drawn))

    def black_of_block(self, drawn):
        """Of the block and the specks that touch it, which are one component."""
        around = drawn.crop((999, 1199, 1301, 1231))
        return around.convert("L").histogram()[0]


if __name__ == "__main__":
    main()
