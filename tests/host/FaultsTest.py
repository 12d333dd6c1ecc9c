# SPDX-License-Identifier: MIT
"""Every command under every fault of the system: a complete result, or an error that names the file and nothing half-made."""
import errno
import os
import re
import signal
import unittest

from support import *

OLD = b"what was there before"
NAMED = "tmpfile:0:%d," % errno.EOPNOTSUPP  # a file system without files that have no name


def fault(call, number, name):
    return "%s:%d:%s" % (call, number, getattr(errno, name, name))


# What must come of a fault where it is met: a complete result, an error, or either of them.
SURVIVES, FAILS, EITHER = "survives", "fails", "either"
FAULTS = [(fault("write", 0, "short"), SURVIVES), (fault("write", 1, "EINTR"), SURVIVES), (fault("read", 1, "short"), SURVIVES),
          (fault("read", 1, "EINTR"), SURVIVES), (fault("read", 1, "EIO"), FAILS), (fault("read", 2, "EIO"), FAILS),
          (fault("open", 1, "EMFILE"), FAILS), (fault("open", 2, "EACCES"), FAILS), (fault("thread", 0, "EAGAIN"), SURVIVES),
          (fault("linkat", 1, "EPERM"), SURVIVES), (fault("mkdir", 1, "EROFS"), FAILS), (fault("readdir", 2, "EIO"), FAILS),
          (fault("write", 1, "short") + "," + fault("write", 2, "ENOSPC"), FAILS)]
FAULTS += [(fault("write", n, name), FAILS) for n in (1, 2, 3) for name in ("ENOSPC", "EIO")]
FAULTS += [(fault("linkat", n, "signal"), EITHER) for n in (1, 2)]
FAULTS += [(NAMED + fault("create", n, name), FAILS) for n in (1, 2) for name in ("EMFILE", "EROFS")]
FAULTS += [(fault(call, 1, "remove"), EITHER) for call in ("tmpfile", "fsync", "linkat")] + [(NAMED + fault("create", 1, "remove"), EITHER)]
for kind in ("", NAMED):
    FAULTS += [(kind + fault("fsync", n, "EIO"), FAILS) for n in (1, 2, 3)]
    FAULTS += [(kind + fault("close", n, "EIO"), EITHER) for n in range(1, 5)]
    FAULTS += [(kind + fault("fchmod", 1, "EPERM"), SURVIVES), (kind + fault("fchmod", 1, "EIO"), FAILS)]
    FAULTS += [(kind + fault("rename", n, "ENOSPC"), FAILS) for n in (1, 2)]
    FAULTS += [(kind + fault(call, n, "signal"), EITHER) for call in ("write", "fsync", "rename") for n in (1, 2)]

# Arguments; {} is the folder of the outputs.
COMMANDS = {
    "one file": ["binarize", "in/a.pgm", "-o", "{}/a.tif"],
    "a new folder": ["rotate", "-a", "0", "in/a.pgm", "-o", "{}/new/", "--format", "png"],
    "a folder by two": ["binarize", "-r", "in", "-o", "{}/", "-j", "2"],
    "a file for each page": ["rotate", "-a", "90", "in/two.pgm", "-o", "{}/", "--name", "{{stem}}-{{page}}.bmp"],
    "pages of one PDF": ["binarize", "in/a.pgm", "in/two.pgm", "-o", "{}/all.pdf"],
    "sheet": ["compare", "in/a.pgm", "-o", "{}/a.html"],
    "findings": ["card", "in/a.pgm", "-o", "{}/a.tif", "--json-out", "{}/a.json", "--overlay", "{}/a.png"],
    "picture on standard output": ["binarize", "in/a.pgm", "-o", "-"],
    "report on standard output": ["lines", "--json", "in/a.pgm"],
    "list": ["binarize", "--files-from", "list", "-o", "{}/"],
}


@unittest.skipIf(os.environ["TAVRIX_SANITIZED"] == "ON", "a sanitizer stands in front of the same calls")
class FaultsTest(CommandTest):
    def run_with(self, arguments, folder, faults):
        environment = {**os.environ, "LD_PRELOAD": os.environ["TAVRIX_FAULT_LIBRARY"], "TAVRIX_FAULTS": faults,
                       "TAVRIX_FAULTS_MET": str(self.folder / "met"), "TAVRIX_FAULT_FOLDER": folder}
        (self.folder / "met").unlink(missing_ok=True)
        result = self.run_command(*[argument.format(folder) for argument in arguments], env=environment)
        met = self.read("met").decode() if (self.folder / "met").exists() else ""
        return result, met.replace(NAMED[:-1], "")

    @staticmethod
    def comparable(name, content):
        """Without durations."""
        return re.sub(rb"[0-9.]+ ms", b"", content) if name.endswith(".html") else content

    def contents(self, folder):
        return {name: self.comparable(name, self.read(folder + "/" + name)) for name in self.names(folder)}

    def check(self, result, met, kind, good, folder, old):
        error = result.stderr.decode()
        left = self.contents(folder) if (self.folder / folder).is_dir() else {}
        for name, content in left.items():
            is_whole = content in (good[0].get(name), OLD)
            self.assertTrue(is_whole or b'"error":' in content or "are missing in it" in error, (name, content[:60]))
        if result.returncode == 0:
            self.assertIn(kind, (SURVIVES, EITHER))
            self.assertEqual((left, result.stdout), good)
        elif result.returncode == -signal.SIGTERM:
            self.assertIn("signal", met)
        else:
            self.assertIn(kind, (FAILS, EITHER))
            self.assertIn(result.returncode, (1, 3, 4))
            self.assertRegex(error, r"(?m)^tavrix: .*(in|list|%s|standard output)\b.*: [A-Z][a-z].*" % folder)
        self.assertTrue(set(old) <= set(left) or result.returncode == -signal.SIGTERM or "remove" in met, "an old file is lost")

    def test_commands(self):
        self.write("in/a.pgm", noise(1))
        self.write("in/two.pgm", noise(2) + noise(3))
        self.write("list", b"in/a.pgm\nin/two.pgm\n")
        calls, runs = set(), 0
        for title, arguments in COMMANDS.items():
            (self.folder / "good").mkdir()
            result, _ = self.run_with(arguments, "good", "")
            self.assertEqual(result.returncode, 0, result.stderr)
            good = self.contents("good"), result.stdout
            shutil.rmtree(self.folder / "good", ignore_errors=True)
            for faults, kind in FAULTS:
                for old in ([], sorted(good[0])) if "remove" not in faults else [[]]:
                    with self.subTest(title, faults=faults, old=old):
                        shutil.rmtree(self.folder / "out", ignore_errors=True)
                        (self.folder / "out").mkdir()
                        for name in old:
                            self.write("out/" + name, OLD)
                        result, met = self.run_with(arguments, "out", faults)
                        if met:
                            calls.add(faults.split(",")[-1].split(":")[0])
                            self.check(result, met, kind, good, "out", old)
                            runs += 1
        self.assertEqual(len(calls), 13, calls)
        self.assertGreater(runs, 500)


if __name__ == "__main__":
    main()
