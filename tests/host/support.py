# SPDX-License-Identifier: MIT
"""Runs the built command; Pillow makes and reads the pictures."""
import io
import os
import pathlib
import shutil
import struct
import subprocess
import tempfile
import unittest
import zlib

from PIL import Image

COMMAND = os.environ["TAVRIX_COMMAND"]
SAMPLES = pathlib.Path(os.environ["TAVRIX_SAMPLES"])


class CommandTest(unittest.TestCase):
    """A test with an empty current folder."""

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="tavrix-test-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)

    def run_command(self, *arguments, stdin=b"", stdout=subprocess.PIPE, **options):
        return subprocess.run([COMMAND, *map(str, arguments)], input=stdin, stdout=stdout,
                              stderr=subprocess.PIPE, cwd=self.folder, timeout=120, **options)

    def succeed(self, *arguments, **options):
        result = self.run_command(*arguments, **options)
        self.assertEqual((result.returncode, result.stderr.decode()), (0, ""), arguments)
        return result.stdout

    def fail_with(self, code, pattern, *arguments, **options):
        result = self.run_command(*arguments, **options)
        self.assertRegex(result.stderr.decode("utf-8", "surrogateescape"), pattern)
        self.assertEqual(result.returncode, code, arguments)
        return result

    def write(self, name, content):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)
        return path

    def read(self, name):
        return (self.folder / name).read_bytes()

    def open(self, name):
        """A picture of the folder as Pillow sees it."""
        picture = Image.open(self.folder / name)
        self.addCleanup(picture.close)
        return picture

    def names(self, folder="."):
        return sorted(str(path.relative_to(self.folder / folder))
                      for path in (self.folder / folder).rglob("*") if path.is_file())

    def as_pnm(self, name):
        """What the command reads: a turn by 0 degrees writes it unchanged."""
        return self.succeed("rotate", "-a", "0", name, "-o", "-", "--format", "pnm")


def image(rows, mode="L", palette=None):
    """mode: as Pillow names it; in a 1-bit picture 1 is white."""
    made = Image.new(mode, (len(rows[0]), len(rows)))
    made.putdata([v * 255 if mode == "1" else v for row in rows for v in row])
    if palette:
        made.putpalette([v for colour in palette for v in colour])
    return made


def encoded(picture, kind="PPM", **options):
    file = io.BytesIO()
    picture.save(file, kind, **options)
    return file.getvalue()


def pbm(rows):
    return encoded(image(rows, "1"))


def pgm(rows):
    return encoded(image(rows))


def ppm(rows):
    return encoded(image(rows, "RGB"))


def noise(i=1, width=60, height=40):
    """A gray picture that differs with i."""
    return pgm([[(x * i + y * 31) % 256 for x in range(width)] for y in range(height)])


# What Pillow does not write: rare kinds, and files that lie.

def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def png(width, height, depth, colour, rows):
    """colour: 0 gray, 2 RGB; rows are packed bytes."""
    data = zlib.compress(b"".join(b"\0" + row for row in rows))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, depth, colour, 0, 0, 0)) +
            chunk(b"IDAT", data) + chunk(b"IEND", b""))


def with_chunk(content, kind, data):
    """A PNG file with one more chunk behind its header."""
    return content[:33] + chunk(kind, data) + content[33:]


def bmp(width, height, bits, rows, palette=(), compression=0, masks=()):
    """rows in file order, padded; a negative height puts the top row first."""
    table = b"".join(struct.pack("<I", mask) for mask in masks) + b"".join(bytes((b, g, r, 0)) for r, g, b in palette)
    data = b"".join(row.ljust((len(row) + 3) // 4 * 4, b"\0") for row in rows) if compression != 1 and compression != 2 else rows
    return (struct.pack("<2sIII", b"BM", 54 + len(table) + len(data), 0, 54 + len(table)) +
            struct.pack("<IiiHHIIiiII", 40, width, height, 1, bits, compression, len(data), 0, 0, len(palette), 0) + table + data)


def retag(content, number, value, page=0):
    """A little-endian TIFF file with another value in one of its tags."""
    content, at = bytearray(content), struct.unpack_from("<I", content, 4)[0]
    for _ in range(page):
        at = struct.unpack_from("<I", content, at + 2 + 12 * struct.unpack_from("<H", content, at)[0])[0]
    for entry in range(at + 2, at + 2 + 12 * struct.unpack_from("<H", content, at)[0], 12):
        if struct.unpack_from("<H", content, entry)[0] == number:
            struct.pack_into("<HHII", content, entry, number, 4, 1, value)
            return bytes(content)
    raise KeyError(number)


def main():
    # CTest counts programs; the tests in each are named here.
    unittest.main(verbosity=2)
