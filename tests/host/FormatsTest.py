# SPDX-License-Identifier: MIT
"""Every kind of picture file in, every kind out."""
import struct
import unittest

from support import *

WIDTH, HEIGHT = 11, 5
BITS = [[(x * y + x) % 3 % 2 for x in range(WIDTH)] for y in range(HEIGHT)]
GRAY = [[(x * 23 + y * 7) % 256 for x in range(WIDTH)] for y in range(HEIGHT)]
COLOUR = [[(x * 20, y * 50, (x * y * 9) % 256) for x in range(WIDTH)] for y in range(HEIGHT)]
ALPHA = [[(x * 25) % 256 for x in range(WIDTH)] for _ in range(HEIGHT)]
PALETTE = [(i * 16, 255 - i * 16, i * 5) for i in range(16)]
INDICES = [[(x + y) % 16 for x in range(WIDTH)] for y in range(HEIGHT)]

FLAT = [bytes(v for pixel in row for v in pixel) for row in COLOUR]
BGR = [bytes(v for pixel in row for v in pixel[::-1]) for row in COLOUR]
NIBBLES = [bytes((row + [0])[i] << 4 | (row + [0])[i + 1] for i in range(0, WIDTH, 2)) for row in INDICES]
PALETTE_PPM = ppm([[PALETTE[i] for i in row] for row in INDICES])
GRAY_PPM = pgm(GRAY)


def plte(colours):
    return chunk(b"PLTE", b"".join(map(bytes, colours)))


def on_white(value, alpha):
    return (value * alpha + 255 * (255 - alpha) + 127) // 255


def with_alpha(rows, alphas):
    return [bytes(v for pixel, a in zip(row, line) for v in (*pixel, a)) for row, line in zip(rows, alphas)]


def wide(rows):
    """Samples of 16 bits whose upper byte says it all."""
    return [bytes(b for v in row for b in (v, v)) for row in rows]


