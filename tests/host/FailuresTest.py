# SPDX-License-Identifier: MIT
"""Bad inputs and outputs: each gets its line and its exit code, and nothing is lost or half-written."""
import os
import pathlib
import shutil
import struct
import subprocess
import unittest

from support import *

GRAY = noise()
JPEG = (SAMPLES / "card-colour.jpg").read_bytes()
PNG = (SAMPLES / "card-gray.png").read_bytes()
SMALL = Image.new("L", (8, 8))
SMALL_PNG = encoded(SMALL, "PNG")
SIDE = 40000


class InputTest(CommandTest):
    def test_unreadable_inputs(self):
        good_tiff = encoded(SMALL, "TIFF")
        two_pages = encoded(SMALL, "TIFF", save_all=True, append_images=[SMALL])
        small_bmp = encoded(Image.new("RGB", (4, 4)), "BMP")
        cases = {
            "empty.png": (b"", "is empty"),
            "text.png": (b"no picture at all", "not a picture of a kind"),
            "truncated.png": (PNG[:len(PNG) // 2], "PNG: .*(short|end)"),
            "head.png": (PNG[:20], "PNG"),
            "flipped.png": (SMALL_PNG[:45] + b"\xff\xff\xff" + SMALL_PNG[48:], "PNG"),
            "truncated.jpg": (JPEG[:len(JPEG) // 2], "damaged or cut short"),
            "head.jpg": (JPEG[:30], "JPEG"),
            "damaged.jpg": (JPEG[:60000] + b"\xff\xd9" + JPEG[60002:], "damaged or cut short"),
            "truncated.tif": (good_tiff[:60], "TIFF"),
            "head.tif": (good_tiff[:6], "TIFF"),
            "lying.tif": (retag(good_tiff, 257, 900), "TIFF"),
            "second-page.tif": (retag(two_pages, 257, 900, page=1), "TIFF"),
            "truncated.bmp": (small_bmp[:-5], "BMP: the file is cut short"),
            "head.bmp": (small_bmp[:20], "BMP: the file is cut short"),
            "jpeg-in.bmp": (bmp(4, 4, 24, [bytes(12)] * 4, compression=4), "BMP: .*not supported"),
            "run.bmp": (bmp(300, 300, 8, b"\xff\1\0", [(0, 0, 0)], 1), "BMP: the file is cut short"),
            "truncated.pgm": (GRAY[:-1], "PNM: the file is cut short"),
            "head.pgm": (b"P5 4", "PNM: the file is cut short"),
            "lying.pgm": (b"P5 16000 16000 255\n" + bytes(99), "PNM: the file is cut short"),
            "words.ppm": (b"P6 4 four 255\n", "PNM: the file is damaged"),
            "large.png": (png(SIDE, 1, 1, 0, [bytes(SIDE // 8)]), "40000 x 1 pixels: sides must be"),
            "large.bmp": (bmp(1, SIDE, 1, [bytes(4 * SIDE)], [(0,) * 3, (1,) * 3]), "1 x 40000 pixels"),
            "large.tif": (retag(good_tiff, 256, SIDE), "40000 x 8 pixels"),
            "large.pbm": (b"P4 1 40000\n" + bytes(SIDE), "1 x 40000 pixels"),
            "large.jpg": (JPEG.replace(struct.pack(">HHB", 760, 1150, 3), struct.pack(">HHB", SIDE, 1150, 3)),
                          "1150 x 40000 pixels"),
            "empty-side.pgm": (b"P5 0 5 255\n", "0 x 5 pixels"),
        }
        for name, (content, reason) in cases.items():
            with self.subTest(name):
                self.write(name, content)
                self.fail_with(3 if name != "second-page.tif" else 1, "tavrix: " + name + ": .*" + reason,
                               "binarize", name, "-o", "out.tif")
                self.assertNotIn("out.tif", self.names())

    def test_names_that_are_no_files(self):
        (self.folder / "folder").mkdir()
        self.fail_with(3, "missing.png: No such file", "binarize", "missing.png", "-o", "out.tif")
        self.fail_with(3, r"folder: is a folder \(-r", "binarize", "folder", "-o", "out.tif")
        self.fail_with(3, "folder: no pictures", "binarize", "-r", "folder", "-o", "out.tif")
        self.fail_with(3, "list.txt: No such file", "binarize", "--files-from", "list.txt", "-o", "out.tif")
        if os.getuid() != 0:
            self.write("secret.pgm", GRAY).chmod(0)
            self.fail_with(3, "secret.pgm: Permission denied", "binarize", "secret.pgm", "-o", "out.tif")

    def test_one_bad_file_does_not_stop_the_rest(self):
        self.write("a.pgm", GRAY)
        self.write("b.pgm", GRAY[:-1])
        self.write("c.pgm", GRAY)
        self.fail_with(1, "b.pgm: PNM", "binarize", "a.pgm", "b.pgm", "c.pgm", "-o", "out/", "-q")
        self.assertEqual(self.names("out"), ["a.tif", "c.tif"])

    def test_unusual_names(self):
        for name in ("with space.pgm", "K\u00e4rtchen \u540d\u7247.pgm", "-dash.pgm", "quote'\".pgm"):
            with self.subTest(name):
                self.write(name, GRAY)
                self.succeed("binarize", "-o", "out/", "--", name)
                self.assertIn(name.replace(".pgm", ".tif"), self.names("out"))
        latin1 = os.fsencode(self.folder) + b"/caf\xe9.pgm"
        with open(latin1, "wb") as file:
            file.write(GRAY)
        result = subprocess.run([COMMAND, "components", "--json", latin1], capture_output=True)
        self.assertEqual(result.returncode, 0)
        result.stdout.decode("utf-8")


class OutputTest(CommandTest):
    def setUp(self):
        super().setUp()
        self.write("in.pgm", GRAY)

    def test_full_disk_and_unwritable_places(self):
        self.write("file", b"")
        (self.folder / "folder.tif").mkdir()
        self.fail_with(4, "in.pgm: .*No space left", "binarize", "in.pgm", "-o", "/dev/full")
        self.fail_with(4, "in.pgm: cannot write /proc/new", "binarize", "in.pgm", "-o", "/proc/new/")
        with open("/dev/full", "wb") as full:
            self.fail_with(4, "standard output: No space left", "components", "in.pgm", stdout=full)
            self.fail_with(4, "standard output: No space left", "binarize", "in.pgm", "-o", "-", stdout=full)
            self.fail_with(4, "standard output", "modes", stdout=full)
        self.assertEqual(self.names(), ["file", "in.pgm"])

    def test_closed_pipe(self):
        reader, writer = os.pipe()
        os.close(reader)
        try:
            for arguments in (["binarize", "in.pgm", "-o", "-"], ["components", "--json", "in.pgm"]):
                self.fail_with(4, "standard output: Broken pipe", *arguments, stdout=writer)
        finally:
            os.close(writer)

    def test_inputs_are_never_overwritten(self):
        os.symlink("in.pgm", self.folder / "link.pgm")
        (self.folder / "sub").mkdir()
        for place in ("in.pgm", "./in.pgm", "sub/../in.pgm", "link.pgm"):
            with self.subTest(place):
                self.fail_with(2, "is an input as well", "rotate", "-a", "90", "in.pgm", "-o", place)
        self.fail_with(2, "is an input as well", "rotate", "-a", "90", "in.pgm", "-o", ".", "--name", "{stem}.{ext}")
        self.write("pair-2.pgm", GRAY)
        self.write("pair.pgm", GRAY + GRAY)
        self.fail_with(4, "pair-2.pgm: it is an input", "rotate", "-a", "90", "pair-2.pgm", "pair.pgm", "-q",
                       "-o", "{stem}-{page}.pgm")
        self.assertEqual(self.read("in.pgm"), GRAY)
        self.assertEqual(self.read("pair-2.pgm"), GRAY)

    def test_duplicate_output_names(self):
        self.write("sub/in.png", SMALL_PNG)
        self.fail_with(2, "for both in.pgm and sub/in.png", "binarize", "in.pgm", "sub/in.png", "-o", "out/")
        self.fail_with(2, "for both", "binarize", "in.pgm", "sub/in.png", "-o", "out.tif")
        self.fail_with(2, "standard output takes one", "binarize", "in.pgm", "sub/in.png", "-o", "-")
        self.fail_with(4, "written in this run", "card", "in.pgm", "-o", "x.png", "--overlay", "./x.png")

    def test_usage(self):
        for arguments, reason in (
                ([], "subcommand is required"), (["binarise"], "no command binarise: did you mean binarize"), (["wash"], "no command wash .tavrix --help"), (["binarize"], "-o is required"),
                (["binarize", "-o", "x.tif"], "no inputs"), (["binarize", "in.pgm", "-o", "x.tif", "-m", "7"], "no mode 7"),
                (["binarize", "in.pgm", "-o", "x.tif", "-m", "sharp", "--blocks"], "--blocks"),
                (["binarize", "in.pgm", "-o", "o/", "--name", "{date}.png"], "may contain"),
                (["binarize", "in.pgm", "-o", "o/", "--format", "gif"], "must be png"),
                (["binarize", "in.pgm", "-o", "x.tif", "-j", "-1"], "jobs"), (["rotate", "in.pgm", "-o", "x.png"], "angle"),
                (["rotate", "in.pgm", "-o", "x.png", "-a", "nan"], "number of degrees"),
                (["binarize", "in.pgm", "-o", "x.jpg"], "-o x.jpg: .* does not hold 1-bit pictures: take png"),
                (["binarize", "in.pgm", "-o", "-", "--format", "pgm"], "does not hold 1-bit"),
                (["morph", "--op", "edge", "in.pgm", "-o", "o/", "--name", "{stem}.ppm"], "does not hold 1-bit"),
                (["morph", "--op", "smooth", "in.pgm", "-o", "x.pbm"], "does not hold gray"),
                (["logo", "in.pgm", "--overlay", "x.pgm"], "--overlay x.pgm: .* does not hold colour"),
                (["pad", "in.pgm", "-o", "x.html"], "only tavrix compare writes HTML"),
                (["compare", "in.pgm", "-o", "x.png"], "name it .html"),
                (["pad", "in.pgm", "-o", "new/x.png"], "there is no folder new: make it"),
                (["pad", "in.pgm", "-o", "in.pgm/new/"], "in.pgm is not a folder"),
                (["turn", "in.pgm", "-o", "x.png", "-b", "9,0,3,4"], "left must not exceed"),
                (["morph", "in.pgm", "-o", "x.png", "--op", "melt"], "no operation melt"),
                (["logo", "in.pgm", "--overlay", "-"], "standard output"),
                (["compare", "in.pgm", "-o", "x{page}.html"], "page")):
            with self.subTest(arguments):
                self.fail_with(2, reason, *arguments)
        self.assertEqual(self.names(), ["in.pgm"])
        self.assertRegex(self.succeed("--version"), rb"^tavrix \d+\.\d+\.\d+\nreads PNG, .*\n$")
        self.assertIn(b"Exit codes", self.succeed("--help"))


if __name__ == "__main__":
    main()
