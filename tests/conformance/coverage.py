#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Which lines and branches of src/ the conformance host reaches.

    cmake --preset coverage
    cmake --build build/coverage --target tavrix_conformance
    tests/conformance/coverage.py build/coverage

Runs the host on the instrumented library, reads gcov's counts, leaves out what unreachable.txt lists, prints
what else was not reached and the shares, and fails below the shares that are asked for. An entry of
unreachable.txt that leaves nothing out fails as well.
"""
import collections
import gzip
import json
import pathlib
import re
import subprocess
import sys
import tempfile

MIN_LINES, MIN_BRANCHES = 97.0, 92.0  # percent
ROOT = pathlib.Path(__file__).resolve().parents[2]
# gcov gives branches to calls and constructors too; only what the source decides counts.
DECISION = re.compile(r"\b(if|for|while|case|default|switch|return .*(&&|\|\||\?))|&&|\|\||\? ")


class Entry:
    """A line of unreachable.txt: a file, then function names or a part of the source line, then the reason."""

    def __init__(self, text):
        self.path, self.what, self.reason = (field.strip() for field in text.split("|", 2))
        self.used = False

    def holds(self, path, function, source):
        if self.path not in ("*", path):
            return False
        if self.what == "*":
            hit = True
        else:
            hit = self.what[:-2] in function if self.what.endswith("()") else self.what in source
        self.used = self.used or hit
        return hit


def counts(build):
    """Per source file and line: times run, counts of its branches, the function that holds it."""
    run = collections.defaultdict(collections.Counter)
    branches = collections.defaultdict(dict)
    functions = collections.defaultdict(dict)
    data = sorted(str(path.resolve()) for path in (build / "src").rglob("*.gcda"))
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run(["gcov", "-b", "-c", "-j", "-p", *data], cwd=folder, check=True, capture_output=True)
        for report in pathlib.Path(folder).glob("*.json.gz"):
            content = json.loads(gzip.open(report).read())
            for file in content["files"]:
                path = (pathlib.Path(content["current_working_directory"]) / file["file"]).resolve()
                if not path.is_relative_to(ROOT / "src"):
                    continue
                path = str(path.relative_to(ROOT))
                names = {item["name"]: item["demangled_name"] for item in file["functions"]}
                for line in file["lines"]:
                    number = line["line_number"]
                    run[path][number] += line["count"]
                    functions[path][number] = names.get(line.get("function_name"), "")
                    taken = [branch["count"] for branch in line["branches"] if not branch["throw"]]
                    # Copies of a line, of templates or of levels, may differ in their branches: the largest
                    # one stands for all.
                    before = branches[path].get(number, [])
                    if len(taken) == len(before):
                        branches[path][number] = [a + b for a, b in zip(taken, before)]
                    elif len(taken) > len(before):
                        branches[path][number] = taken
    return run, branches, functions


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    for old in build.rglob("*.gcda"):
        old.unlink()
    with tempfile.TemporaryDirectory() as folder:
        (pathlib.Path(folder) / "outputImg").mkdir()
        subprocess.run([build / "tests/conformance/tavrix_conformance", build / "src/libtavrix.so",
                        ROOT / "tests/conformance/expected.txt"], cwd=folder,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    listed = (pathlib.Path(__file__).parent / "unreachable.txt").read_text().splitlines()
    entries = [Entry(line) for line in listed if line and not line.startswith("#")]
    run, branches, functions = counts(build)
    lines = reached = ways = taken = 0
    for path in sorted(run):
        source = (ROOT / path).read_text().splitlines()
        for number in sorted(run[path]):
            text = source[number - 1].strip() if number <= len(source) else ""
            sides = branches[path].get(number, []) if DECISION.search(text) else []
            if re.fullmatch(r"[})\];]*", text) or (number > 1 and "catch (" in source[number - 2]):
                continue  # the end of a block, and what follows a failed allocation
            missing = run[path][number] == 0
            closed = [count for count in sides if count == 0]
            if (missing or closed) and any([e.holds(path, functions[path][number], text) for e in entries]):
                lines += not missing
                reached += not missing
                ways += len(sides) - len(closed)
                taken += len(sides) - len(closed)
                continue
            lines += 1
            reached += not missing
            ways += len(sides)
            taken += len(sides) - len(closed)
            if missing or closed:
                print(f"{path}:{number}: {'not run' if missing else sides}: {text[:90]}")
    print(f"lines {reached} of {lines}: {100 * reached / lines:.2f} %, "
          f"branches {taken} of {ways}: {100 * taken / ways:.2f} %")
    idle = [entry for entry in entries if not entry.used]
    for entry in idle:
        print(f"unreachable.txt: {entry.path} | {entry.what}: reached or gone")
    return 100 * reached < MIN_LINES * lines or 100 * taken < MIN_BRANCHES * ways or bool(idle)


if __name__ == "__main__":
    sys.exit(main())
