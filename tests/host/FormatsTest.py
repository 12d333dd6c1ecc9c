# SPDX-License-Identifier: MIT
"""Every kind of picture file in, every kind out."""
import struct
import subprocess
import unittest

from PIL import ImageChops, ImageStat

from support import *

WIDTH, HEIGHT = 11, 5
BITS = [[(x * y + x) % 3 % 2 for x in range(WIDTH)] for y in range(HEIGHT)]
GRAY = [[(x * 23 + y * 7) % 256 for x in range(WIDTH)] for y in range(HEIGHT)]
COLOUR = [[(x * 20, y * 50, (x * y * 9) % 256) for x in range(WIDTH)] for y in range(HEIGHT)]
ALPHA = [[(x * 25) % 256 for x in range(WIDTH)] for _ in range(HEIGHT)]
PALETTE = [(i * 16, 255 - i * 16, i * 5) for i in range(16)]
GRAYS = [(i, i, i) for i in range(0, 240, 15)]
INDICES = [[(x + y) % 16 for x in range(WIDTH)] for y in range(HEIGHT)]

BITS_IMAGE, GRAY_IMAGE, COLOUR_IMAGE = image(BITS, "1"), image(GRAY), image(COLOUR, "RGB")
BITS_PBM, GRAY_PGM, COLOUR_PPM = map(encoded, (BITS_IMAGE, GRAY_IMAGE, COLOUR_IMAGE))
PALETTE_PPM = ppm([[PALETTE[i] for i in row] for row in INDICES])
NIBBLES = [bytes((row + [0])[i] << 4 | (row + [0])[i + 1] for i in range(0, WIDTH, 2)) for row in INDICES]
WIDE = [bytes(b for v in row for b in (v, v)) for row in GRAY]  # 16 bits whose upper byte says it all
WIDE_IMAGE = Image.frombytes("I;16B", (WIDTH, HEIGHT), b"".join(WIDE))


def turned(rows):
    return list(zip(*rows[::-1]))  # a quarter turn clockwise


def exif(orientation, dpi=None, order="<"):
    block = Image.Exif()
    block.endian = order
    block[0x112] = orientation
    if dpi:
        block[0x11A] = block[0x11B] = dpi
        block[0x128] = 2
    return block


