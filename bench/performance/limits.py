# SPDX-License-Identifier: MIT
"""What a machine does at best: a cycle, a square root, copies, the first touch of memory."""
import ctypes
import os
import subprocess
import tempfile
import time

import numpy


def timed(call):
    start = time.perf_counter_ns()
    call()
    return time.perf_counter_ns() - start


def copy_ns(count):
    """Of copying so many bytes: the best of some rounds, from and to memory that has been used before."""
    source, target = (numpy.ones(max(count, 1), numpy.uint8) for _ in range(2))
    return min(timed(lambda: ctypes.memmove(target.ctypes.data, source.ctypes.data, count)) for _ in range(7))


_LIMITS = r"""
#include <immintrin.h>
#include <cstdio>
#include <ctime>
static double now() { timespec t; clock_gettime(CLOCK_MONOTONIC, &t); return t.tv_sec * 1e9 + t.tv_nsec; }
int main() {
    double best[2] = {1e9, 1e9};
    for (int round = 0; round < 5; ++round) {
        double start = now();
        long x = 1;  // a product takes three cycles; processors foresee chains of sums
        for (int i = 0; i < 10000000; ++i) asm volatile("imul $3, %0, %0" : "+r"(x));
        double cycle = (now() - start) / 3e7;
        start = now();
        __m256 v = _mm256_set1_ps(3), r;
        for (int i = 0; i < 10000000; ++i) asm volatile("vsqrtps %1, %0" : "=x"(r) : "x"(v));
        double root = (now() - start) / 8e7;
        if (cycle < best[0]) best[0] = cycle;
        if (root < best[1]) best[1] = root;
    }
    printf("%f %f", best[0], best[1]);
}
"""


def measured():
    """Nanoseconds of a clock cycle (a chain of products), of a square root (eight at a time), of a page's first touch."""
    with tempfile.TemporaryDirectory() as folder:
        program = os.path.join(folder, "limits")
        subprocess.run(["c++", "-O2", "-mavx2", "-x", "c++", "-", "-o", program], input=_LIMITS.encode(), check=True)
        cycle, root = map(float, subprocess.run([program], capture_output=True, text=True, check=True).stdout.split())
    touches = []
    for _ in range(4):  # memory that the process gave back before, but for the first time
        fresh = numpy.empty(1 << 26, numpy.uint8)
        first, second = (timed(lambda: ctypes.memset(fresh.ctypes.data, 1, fresh.size)) for _ in range(2))
        touches.append((first - second) / (fresh.size / 4096))
        del fresh
    copied = {str(count): copy_ns(count) for count in (1 << 18, 1 << 24, 1 << 26)}
    return {"cycle": cycle, "root": root, "touch": min(touches), "copies": copied}
