# SPDX-License-Identifier: MIT
"""documents.py FILE...: runs the Python in documents, in the folder at hand. What a line that prints says behind
`# ` is what it prints."""

import contextlib
import io
import re
import sys

PRINTED = re.compile(r"^print\(.*\)\s+# (.*)$")


def check(document):
    text = open(document).read()
    names = {}
    for match in re.finditer(r"^```python\n(.*?)^```$", text, re.M | re.S):
        code = match.group(1)
        first = text[:match.start(1)].count("\n")
        printed = io.StringIO()
        with contextlib.redirect_stdout(printed):
            exec(compile("\n" * first + code, document, "exec"), names)
        expected = [found.group(1) for found in map(PRINTED.match, code.splitlines()) if found]
        left = printed.getvalue().splitlines()
        for line in expected:
            if line not in left:
                sys.exit(f"{document}:{first}: expected {line!r} among {left}")
            left = left[left.index(line) + 1:]
    assert names, "no Python in " + document


for name in sys.argv[1:]:
    check(name)
