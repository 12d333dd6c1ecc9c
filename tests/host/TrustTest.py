# SPDX-License-Identifier: MIT
"""What ten thousand files need: nothing lost, nothing damaged, nothing left behind, and a run that can go on."""
import json
import os
import stat
import subprocess
import unittest

from support import *

DOTS = encoded(image([[int(x % 2 == 0 or y % 2 == 0) for x in range(700)] for y in range(520)], "1"))  # 350 x 260 components


class NamesTest(CommandTest):
    def setUp(self):
        super().setUp()
        for i, name in enumerate(("a/card.pgm", "b/card.pgm", "b/more/card.pgm")):
            self.write("in/" + name, noise(i + 1))

    def test_equal_names_in_several_folders(self):
        names = ["in/" + name for name in self.names("in")]
        self.fail_with(2, "for both in/a/card.pgm and in/b/card.pgm: --keep-tree", "binarize", *names, "-o", "out/")
        kept = ["a/card.tif", "b/card.tif", "b/more/card.tif"]
        for name in names:  # a process each, as the recipes for several machines do
            self.succeed("binarize", "--skip-existing", "--keep-tree", "in", "-o", "tree/", name)
            self.succeed("binarize", name, "-o", "dir/", "--name", "{dir}/{stem}.tif")
        self.assertEqual((self.names("tree"), self.names("dir/in")), (kept, kept))
        self.succeed("binarize", names[0], "-o", "flat/")
        self.fail_with(4, "flat/card.tif was made from .*in/a/card.pgm: --keep-tree", "binarize", "--skip-existing", names[1], "-o", "flat/")
        self.fail_with(2, "in/a/card.pgm is not in this folder", "binarize", names[0], "--keep-tree", "in/b", "-o", "out/")
        self.write("in/a/card.pbm", noise())
        self.fail_with(2, "--name '{stem}-{ext}.tif'", "binarize", "-r", "in", "-o", "out/")

    def test_resuming_takes_only_what_is_newer(self):
        self.succeed("binarize", "-r", "in", "-o", "out/", "-q")
        os.utime(self.folder / "in/b/card.pgm")
        result = self.run_command("binarize", "-r", "in", "-o", "out/", "--skip-existing")
        self.assertIn(b"tavrix: 1 done, 2 skipped (done before), 0 skipped (not a picture), 0 failed\n", result.stderr)

    def test_lists_with_null(self):
        listed = b"in/a/card.pgm\0in/b/new\nline.pgm\0"
        self.write("in/b/new\nline.pgm", noise())
        self.succeed("binarize", "--files-from", "-", "-0", "-q", "-o", "out/", stdin=listed)
        self.assertEqual(self.names("out"), ["card.tif", "new\nline.tif"])
        self.fail_with(2, "end with NUL characters: add -0", "binarize", "--files-from", "-", "-o", "out/", stdin=listed)

    def test_content_decides_what_a_folder_holds(self):
        self.write("in/scan", noise())
        self.write("in/notes.txt", b"Buy milk")
        self.write("in/damaged.jpg", b"Buy eggs")
        (self.folder / "in/locked").mkdir()
        (self.folder / "in/locked").chmod(0)
        self.folder.chmod(0o755)
        (self.folder / "out").mkdir()
        (self.folder / "out").chmod(0o777)
        result = self.fail_with(1, "in/damaged.jpg: is not a picture", "binarize", "-r", "in", "", "-o", "out/", "-j", "2",
                                **({"user": 65534} if os.getuid() == 0 else {}))
        self.assertIn(b"tavrix: in/locked: Permission denied\n", result.stderr)
        self.assertIn(b"the name is empty\n", result.stderr)
        self.assertTrue(result.stderr.endswith(b"tavrix: 4 done, 1 skipped (not a picture), 3 failed\n"), result.stderr)
        self.assertEqual(self.names("out"), ["a/card.tif", "b/card.tif", "b/more/card.tif", "scan.tif"])

    def test_outputs_beside_the_inputs_are_no_inputs(self):
        for i in range(2):
            self.succeed("binarize", "-r", "in", "-o", "in/", "-q", "--name", "{stem}-{page}.tif")
            self.succeed("card", "-r", "in", "-o", "in/", "--overlay", "in/", "--json-out", "in/", "-q")
        self.assertEqual(self.names("in/a"), ["card-1.tif", "card-overlay-1.jpg", "card.json", "card.pgm", "card.tif"])
        (self.folder / "in").rename(self.folder / "moved")
        closing = self.run_command("binarize", "-r", "moved", "-o", "moved/").stderr.splitlines()[-1]
        self.assertEqual(closing, b"tavrix: 3 done, 9 skipped (made by an earlier run), 3 skipped (not a picture), 0 failed")

    def test_names_cannot_do_harm(self):
        self.write("...pgm", noise())
        self.succeed("binarize", "...pgm", "-o", "out/", "--name", "{stem}/{page}.pbm")
        self.assertEqual(self.names("out"), ["__/1.pbm"])
        name = "x\n\x1b[31m\x7f\u009b\u00e4.pgm"
        self.write(name, b"P5 1 1 255\n")
        for arguments in ((name, name, "-o", "out/"), (name, "in/a/card.pgm", "-o", "out/"), (name, "-o", "-")):
            said = self.run_command("binarize", *arguments).stderr.decode()
            self.assertIn("x\\n\\x1b[31m\\x7f\\xc2\\x9b\u00e4.pgm", said)
            self.assertNotRegex(said.replace("\n", ""), "[\0-\x1f\x7f-\x9f]")
        self.write(name, noise())
        for options in (["--json"], []):
            shown = self.succeed("logo", *options, name).decode()
            self.assertNotRegex(shown[:-1], "[\0-\x1f\x7f-\x9f]")
        self.assertEqual(json.loads(self.succeed("logo", "--json", name))["file"], name)


