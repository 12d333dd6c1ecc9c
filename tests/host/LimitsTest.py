# SPDX-License-Identifier: MIT
"""Small files that ask for much: refused at once, or read in little more than their pixels take."""
import os
import subprocess
import unittest

from support import *

SIDE = 17000  # a page just below the limit
PAGE_MEGABYTES = SIDE * SIDE >> 20
SLACK = 150 if os.environ.get("TAVRIX_SANITIZED") == "ON" else 30  # megabytes; sanitizers take some, too
SCANS = encoded(Image.new("L", (64, 64)), "JPEG", progressive=True)
LAST_SCAN = SCANS[SCANS.rindex(b"\xff\xda"):-2]
FRAME = SCANS.index(b"\xff\xc2") + 5  # height and width
GRAYS = [(i,) * 3 for i in range(256)]


def bare_tiff(width, height, bits, **tags):
    """A page of one LZW strip of four bytes."""
    tags = {256: width, 257: height, 258: bits, 259: 5, 262: 1, 273: 8, 277: 1, 278: height, 279: 4,
            **{int(name[1:]): value for name, value in tags.items()}}
    entries = b"".join(struct.pack("<HHII", number, 4, 1, value) for number, value in sorted(tags.items()))
    return b"II*\0" + struct.pack("<IH", 8, len(tags)) + entries + bytes(4)


class LimitsTest(CommandTest):
    def test_much_from_little(self):
        cases = {  # name: content, reason, most megabytes beyond what the command takes itself
            "30000.tif": (bare_tiff(30000, 30000, 16), "30000 x 30000 pixels are more than 300000000 .--max-pixels", 1),
            "30000.bmp": (bmp(30000, 30000, 8, b"\0\1" * 500, GRAYS, 1), "more than 300000000", 1),
            "30000.png": (png(30000, 30000, 1, 0, [b"\0"]), "more than 300000000", 1),
            "30000.jpg": (SCANS[:FRAME] + struct.pack(">HH", 30000, 30000) + SCANS[FRAME + 4:], "more than 300000000", 1),
            "30000.pgm": (b"P5 30000 30000 255\n", "more than 300000000", 1),
            "strip.tif": (bare_tiff(SIDE, SIDE, 16), "TIFF: ", 1),
            "tile.tif": (bare_tiff(99, 99, 8, t322=32768, t323=32768, t324=8, t325=4), "a damaged tile size", 1),
            "runs.bmp": (bmp(SIDE, SIDE, 8, b"\0", GRAYS, 1), "BMP: the file is cut short", PAGE_MEGABYTES),
            "short.png": (png(SIDE, SIDE, 8, 0, [b"\0"]), "PNG: the file is cut short", 1),
            "short.ppm": (b"P6 %d %d 255\n" % (SIDE, SIDE), "PNM: the file is cut short", 1),
            "damaged.jpg": (SCANS[:FRAME] + struct.pack(">HH", SIDE, SIDE) + SCANS[FRAME + 4:], "damaged or cut short", 20),
            "scans.jpg": (SCANS[:-2] + LAST_SCAN * 501 + b"\xff\xd9", "more than 500 scans", 1),
        }
        _, own = self.run_measured("none.tif")
        for name, (content, reason, most) in cases.items():
            with self.subTest(name):
                self.write(name, content)
                said, megabytes = self.run_measured(name)
                self.assertRegex(said, name + ": .*" + reason)
                self.assertLess(megabytes - own, most + SLACK)

    def run_measured(self, name):
        """Standard error, and the most memory it ever had, in megabytes."""
        with open(self.folder / "log", "wb+") as log:
            process = subprocess.Popen([COMMAND, "binarize", name, "-o", "out.tif"], cwd=self.folder, stderr=log)
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
            self.assertEqual(process.returncode, 3)
            log.seek(0)
            return log.read().decode(), usage.ru_maxrss >> 10

    def test_max_pixels_is_the_users_choice(self):
        self.write("in.pgm", noise())
        self.fail_with(3, "60 x 40 pixels are more than 2399", "binarize", "in.pgm", "-o", "out.tif", "--max-pixels", 2399)
        self.succeed("binarize", "in.pgm", "-o", "out.tif", "--max-pixels", 2400)
        many = SCANS[:-2] + LAST_SCAN * 400 + b"\xff\xd9"
        self.write("many.jpg", many)
        self.succeed("rotate", "-a", 0, "many.jpg", "-o", "out.tif")


if __name__ == "__main__":
    main()
