# SPDX-License-Identifier: MIT
"""Many files: lists, folders, jobs, progress, names of outputs, resuming."""
import json
import os
import pty
import re
import subprocess
import unittest

from support import *


class FilesTest(CommandTest):
    def setUp(self):
        super().setUp()
        for i, name in enumerate(("a.pgm", "b.pgm", "sub/c.pgm", "sub/deep/d.PGM")):
            self.write("in/" + name, noise(i + 1))
        self.write("in/sub/notes.txt", b"P5 is what a gray picture starts with")

    def test_folders_keep_their_shape(self):
        self.succeed("binarize", "-r", "in", "-o", "out/", "-q", "--name", "{stem}-clean.png")
        self.assertEqual(self.names("out"), ["a-clean.png", "b-clean.png", "sub/c-clean.png", "sub/deep/d-clean.png"])
        self.fail_with(2, "both", "binarize", "-r", "in", "-o", "all.tif")
        (self.folder / "out2").mkdir()
        self.succeed("binarize", "-r", "in", "-o", "out2", "-q", "--name", "{stem}_{ext}.png")
        self.assertEqual(self.names("out2"), ["a_pgm.png", "b_pgm.png", "sub/c_pgm.png", "sub/deep/d_PGM.png"])

    def test_lists(self):
        self.write("list", b"in/a.pgm\r\n\nin/sub/c.pgm\n")
        self.succeed("binarize", "--files-from", "list", "in/b.pgm", "-o", "out/", "-q", "--format", "pbm")
        self.succeed("binarize", "--files-from", "-", "-o", "out/", "-q", "--format", "bmp", stdin=b"in/a.pgm\n")
        self.assertEqual(self.names("out"), ["a.bmp", "a.pbm", "b.pbm", "c.pbm"])

    def test_standard_input_and_output(self):
        self.succeed("binarize", "in/a.pgm", "-o", "a.pbm")
        piped = self.succeed("binarize", "-", "-o", "-", "--format", "pbm", stdin=noise(1))
        self.assertEqual(piped, self.read("a.pbm"))
        self.assertEqual(self.succeed("binarize", "-", "-o", "-", stdin=noise(1))[:4], b"II*\0")
        self.assertEqual(json.loads(self.succeed("components", "--json", "-", stdin=noise(1)))["file"], "-")

    def test_jobs_give_the_same_in_the_same_order(self):
        for i in range(24):
            self.write("many/%02d.pgm" % i, noise(i))
        one = self.succeed("components", "--json", "-r", "many", "-q")
        four = self.succeed("components", "--json", "-r", "many", "-q", "-j", "4")
        self.assertEqual(one, four)
        self.assertEqual([json.loads(line)["file"] for line in one.splitlines()],
                         ["many/%02d.pgm" % i for i in range(24)])
        self.succeed("binarize", "-r", "many", "-o", "one/", "-q")
        self.succeed("binarize", "-r", "many", "-o", "four/", "-q", "-j", "0")
        self.assertEqual([self.read("one/" + n) for n in self.names("one")],
                         [self.read("four/" + n) for n in self.names("four")])

    def test_resuming(self):
        self.succeed("binarize", "-r", "in", "-o", "out/", "-q", "--format", "png")
        self.write("out/b.png", b"mine")
        (self.folder / "out/a.png").unlink()
        result = self.run_command("binarize", "-r", "in", "-o", "out/", "--format", "png", "--skip-existing")
        self.assertEqual(result.returncode, 0)
        self.assertEqual(re.findall(r"(\w+\.\w+): (\w+)", result.stderr.decode()),
                         [("a.pgm", "done"), ("b.pgm", "skipped"), ("c.pgm", "skipped"), ("d.PGM", "skipped")])
        self.assertEqual(self.read("out/b.png"), b"mine")
        self.assertEqual((self.open("out/a.png").size, self.open("out/a.png").mode), ((60, 40), "1"))

        self.write("two.pgm", noise(1) + noise(2))
        self.write("two-1.png", b"mine")
        self.succeed("binarize", "two.pgm", "-o", "two-{page}.png", "--skip-existing")
        self.assertEqual(self.read("two-1.png"), b"mine")
        self.assertEqual(self.open("two-2.png").size, (60, 40))

        self.succeed("compare", "two.pgm", "-o", "sheet.html")
        self.write("sheet.html", b"mine")
        self.succeed("compare", "two.pgm", "-o", "sheet.html", "--skip-existing")
        self.assertEqual(self.read("sheet.html"), b"mine")
        self.succeed("compare", "two.pgm", "-o", "sheet.html")
        self.assertIn(b"<html", self.read("sheet.html"))

    def test_progress(self):
        piped = self.run_command("binarize", "-r", "in", "-o", "out/")
        self.assertEqual(piped.stderr.decode().splitlines(),
                         ["%d/4 in/%s: done" % item for item in
                          enumerate(("a.pgm", "b.pgm", "sub/c.pgm", "sub/deep/d.PGM"), 1)]
                         + ["tavrix: 4 done, 1 skipped (not a picture), 0 failed"])
        master, terminal = pty.openpty()
        subprocess.run([COMMAND, "binarize", "-r", "in", "in/none.pgm", "-o", "out/"], cwd=self.folder, stderr=terminal)
        os.close(terminal)
        with open(master, "rb", buffering=0) as screen:
            shown = b"".join(iter(lambda: self.read_screen(screen), b"")).decode()
        self.assertRegex(shown, r"\[#+ +\] 1/5  [\d.]+/s  \d+:\d\d left")
        self.assertIn("\r\x1b[Ktavrix: in/none.pgm: No such file", shown)
        self.assertTrue(shown.endswith("\r\x1b[K"), "the bar goes away")

    def read_screen(self, screen):
        try:
            return screen.read(1 << 16)
        except OSError:  # the other end is closed
            return b""

    def test_outputs_replace_whole_files_and_follow_links(self):
        self.write("old.pbm", b"old")
        os.symlink("old.pbm", self.folder / "link.pbm")
        self.succeed("binarize", "in/a.pgm", "-o", "link.pbm")
        self.assertTrue((self.folder / "link.pbm").is_symlink())
        self.assertTrue(self.read("old.pbm").startswith(b"P4"))
        self.assertEqual((self.folder / "old.pbm").stat().st_mode & 0o777, 0o666 & ~self.umask())

    def umask(self):
        mask = os.umask(0)
        os.umask(mask)
        return mask


if __name__ == "__main__":
    main()
