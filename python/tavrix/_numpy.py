# SPDX-License-Identifier: MIT
"""NumPy, or a word about where it comes from at its first use: the package itself can be imported without."""

try:
    import numpy
except ImportError:
    class _Missing:
        def __getattr__(self, name):
            raise ImportError("tavrix works on arrays of NumPy: install numpy (Debian: python3-numpy)")

    numpy = _Missing()  # type: ignore[assignment]
