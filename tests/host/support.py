# SPDX-License-Identifier: MIT
"""Runs the built command and makes and reads small picture files with the standard library alone."""
import os
import pathlib
import shutil
import struct
import subprocess
import tempfile
import unittest
import zlib

COMMAND = os.environ["TAVRIX_COMMAND"]
SAMPLES = pathlib.Path(os.environ["TAVRIX_SAMPLES"])
TIFF_TYPE_BYTES = {3: 2, 4: 4, 5: 8}  # short, long, rational


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

    def names(self, folder="."):
        return sorted(str(path.relative_to(self.folder / folder))
                      for path in (self.folder / folder).rglob("*") if path.is_file())

    def as_pnm(self, name):
        """What the command reads: a turn by 0 degrees writes it unchanged."""
        return self.succeed("rotate", "-a", "0", name, "-o", "-", "--format", "pnm")


def bit_rows(rows):
    """Rows of 0 and 1, packed, most significant bit first."""
    return [bytes(int("".join(map(str, row[i:i + 8])).ljust(8, "0"), 2) for i in range(0, len(row), 8))
            for row in rows]


def pbm(rows):
    """Rows of 1 for white, as the library counts; the file counts the other way."""
    rows = [[1 - v for v in row] for row in rows]
    return b"P4\n%d %d\n" % (len(rows[0]), len(rows)) + b"".join(bit_rows(rows))


def pgm(rows):
    return b"P5\n%d %d\n255\n" % (len(rows[0]), len(rows)) + b"".join(map(bytes, rows))


def ppm(rows):
    return b"P6\n%d %d\n255\n" % (len(rows[0]), len(rows)) + b"".join(bytes(v) for row in rows for v in row)


def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def png(width, height, depth, colour, rows, extra=b""):
    """colour: 0 gray, 2 RGB, 3 palette, 4 gray and alpha, 6 RGB and alpha; rows are packed bytes."""
    head = struct.pack(">IIBBBBB", width, height, depth, colour, 0, 0, 0)
    data = zlib.compress(b"".join(b"\0" + row for row in rows))
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", head) + extra + chunk(b"IDAT", data) + chunk(b"IEND", b"")


def png_facts(content):
    """Width, height, depth, colour type and dots per metre (or None)."""
    facts, at = None, 8
    size = None
    while at < len(content):
        length, kind = struct.unpack_from(">I4s", content, at)
        if kind == b"IHDR":
            facts = struct.unpack_from(">IIBB", content, at + 8)
        if kind == b"pHYs":
            size = struct.unpack_from(">II", content, at + 8)
        at += 12 + length
    return (*facts, size)