def on_white(rows):
    """What pixels with alpha show on paper."""
    return [[tuple((v * p[-1] + 255 * (255 - p[-1]) + 127) // 255 for v in p[:-1]) for p in row] for row in rows]


class ReadTest(CommandTest):
    def test_every_kind_reads_as_its_pixels(self):
        gray_alpha, colour_alpha = ([[(*(v if isinstance(v, tuple) else (v,)), a) for v, a in zip(*r)]
                                     for r in zip(rows, ALPHA)] for rows in (GRAY, COLOUR))
        flat_rows = [bytes(b for pixel in row for v in pixel for b in (v, v)) for row in COLOUR]
        cases = {
            "1.png": (encoded(BITS_IMAGE, "PNG"), BITS_PBM),
            "1-white-first.png": (encoded(image([[1 - v for v in r] for r in BITS], "P", [(255,) * 3, (0,) * 3]), "PNG"),
                                  BITS_PBM),
            "4-palette.png": (encoded(image(INDICES, "P", PALETTE), "PNG"), PALETTE_PPM),
            "4-gray-palette.png": (encoded(image(INDICES, "P", GRAYS), "PNG"), pgm([[15 * i for i in r] for r in INDICES])),
            "4-gray.png": (png(WIDTH, HEIGHT, 4, 0, NIBBLES), pgm([[17 * i for i in row] for row in INDICES])),
            "8.png": (encoded(GRAY_IMAGE, "PNG"), GRAY_PGM),
            "16.png": (png(WIDTH, HEIGHT, 16, 0, WIDE), GRAY_PGM),
            "24.png": (encoded(COLOUR_IMAGE, "PNG"), COLOUR_PPM),
            "48.png": (png(WIDTH, HEIGHT, 16, 2, flat_rows), COLOUR_PPM),
            "gray-alpha.png": (encoded(image(gray_alpha, "LA"), "PNG"), pgm([[v for v, in r] for r in on_white(gray_alpha)])),
            "alpha.png": (encoded(image(colour_alpha, "RGBA"), "PNG"), ppm(on_white(colour_alpha))),
            "clear-colour.png": (encoded(image(INDICES, "P", PALETTE), "PNG", transparency=1),
                                 ppm([[(255,) * 3 if i == 1 else PALETTE[i] for i in r] for r in INDICES])),
            "exif.png": (encoded(GRAY_IMAGE, "PNG", exif=exif(6)), pgm(turned(GRAY))),
            "exif-motorola.png": (encoded(GRAY_IMAGE, "PNG", exif=exif(6, order=">")), pgm(turned(GRAY))),
            "1.bmp": (encoded(BITS_IMAGE, "BMP"), BITS_PBM),
            "1-colours.bmp": (bmp(2, 1, 1, [b"\x40"], [(9, 8, 7), (1, 2, 3)]), ppm([[(9, 8, 7), (1, 2, 3)]])),
            "4.bmp": (bmp(WIDTH, HEIGHT, 4, NIBBLES[::-1], PALETTE), PALETTE_PPM),
            "8.bmp": (encoded(GRAY_IMAGE, "BMP"), GRAY_PGM),
            "16.bmp": (bmp(2, 1, 16, [struct.pack("<HH", 0x7C00, 0x001F)]), ppm([[(255, 0, 0), (0, 0, 255)]])),
            "565.bmp": (bmp(2, 1, 16, [struct.pack("<HH", 0x07E0, 0xF800)], compression=3, masks=(0xF800, 0x7E0, 0x1F)),
                        ppm([[(0, 255, 0), (255, 0, 0)]])),
            "24.bmp": (encoded(COLOUR_IMAGE, "BMP"), COLOUR_PPM),
            "top-down.bmp": (bmp(1, -2, 24, [b"\1\2\3", b"\4\5\6"]), ppm([[(3, 2, 1)], [(6, 5, 4)]])),
            "32.bmp": (encoded(image([[(3, 2, 1, 0)]], "RGBA"), "BMP"), ppm([[(3, 2, 1)]])),
            # a run of 3, 3 as they are (padded), end of row, skip to (1, 1), one, end
            "rle8.bmp": (bmp(6, 2, 8, b"\3\7\0\3\1\2\3\0\0\0\0\2\1\0\1\5\0\1", [(i,) * 3 for i in range(256)], 1),
                         pgm([[0, 5, 0, 0, 0, 0], [7, 7, 7, 1, 2, 3]])),
            "rle4.bmp": (bmp(5, 1, 4, b"\3\x12\2\x34\0\1", PALETTE, 2), ppm([[PALETTE[i] for i in (1, 2, 1, 3, 4)]])),
            "plain.pbm": (b"P1\n# words\n3 2\n0 1 1\n101", pbm([[1, 0, 0], [0, 1, 0]])),
            "plain.ppm": (b"P3 1 1 15 15 0 5", ppm([[(255, 0, 85)]])),
            "16.pgm": (b"P5 2 1 65535\n\0\0\xff\xff", pgm([[0, 255]])),
            "1.tif": (encoded(BITS_IMAGE, "TIFF", compression="group4"), BITS_PBM),
            "1-white-0.tif": (encoded(BITS_IMAGE, "TIFF", tiffinfo={262: 0}), BITS_PBM),
            "8.tif": (encoded(GRAY_IMAGE, "TIFF", compression="tiff_lzw"), GRAY_PGM),
            "16.tif": (encoded(WIDE_IMAGE, "TIFF"), GRAY_PGM),
            "24.tif": (encoded(COLOUR_IMAGE, "TIFF", compression="tiff_adobe_deflate"), COLOUR_PPM),
            "palette.tif": (encoded(image(INDICES, "P", PALETTE), "TIFF"), PALETTE_PPM),
            "alpha.tif": (encoded(image([[(9, 8, 7, 255), (9, 8, 7, 0)]], "RGBA"), "TIFF"), ppm([[(9, 8, 7), (255,) * 3]])),
            "tiles.tif": (encoded(GRAY_IMAGE, "TIFF", tiffinfo={322: 16, 323: 16, 324: (4096,), 325: (256,)})
                          .ljust(4096, b"\0") + GRAY_IMAGE.crop((0, 0, 16, 16)).tobytes(), GRAY_PGM),
            "content-decides.bmp": (encoded(GRAY_IMAGE, "PNG"), GRAY_PGM),
        }
        for name, (content, expected) in cases.items():
            with self.subTest(name):
                self.write(name, content)
                self.assertEqual(self.as_pnm(name), expected)

    def test_orientations(self):
        rows = [[1, 2, 3], [4, 5, 6]]
        upright = {1: rows, 2: [r[::-1] for r in rows], 3: [r[::-1] for r in rows[::-1]], 4: rows[::-1],
                   5: list(zip(*rows)), 6: turned(rows), 7: [r[::-1] for r in list(zip(*rows))[::-1]],
                   8: list(zip(*rows))[::-1], 9: rows}
        for orientation, expected in upright.items():
            with self.subTest(orientation):
                for make, bits in ((pgm, 255), (pbm, 1)):
                    stored = image([[v & bits for v in r] for r in rows], "1" if bits == 1 else "L")
                    self.write("o.tif", encoded(stored, "TIFF", tiffinfo={274: orientation}))
                    self.assertEqual(self.as_pnm("o.tif"), make([[v & bits for v in r] for r in expected]))


class PhotographsTest(CommandTest):
    """WebP and HEIC, which a build reads where it found their libraries."""

    def setUp(self):
        super().setUp()
        self.photo = Image.open(SAMPLES / "card-colour.jpg").resize((115, 76))
        self.clear = self.photo.convert("RGBA")
        self.clear.putalpha(Image.linear_gradient("L").resize(self.photo.size))
        self.on_white = Image.alpha_composite(Image.new("RGBA", self.photo.size, "white"), self.clear).convert("RGB")

    def need(self, kind):
        if kind not in self.succeed("--version").decode():
            self.skipTest(f"this build does not read {kind}")

    def heic(self, *pictures):
        if not shutil.which("heif-enc"):
            self.skipTest("no heif-enc here (Debian: libheif-examples)")
        for i, picture in enumerate(pictures):
            picture.save(self.folder / f"{i}.png", dpi=(300, 300))
        subprocess.run(["heif-enc", "-q", "95", *(f"{i}.png" for i in range(len(pictures))), "-o", "made.heic"],
                       cwd=self.folder, check=True, capture_output=True)
        return self.read("made.heic")

    def check(self, content, *expected, most=0):
        """most: by how much samples may differ; on average by 2."""
        self.write("in", content)
        self.succeed("rotate", "-a", "0", "in", "-o", "out.tif")
        seen = self.open("out.tif")
        self.assertEqual(seen.n_frames, len(expected))
        for i, picture in enumerate(expected):
            seen.seek(i)
            self.assertEqual((seen.mode, seen.size), ("RGB", picture.size))
            difference = ImageStat.Stat(ImageChops.difference(seen.convert("RGB"), picture))
            self.assertLessEqual(max(high for _, high in difference.extrema), most)
            self.assertLessEqual(max(difference.mean), 2 if most else 0)
        seen.seek(0)
        return seen.tag_v2.get(282)

    def refuse(self, content):
        self.write("in", content)
        self.fail_with(3, r"115 x 76 pixels are more than 8739 \(", "rotate", "-a", "0", "in", "-o", "x.tif", "--max-pixels", "8739")
        for size in (20, len(content) // 2, len(content) - 40):
            self.write("in", content[:size])
            self.fail_with(3, "in: (WebP|HEIC)", "rotate", "-a", "0", "in", "-o", "x.tif")

    def test_webp(self):
        self.need("WebP")
        turned = {274: 6, 282: 240.0, 283: 240.0, 296: 2}
        facts = Image.Exif()
        facts.update(turned)
        dpi = self.check(encoded(self.photo, "WEBP", lossless=True, exif=facts), self.photo.transpose(Image.Transpose.ROTATE_270))
        self.assertEqual(dpi, 240)
        self.assertIsNone(self.check(encoded(self.photo, "WEBP", lossless=True), self.photo))
        self.check(encoded(self.clear, "WEBP", lossless=True), self.on_white, most=4)
        self.refuse(encoded(self.photo, "WEBP"))
        self.write("in", encoded(self.photo, "WEBP", save_all=True, append_images=[self.on_white]))
        self.fail_with(3, "animations are not read", "rotate", "-a", "0", "in", "-o", "x.tif")

    def test_heic(self):
        self.need("HEIC")
        self.check(self.heic(self.photo, self.on_white), self.photo, self.on_white, most=64)
        self.check(self.heic(self.clear), self.on_white, most=64)
        self.refuse(self.heic(self.photo))


class ResolutionTest(CommandTest):
    def test_is_kept_from_every_kind_in_every_kind(self):
        gray, colour = Image.new("L", (8, 4)), Image.new("RGB", (8, 4))
        sources = {  # file, dots per inch or None
            "png": (encoded(gray, "PNG", dpi=(300, 200)), (300, 200)),
            "png-turned": (encoded(gray, "PNG", dpi=(200, 300), exif=exif(6)), (300, 200)),
            "png-no-unit": (with_chunk(encoded(gray, "PNG"), b"pHYs", struct.pack(">IIB", 2, 1, 0)), None),
            "png-bare": (encoded(gray, "PNG"), None),
            "bmp": (encoded(colour, "BMP", dpi=(300, 300)), (300, 300)),
            "tif-inch": (encoded(gray, "TIFF", x_resolution=203.2, y_resolution=97.0, resolution_unit=2), (203.2, 97)),
            "tif-cm": (encoded(gray, "TIFF", x_resolution=100.0, y_resolution=100.0, resolution_unit=3), (254, 254)),
            "tif-no-unit": (encoded(gray, "TIFF", x_resolution=3.0, y_resolution=3.0, resolution_unit=1), None),
            "jpg": (encoded(gray, "JPEG", dpi=(150, 75)), (150, 75)),
            "jpg-exif-only": (encoded(gray, "JPEG", exif=exif(1, 240)), (240, 240)),
            "jpg-bare": (encoded(gray, "JPEG"), None),
            "pgm": (encoded(gray), None),
        }
        for name, (content, dpi) in sources.items():
            self.write("in", content)
            expected = dpi and tuple(round(v / 0.0254) for v in dpi)  # dots per metre
            for command in (["binarize", "-m", "otsu"], ["rotate", "-a", "0"]):
                for extension in ("png", "tif", "bmp"):
                    with self.subTest(name, command=command[0], extension=extension):
                        self.succeed(*command, "in", "-o", "out." + extension)
                        self.assertEqual(self.dots_per_metre("out." + extension), expected)

    def dots_per_metre(self, name):
        picture = self.open(name)
        if picture.format == "TIFF":
            self.assertIn(picture.tag_v2.get(296), (2, None))
            dpi = picture.tag_v2.get(282), picture.tag_v2.get(283)
        else:
            dpi = picture.info.get("dpi", (0, 0))
        return tuple(round(float(v) / 0.0254) for v in dpi) if all(dpi) else None

    def test_a_quarter_turn_swaps_it(self):
        self.write("in.png", encoded(Image.new("L", (8, 4)), "PNG", dpi=(300, 200)))
        for command in (["rotate", "-a", "-90"], ["turn", "--code", "right"]):
            self.succeed(*command, "in.png", "-o", "out.png")
            self.assertEqual(self.dots_per_metre("out.png"), (7874, 11811))


class WriteTest(CommandTest):
    def test_round_trips(self):
        for kind, content in (("pbm", BITS_PBM), ("pgm", GRAY_PGM), ("ppm", COLOUR_PPM)):
            self.write("in." + kind, content)
            for extension in ("png", "tif", "bmp", kind, "pnm"):
                with self.subTest(kind, extension=extension):
                    self.succeed("rotate", "-a", "0", "in." + kind, "-o", "out." + extension)
                    self.assertEqual(encoded(self.open("out." + extension)), content)

    def test_tiff_is_g4_and_holds_every_page(self):
        self.write("in.tif", encoded(GRAY_IMAGE, "TIFF", save_all=True, append_images=[BITS_IMAGE, Image.new("RGB", (3, 2))]))
        self.succeed("binarize", "-m", "otsu", "in.tif", "-o", "out.tif")
        self.assertEqual(self.pages("out.tif"), [((WIDTH, HEIGHT), "1", 4, 0), ((WIDTH, HEIGHT), "1", 4, 0), ((3, 2), "1", 4, 0)])
        self.succeed("rotate", "-a", "0", "in.tif", "-o", "same.tif")
        self.assertEqual([page[1:3] for page in self.pages("same.tif")], [("L", 8), ("1", 4), ("RGB", 8)])

        self.fail_with(4, "out.png|3 pages", "binarize", "in.tif", "-o", "out.png")
        self.succeed("binarize", "-m", "otsu", "in.tif", "-o", "p-{page}.png")
        self.assertEqual(self.names(), ["in.tif", "out.tif", "p-1.png", "p-2.png", "p-3.png", "same.tif"])
        self.assertEqual(encoded(self.open("p-2.png")), BITS_PBM)

    def pages(self, name):
        picture, facts = self.open(name), []
        for page in range(picture.n_frames):
            picture.seek(page)
            facts.append((picture.size, picture.mode, picture.tag_v2[259], picture.tag_v2[262]))
        return facts

    def test_what_a_format_cannot_hold(self):
        self.write("in.pgm", GRAY_PGM)
        self.fail_with(4, "does not hold gray pictures: take png", "rotate", "-a", "0", "in.pgm", "-o", "out.pbm")
        self.fail_with(2, "extension must be", "binarize", "in.pgm", "-o", "out.gif")
        self.assertEqual(self.names(), ["in.pgm"])


if __name__ == "__main__":
    main()