class OutputsTest(CommandTest):
    def test_closed_streams(self):
        large = encoded(Image.new("RGB", (2000, 2000)))
        for i in range(60):  # while a large file is written, others report
            self.write("in/%02d.pgm" % i, large if i % 10 == 0 else noise(i))
        self.succeed("rotate", "-a", "0", "-r", "in", "-o", "good/", "-q", "--format", "bmp")
        for closed in ("<&-", ">&-", "2>&-", "<&- >&- 2>&-"):
            with self.subTest(closed):
                line = '"$0" rotate -a 0 -r in -j 4 -o out/ --format bmp ' + closed
                subprocess.run(["bash", "-c", line, COMMAND], cwd=self.folder, stderr=subprocess.DEVNULL, check=True)
                damaged = [name for name in self.names("good") if self.read("out/" + name) != self.read("good/" + name)]
                self.assertEqual(damaged, [])
        line = '"$0" components --json in/00.pgm >&-'
        self.assertEqual(subprocess.run(["bash", "-c", line, COMMAND], cwd=self.folder, stderr=subprocess.DEVNULL).returncode, 4)

    def test_modes_are_kept(self):
        self.write("in.pgm", noise())
        self.write("out.tif", b"").chmod(0o600)
        self.succeed("binarize", "in.pgm", "-o", "out.tif")
        self.assertEqual(stat.S_IMODE((self.folder / "out.tif").stat().st_mode), 0o600)
        self.write("old.tif", b"mine").chmod(0o444)
        self.fail_with(4, "old.tif: it is read-only .--force", "binarize", "in.pgm", "-o", "old.tif")
        self.assertEqual(self.read("old.tif"), b"mine")
        self.succeed("binarize", "in.pgm", "-o", "old.tif", "--force")
        self.assertEqual(self.read("old.tif"), self.read("out.tif"))
        self.assertEqual(stat.S_IMODE((self.folder / "old.tif").stat().st_mode), 0o444)


class FindingsFilesTest(CommandTest):
    def reports(self, name):
        return [json.loads(line) for line in self.read(name).splitlines()]

    def test_findings_resume(self):
        self.write("in/two.pgm", noise(1) + noise(2))
        self.write("in/bad.pgm", noise(3)[:-1])
        for command in ("card", "components", "lines", "trueline", "logo"):
            with self.subTest(command):
                place = ["-o", command + "/", "--json-out", command + "/", "--overlay", command + "/"]
                result = self.fail_with(1, "bad.pgm: PNM", command, "-r", "in", *place)
                self.assertEqual(result.stdout, b"")
                self.assertEqual(self.names(command), ["bad.json", "two-overlay-1.jpg", "two-overlay-2.jpg", "two.json", "two.tif"])
                self.assertEqual([(page["format"], page["file"], page["page"]) for page in self.reports(command + "/two.json")],
                                 [(1, "in/two.pgm", 1), (1, "in/two.pgm", 2)])
                self.assertEqual([page["error"] for page in self.reports(command + "/bad.json")], ["PNM: the file is cut short"])
                again = self.fail_with(1, "1/2 in/bad.pgm: failed\n2/2 in/two.pgm: ", command, "-r", "in", "--skip-existing",
                                       "--json-out", command + "/{stem}.json", "-o", command + "/")
                self.assertIn(b"two.pgm: skipped", again.stderr)
        lines = self.fail_with(1, "cut short", "logo", "--json", "-r", "in", "-q").stdout.splitlines()
        self.assertEqual([json.loads(line).get("error") for line in lines], ["PNM: the file is cut short", None, None])

    def test_components_beyond_the_store(self):
        self.write("dots.pbm", DOTS)
        for command in ("components", "trueline"):
            result = self.run_command(command, "--json", "dots.pbm")
            self.assertIs(json.loads(result.stdout).get("truncated"), True)
            self.assertEqual(result.stderr, b"tavrix: dots.pbm: warning: more than 65,533 components: "
                             b"the findings cover only a part of the page\n")


if __name__ == "__main__":
    main()