class ReadTest(CommandTest):
    def test_every_kind_reads_as_its_pixels(self):
        turned = lambda rows: list(zip(*rows[::-1]))  # a quarter turn clockwise
        gray_tags = tiff_tags(WIDTH, HEIGHT, 8, 1)
        mono = [[(0, 0, 0), (255, 255, 255)][v] for v in (1, 0)]
        cases = {
            "1.png": (png(WIDTH, HEIGHT, 1, 0, bit_rows(BITS)), pbm(BITS)),
            "1-white-first.png": (png(WIDTH, HEIGHT, 1, 3, bit_rows([[1 - v for v in r] for r in BITS]),
                                      plte(mono)), pbm(BITS)),
            "4-palette.png": (png(WIDTH, HEIGHT, 4, 3, NIBBLES, plte(PALETTE)), PALETTE_PPM),
            "4-gray-palette.png": (png(WIDTH, HEIGHT, 4, 3, NIBBLES, plte([(i, i, i) for i in range(0, 240, 15)])),
                                   pgm([[15 * i for i in row] for row in INDICES])),
            "4-gray.png": (png(WIDTH, HEIGHT, 4, 0, NIBBLES), pgm([[17 * i for i in row] for row in INDICES])),
            "8.png": (png(WIDTH, HEIGHT, 8, 0, map(bytes, GRAY)), GRAY_PPM),
            "16.png": (png(WIDTH, HEIGHT, 16, 0, wide(GRAY)), GRAY_PPM),
            "24.png": (png(WIDTH, HEIGHT, 8, 2, FLAT), ppm(COLOUR)),
            "48.png": (png(WIDTH, HEIGHT, 16, 2, wide(FLAT)), ppm(COLOUR)),
            "gray-alpha.png": (png(WIDTH, HEIGHT, 8, 4, with_alpha([[(v,) for v in r] for r in GRAY], ALPHA)),
                               pgm([[on_white(v, a) for v, a in zip(*r)] for r in zip(GRAY, ALPHA)])),
            "alpha.png": (png(WIDTH, HEIGHT, 8, 6, with_alpha(COLOUR, ALPHA)),
                          ppm([[[on_white(v, a) for v in p] for p, a in zip(*r)] for r in zip(COLOUR, ALPHA)])),
            "clear-colour.png": (png(WIDTH, HEIGHT, 4, 3, NIBBLES, plte(PALETTE) + chunk(b"tRNS", b"\xff\0")),
                                 ppm([[(255,) * 3 if i == 1 else PALETTE[i] for i in r] for r in INDICES])),
            "exif.png": (png(WIDTH, HEIGHT, 8, 0, map(bytes, GRAY), chunk(b"eXIf", exif(6))), pgm(turned(GRAY))),
            "1.bmp": (bmp(WIDTH, HEIGHT, 1, bit_rows(BITS)[::-1], [(0,) * 3, (255,) * 3]), pbm(BITS)),
            "1-colours.bmp": (bmp(WIDTH, HEIGHT, 1, bit_rows(BITS)[::-1], [(9, 8, 7), (1, 2, 3)]),
                              ppm([[(1, 2, 3) if v else (9, 8, 7) for v in r] for r in BITS])),
            "4.bmp": (bmp(WIDTH, HEIGHT, 4, NIBBLES[::-1], PALETTE), PALETTE_PPM),
            "8.bmp": (bmp(WIDTH, HEIGHT, 8, list(map(bytes, GRAY))[::-1], [(i,) * 3 for i in range(256)]), GRAY_PPM),
            "16.bmp": (bmp(2, 1, 16, [struct.pack("<HH", 0x7C00, 0x001F)]), ppm([[(255, 0, 0), (0, 0, 255)]])),
            "565.bmp": (bmp(2, 1, 16, [struct.pack("<HH", 0x07E0, 0xF800)], compression=3, masks=(0xF800, 0x7E0, 0x1F)),
                        ppm([[(0, 255, 0), (255, 0, 0)]])),
            "24.bmp": (bmp(WIDTH, HEIGHT, 24, BGR[::-1]), ppm(COLOUR)),
            "top-down.bmp": (bmp(WIDTH, -HEIGHT, 24, BGR), ppm(COLOUR)),
            "32.bmp": (bmp(1, 1, 32, [b"\1\2\3\0"]), ppm([[(3, 2, 1)]])),
            # a run of 3, 3 as they are (padded), end of row, skip to (1, 1), one, end
            "rle8.bmp": (bmp(6, 2, 8, [], [(i,) * 3 for i in range(256)], 1,
                             data=b"\3\7\0\3\1\2\3\0\0\0\0\2\1\0\1\5\0\1"),
                         pgm([[0, 5, 0, 0, 0, 0], [7, 7, 7, 1, 2, 3]])),
            "rle4.bmp": (bmp(5, 1, 4, [], PALETTE, 2, data=b"\3\x12\2\x34\0\1"),
                         ppm([[PALETTE[i] for i in (1, 2, 1, 3, 4)]])),
            "plain.pbm": (b"P1\n# words\n3 2\n0 1 1\n101", pbm([[1, 0, 0], [0, 1, 0]])),
            "plain.ppm": (b"P3 1 1 15 15 0 5", ppm([[(255, 0, 85)]])),
            "16.pgm": (b"P5 2 1 65535\n\0\0\xff\xff", pgm([[0, 255]])),
            "1.tif": (tiff([(tiff_tags(WIDTH, HEIGHT, 1, 1), bit_rows(BITS))]), pbm(BITS)),
            "1-white-0.tif": (tiff([(tiff_tags(WIDTH, HEIGHT, 1, 0), bit_rows([[1 - v for v in r] for r in BITS]))]),
                              pbm(BITS)),
            "8.tif": (tiff([(gray_tags, map(bytes, GRAY))], ">"), GRAY_PPM),
            "16.tif": (tiff([(tiff_tags(WIDTH, HEIGHT, 16, 1), wide(GRAY))]), GRAY_PPM),
            "24.tif": (tiff([(tiff_tags(WIDTH, HEIGHT, (8, 8, 8), 2), FLAT)]), ppm(COLOUR)),
            "turned.tif": (tiff([({**gray_tags, 274: (3, 6)}, map(bytes, GRAY))]), pgm(turned(GRAY))),
        }
        for name, (content, expected) in cases.items():
            with self.subTest(name):
                self.write(name, content)
                self.assertEqual(self.as_pnm(name), expected)

    def test_orientations(self):
        rows = [[1, 2, 3], [4, 5, 6]]
        upright = {1: rows, 2: [r[::-1] for r in rows], 3: [r[::-1] for r in rows[::-1]], 4: rows[::-1],
                   5: list(zip(*rows)), 6: list(zip(*rows[::-1])), 7: [r[::-1] for r in list(zip(*rows))[::-1]],
                   8: list(zip(*rows))[::-1], 9: rows}
        for orientation, expected in upright.items():
            for bits, tags in ((8, tiff_tags(3, 2, 8, 1)), (1, tiff_tags(3, 2, 1, 1))):
                with self.subTest(orientation=orientation, bits=bits):
                    packed = list(map(bytes, rows)) if bits == 8 else bit_rows([[v % 2 for v in r] for r in rows])
                    self.write("o.tif", tiff([({**tags, 274: (3, orientation)}, packed)]))
                    seen = pgm(expected) if bits == 8 else pbm([[v % 2 for v in r] for r in expected])
                    self.assertEqual(self.as_pnm("o.tif"), seen)

    def test_content_decides_not_the_name(self):
        self.write("really-a-png.bmp", png(WIDTH, HEIGHT, 8, 0, map(bytes, GRAY)))
        self.assertEqual(self.as_pnm("really-a-png.bmp"), GRAY_PPM)