def png_rows(content):
    """Samples of an 8-bit RGB picture of the command's, row by row."""
    width, height, depth, colour, _ = png_facts(content)
    assert (depth, colour) == (8, 2)
    data, at = b"", 8
    while at < len(content):
        length, kind = struct.unpack_from(">I4s", content, at)
        if kind == b"IDAT":
            data += content[at + 8:at + 8 + length]
        at += 12 + length
    data, stride, rows = zlib.decompress(data), 3 * width, []
    last = bytearray(stride)
    for y in range(height):
        kind, row = data[y * (stride + 1)], bytearray(data[y * (stride + 1) + 1:(y + 1) * (stride + 1)])
        for i in range(stride):
            a, b, c = (row[i - 3], last[i], last[i - 3]) if i >= 3 else (0, last[i], 0)
            guess = a + b - c
            paeth = min((abs(guess - a), 0, a), (abs(guess - b), 1, b), (abs(guess - c), 2, c))[2]
            row[i] = (row[i] + (0, a, b, (a + b) // 2, paeth)[kind]) & 255
        rows.append(row)
        last = row
    return rows


def bmp(width, height, bits, rows, palette=(), compression=0, masks=(), ppm_value=0, data=None):
    """rows in file order; a negative height puts the top row first."""
    table = b"".join(struct.pack("<I", mask) for mask in masks) + b"".join(bytes((b, g, r, 0)) for r, g, b in palette)
    data = b"".join(row.ljust((len(row) + 3) // 4 * 4, b"\0") for row in rows) if data is None else data
    start = 54 + len(table)
    return (struct.pack("<2sIII", b"BM", start + len(data), 0, start) +
            struct.pack("<IiiHHIIiiII", 40, width, height, 1, bits, compression, len(data), ppm_value, ppm_value,
                        len(palette), 0) + table + data)


def tiff(pages, order="<"):
    """pages: (tags {number: (type, value or values)}, packed rows); each page is one plain strip."""
    content = bytearray((b"II" if order == "<" else b"MM") + struct.pack(order + "HI", 42, 0))
    link = 4
    for tags, rows in pages:
        strip, place = b"".join(rows), len(content)
        content += strip + b"\0" * (len(strip) % 2)
        tags = {**tags, 273: (4, place), 279: (4, len(strip)), 278: (4, tags[257][1])}
        entries = b""
        for number, (kind, value) in sorted(tags.items()):
            values = value if isinstance(value, tuple) and kind != 5 else [value]
            packed = b"".join(struct.pack(order + {3: "H", 4: "I", 5: "II"}[kind], *(v if kind == 5 else (v,)))
                              for v in values)
            if len(packed) > 4:
                place = len(content)
                content += packed
                packed = struct.pack(order + "I", place)
            entries += struct.pack(order + "HHI", number, kind, len(values)) + packed.ljust(4, b"\0")
        struct.pack_into(order + "I", content, link, len(content))
        content += struct.pack(order + "H", len(tags)) + entries
        link = len(content)
        content += b"\0\0\0\0"
    return bytes(content)


def tiff_tags(width, height, bits, photometric, **more):
    """more: extra tags as t<number>=(type, value)."""
    samples = len(bits) if isinstance(bits, tuple) else 1
    return {256: (4, width), 257: (4, height), 258: (3, bits), 259: (3, 1), 262: (3, photometric),
            277: (3, samples), **{int(name[1:]): value for name, value in more.items()}}


def tiff_pages(content):
    """The tags of every page of a file, as {number: value}."""
    order = "<" if content[:2] == b"II" else ">"
    at, pages = struct.unpack_from(order + "I", content, 4)[0], []
    while at:
        count = struct.unpack_from(order + "H", content, at)[0]
        tags = {}
        for i in range(count):
            number, kind, length = struct.unpack_from(order + "HHI", content, at + 2 + 12 * i)
            place = at + 10 + 12 * i
            if TIFF_TYPE_BYTES.get(kind, 9) * length > 4:
                place = struct.unpack_from(order + "I", content, place)[0]
            if kind == 5:
                top, bottom = struct.unpack_from(order + "II", content, place)
                tags[number] = top / bottom
            elif kind in (3, 4):
                tags[number] = struct.unpack_from(order + {3: "H", 4: "I"}[kind], content, place)[0]
        pages.append(tags)
        at = struct.unpack_from(order + "I", content, at + 2 + 12 * count)[0]
    return pages


def exif(orientation, dpi=None):
    """A big-endian EXIF block, without the mark before it."""
    entries = [struct.pack(">HHIHH", 0x112, 3, 1, orientation, 0)]
    values = b""
    if dpi:
        place = 8 + 2 + 12 * 4 + 4
        entries += [struct.pack(">HHII", 0x11A, 5, 1, place), struct.pack(">HHII", 0x11B, 5, 1, place),
                    struct.pack(">HHIHH", 0x128, 3, 1, 2, 0)]
        values = struct.pack(">II", dpi * 10, 10)
    return b"MM\0*\0\0\0\x08" + struct.pack(">H", len(entries)) + b"".join(entries) + b"\0\0\0\0" + values


def with_exif(jpeg, block, keeps_jfif=True):
    """A JPEG file with an EXIF marker behind its JFIF one (or in its place)."""
    jfif = 4 + struct.unpack_from(">H", jpeg, 4)[0]
    marker = b"\xff\xe1" + struct.pack(">H", 8 + len(block)) + b"Exif\0\0" + block
    return jpeg[:jfif] + marker + jpeg[jfif:] if keeps_jfif else jpeg[:2] + marker + jpeg[jfif:]


def main():
    # CTest counts programs; the tests in each are named here.
    unittest.main(verbosity=2)
