# SPDX-License-Identifier: MIT
"""Compares every sine and cosine that a program prints with the true value, rounded from 200 bits.

check_sine.py PROGRAM [RANDOM ANGLES]
"""
import subprocess
import sys

import mpmath

mpmath.mp.prec = 200
printed = subprocess.run(sys.argv[1:], capture_output=True, text=True, check=True).stdout.splitlines()
assert len(printed) > 36000
wrong = []
for line in printed:
    radians, sine, cosine = map(float.fromhex, line.split())
    true = mpmath.cos_sin(mpmath.mpf(radians))
    if (cosine, sine) != tuple(map(float, true)):
        wrong.append(f"{line}: {[float(value).hex() for value in true]}")
print(*wrong[:10], f"{len(printed)} angles, {len(wrong)} wrong", sep="\n")
sys.exit(bool(wrong))