class ResolutionTest(CommandTest):
    def test_is_kept_from_every_kind_in_every_kind(self):
        rows = [bytes(8)] * 4
        jpeg = self.succeed("rotate", "-a", "0", "-", "-o", "-", "--format", "jpg", stdin=pgm(rows))
        swapped = chunk(b"pHYs", struct.pack(">IIB", 7874, 11811, 1)) + chunk(b"eXIf", exif(6))
        inch = dict(t282=(5, (203200, 1000)), t283=(5, (97, 1)), t296=(3, 2))
        sources = {  # file, dots per inch or None
            "png": (png(8, 4, 8, 0, rows, chunk(b"pHYs", struct.pack(">IIB", 11811, 7874, 1))), (300, 200)),
            "png-turned": (png(8, 4, 8, 0, rows, swapped), (300, 200)),
            "png-no-unit": (png(8, 4, 8, 0, rows, chunk(b"pHYs", struct.pack(">IIB", 2, 1, 0))), None),
            "png-bare": (png(8, 4, 8, 0, rows), None),
            "bmp": (bmp(8, 4, 24, [bytes(24)] * 4, ppm_value=11811), (300, 300)),
            "tif-inch": (tiff([(tiff_tags(8, 4, 8, 1, **inch), rows)]), (203.2, 97)),
            "tif-cm": (tiff([(tiff_tags(8, 4, 8, 1, t282=(5, (100, 1)), t283=(5, (100, 1)), t296=(3, 3)), rows)]),
                       (254, 254)),
            "tif-no-unit": (tiff([(tiff_tags(8, 4, 8, 1, t282=(5, (3, 1)), t283=(5, (3, 1)), t296=(3, 1)), rows)]), None),
            "jpg-exif-only": (with_exif(jpeg, exif(1, 240)), (240, 240)),
            "jpg-bare": (jpeg, None),
            "pgm": (pgm(rows), None),
        }
        for name, (content, dpi) in sources.items():
            self.write("in", content)
            metric = dpi and tuple(round(v / 0.0254) for v in dpi)
            for command in (["binarize", "-m", "otsu"], ["rotate", "-a", "0"]):
                with self.subTest(name, command=command[0]):
                    for extension in ("png", "tif", "bmp"):
                        self.succeed(*command, "in", "-o", "out." + extension)
                    self.assertEqual(png_facts(self.read("out.png"))[4], metric)
                    self.assertEqual(struct.unpack_from("<ii", self.read("out.bmp"), 38), metric or (0, 0))
                    tags = tiff_pages(self.read("out.tif"))[0]
                    self.assertEqual((tags.get(282), tags.get(283)), (None, None) if not dpi else
                                     (self.near(tags[282], dpi[0]), self.near(tags[283], dpi[1])))

    def near(self, value, expected):
        self.assertAlmostEqual(value, expected, delta=0.01)
        return value

    def test_a_quarter_turn_swaps_it(self):
        self.write("in.png", png(8, 4, 8, 0, [bytes(8)] * 4, chunk(b"pHYs", struct.pack(">IIB", 11811, 7874, 1))))
        for command in (["rotate", "-a", "-90"], ["turn", "--code", "right"]):
            self.succeed(*command, "in.png", "-o", "out.png")
            self.assertEqual(png_facts(self.read("out.png"))[4], (7874, 11811))


