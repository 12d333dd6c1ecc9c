# SPDX-License-Identifier: MIT
"""PDF files, read back by poppler's programs."""
import io
import re
import subprocess
import unittest

from support import *

CARD = SAMPLES / "card-colour.jpg"


class PdfTest(CommandTest):
    def facts(self, name):
        """Of every page: its size in points, its picture's kind of packing and size in pixels."""
        info = subprocess.run(["pdfinfo", "-l", "-1", self.folder / name], capture_output=True, text=True, check=True)
        sizes = re.findall(r"size:\s*([\d.]+) x ([\d.]+) pts", info.stdout)
        rows = subprocess.run(["pdfimages", "-list", self.folder / name], capture_output=True, text=True, check=True)
        images = [row.split() for row in rows.stdout.splitlines()[2:]]
        return [(round(float(w), 2), round(float(h), 2), row[8], int(row[3]), int(row[4]))
                for (w, h), row in zip(sizes, images, strict=True)]

    def pages(self, name):
        subprocess.run(["pdfimages", "-png", self.folder / name, self.folder / "page"], check=True)
        return [self.open(page).convert("L") for page in self.names() if re.match(r"page-\d+\.png", page)]

    def test_several_inputs_are_pages_in_their_order(self):
        names = []
        for i, width in enumerate((9, 640, 33, 8, 100, 41)):  # also widths that end within a byte
            names.append("in-%d.pbm" % i)
            self.write(names[-1], pbm([[(x * x + i * y * y) % 7 // 3 & 1 for x in range(width)] for y in range(50 + i)]))
        stack = io.BytesIO()
        Image.new("L", (120, 60), 255).save(stack, "TIFF", save_all=True, append_images=[Image.new("L", (60, 120), 255)])
        self.write("two.tif", stack.getvalue())
        self.succeed("binarize", *names, "two.tif", "-m", "otsu", "-o", "all.pdf", "-j", "4", "-q")
        found = self.pages("all.pdf")
        self.assertEqual([page.size for page in found[len(names):]], [(120, 60), (60, 120)])
        for name, page in zip(names, found):
            self.assertEqual(page.tobytes(), self.open(name).convert("L").tobytes(), name)
        self.assertEqual({row[2] for row in self.facts("all.pdf")}, {"ccitt"})
        once = self.read("all.pdf")
        self.succeed("binarize", *names, "two.tif", "-m", "otsu", "-o", "all.pdf", "-q")
        self.assertEqual(self.read("all.pdf"), once, "the same with one thread")

    def test_size_on_paper(self):
        self.succeed("card", CARD, CARD, "-o", "card.pdf", "-q")  # 1150 x 760 at 300 dots per inch
        self.assertEqual(self.facts("card.pdf"), [(276, 182.4, "ccitt", 1150, 760)] * 2)
        self.succeed("rotate", "-a", "90", CARD, "-o", "turned.pdf")
        self.assertEqual(self.facts("turned.pdf"), [(182.4, 276, "jpeg", 760, 1150)])
        self.write("long.pgm", pgm([[0, 255] * 16000]))
        self.write("small.png", encoded(Image.new("1", (200, 100)), "PNG", dpi=(72, 36)))
        for name, size in (("long.pgm", (7680, 3)), ("small.png", (200, 200))):
            self.succeed("binarize", name, "-m", "otsu", "-o", "out.pdf")
            self.assertEqual(tuple(map(round, self.facts("out.pdf")[0][:2])), size)

    def test_failures(self):
        self.write("good.pgm", noise(1))
        self.write("in.pdf", noise(2))  # the content decides
        self.write("bad.pgm", b"P5\n9 9\n255\n")
        self.fail_with(1, r"bad\.pgm(.|\n)*all\.pdf: 1 of 3 inputs", "binarize", "good.pgm", "bad.pgm", "good.pgm", "-o", "all.pdf", "-j", "3")
        self.assertEqual(len(self.facts("all.pdf")), 2)
        self.fail_with(3, "bad", "binarize", "bad.pgm", "bad.pgm", "-o", "none.pdf")
        self.fail_with(2, "input as well", "binarize", "good.pgm", "in.pdf", "-o", "in.pdf")
        self.fail_with(2, "--skip-existing", "binarize", "good.pgm", "bad.pgm", "-o", "all.pdf", "--skip-existing")
        self.fail_with(4, "cannot write", "binarize", "good.pgm", "good.pgm", "-o", "/proc/all.pdf")
        self.assertEqual(self.names(), ["all.pdf", "bad.pgm", "good.pgm", "in.pdf"])


if __name__ == "__main__":
    main()
