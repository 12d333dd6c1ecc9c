# SPDX-License-Identifier: MIT
"""The examples on a folder with a damaged picture."""

import importlib.util
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
SAMPLE = ROOT / "samples/card-colour.jpg"


def run(example, *arguments):
    return subprocess.run([sys.executable, str(ROOT / "python/examples" / example), *map(str, arguments)],
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, encoding="utf-8", timeout=300)


class ExamplesTest(unittest.TestCase):
    def test_folders(self):
        for example, module in (("pool.py", "concurrent"), ("cluster.py", "distributed")):
            with self.subTest(example), tempfile.TemporaryDirectory() as folder:
                if not importlib.util.find_spec(module):
                    self.skipTest(f"needs {module}")
                scans = pathlib.Path(folder, "scans")
                scans.mkdir()
                for name in ("a.jpg", "b.jpg", "c.JPG"):
                    os.symlink(SAMPLE, scans / name)
                (scans / "bad.jpg").write_bytes(SAMPLE.read_bytes()[:20000])
                (scans / "notes.txt").write_text("no picture")
                done = run(example, scans, pathlib.Path(folder, "clean"))
                self.assertEqual(done.returncode, 1)
                self.assertIn("bad.jpg cannot be read", done.stdout)
                self.assertIn("1 failed", done.stdout)
                self.assertEqual(sorted(os.listdir(pathlib.Path(folder, "clean"))),
                                 [name + end for name in ("a.jpg", "b.jpg", "c.JPG") for end in (".json", ".tif")])
                found = json.loads(pathlib.Path(folder, "clean", "b.jpg.json").read_text())
                self.assertEqual((len(found["lines"]), found["logo"]["left"], found["warnings"]), (9, 141, []))

    def test_text(self):
        if not (importlib.util.find_spec("pytesseract") or importlib.util.find_spec("tesserocr")):
            self.skipTest("needs pytesseract or tesserocr")
        done = run("read_text.py", SAMPLE)
        self.assertIn("14 Lantern Row", done.stdout)


if __name__ == "__main__":
    unittest.main()