class WriteTest(CommandTest):
    def test_round_trips(self):
        for kind, content in (("pbm", pbm(BITS)), ("pgm", GRAY_PPM), ("ppm", ppm(COLOUR))):
            self.write("in." + kind, content)
            for extension in ("png", "tif", "bmp", kind, "pnm"):
                with self.subTest(kind, extension=extension):
                    self.succeed("rotate", "-a", "0", "in." + kind, "-o", "out." + extension)
                    self.assertEqual(self.as_pnm("out." + extension), content)

    def test_tiff_is_g4_and_holds_every_page(self):
        pages = [(tiff_tags(WIDTH, HEIGHT, 8, 1), list(map(bytes, GRAY))), (tiff_tags(WIDTH, HEIGHT, 1, 1), bit_rows(BITS)),
                 (tiff_tags(3, 2, (8, 8, 8), 2), [bytes(9)] * 2)]
        self.write("in.tif", tiff(pages))
        self.succeed("binarize", "-m", "otsu", "in.tif", "-o", "out.tif")
        written = tiff_pages(self.read("out.tif"))
        self.assertEqual([(t[256], t[257], t[258], t[259], t[262]) for t in written],
                         [(WIDTH, HEIGHT, 1, 4, 0), (WIDTH, HEIGHT, 1, 4, 0), (3, 2, 1, 4, 0)])
        self.succeed("rotate", "-a", "0", "in.tif", "-o", "same.tif")
        self.assertEqual([(t[258], t[259]) for t in tiff_pages(self.read("same.tif"))], [(8, 8), (1, 4), (8, 8)])

        self.fail_with(4, "out.png|3 pages", "binarize", "in.tif", "-o", "out.png")
        self.succeed("binarize", "-m", "otsu", "in.tif", "-o", "p-{page}.png")
        self.assertEqual(self.names(), ["in.tif", "out.tif", "p-1.png", "p-2.png", "p-3.png", "same.tif"])
        self.assertEqual(self.as_pnm("p-2.png"), pbm(BITS))

    def test_what_a_format_cannot_hold(self):
        self.write("in.pgm", GRAY_PPM)
        self.fail_with(4, "JPEG does not hold 1-bit", "binarize", "in.pgm", "-o", "out.jpg")
        self.fail_with(4, "does not fit", "rotate", "-a", "0", "in.pgm", "-o", "out.pbm")
        self.fail_with(2, "extension must be", "binarize", "in.pgm", "-o", "out.gif")
        self.assertEqual(self.names(), ["in.pgm"])


if __name__ == "__main__":
    main()
