# SPDX-License-Identifier: MIT
"""What the module takes, refuses and leaves alone; that its results are right, command_test.py has."""

import io
import os
import pathlib
import subprocess
import tempfile
import threading
import unittest

import numpy
import PIL.Image

import tavrix

SAMPLE = pathlib.Path(__file__).resolve().parents[2] / "samples/card-colour.jpg"


def encoded(image, **options):
    file = io.BytesIO()
    image.save(file, **options)
    return file.getvalue()


class PicturesTest(unittest.TestCase):
    def setUp(self):
        generator = numpy.random.default_rng(1)
        self.colour = generator.integers(0, 256, (37, 53, 3), numpy.uint8)
        self.gray = self.colour[:, :, 0].copy()
        self.bits = self.gray > 100

    def test_one_picture_in_many_shapes(self):
        opaque = numpy.dstack([self.colour, numpy.full((37, 53), 255, numpy.uint8)])
        wide = numpy.zeros((37, 60, 3), numpy.uint8)
        wide[:, 3:56] = self.colour
        colours = [self.colour, numpy.asfortranarray(self.colour), self.colour[::-1, ::-1].copy()[::-1, ::-1],
                   wide[:, 3:56], opaque, opaque[:, :, :3], memoryview(self.colour), PIL.Image.fromarray(self.colour),
                   PIL.Image.fromarray(opaque), encoded(PIL.Image.fromarray(self.colour), format="PNG")]
        grays = [self.gray, self.colour[:, :, 0], self.gray.T.copy().T, PIL.Image.fromarray(self.gray),
                 encoded(PIL.Image.fromarray(self.gray), format="TIFF")]
        all_bits = [self.bits, numpy.asfortranarray(self.bits), PIL.Image.fromarray(self.bits),
                    encoded(PIL.Image.fromarray(self.bits), format="PNG")]
        for mode in ("isodata", "local"):
            for pictures in (colours, grays, all_bits):
                expected = tavrix.binarize(pictures[0], mode)
                for i, picture in enumerate(pictures[1:]):
                    if isinstance(picture, memoryview):
                        result = tavrix.binarize(picture.tobytes(), mode, 53, 37)
                    else:
                        result = tavrix.binarize(picture, mode)
                    self.assertTrue((result == expected).all(), f"{mode}, picture {i + 1} of {picture.__class__}")
        self.assertTrue((tavrix.binarize(self.bits) == self.bits).all())

    def test_arrays_are_left_alone(self):
        for array in (self.colour, self.gray, self.bits):
            before = array.copy()
            array.flags.writeable = False
            for function in (tavrix.binarize, tavrix.card, tavrix.pad):
                function(array, "regions")
            tavrix.morph(array, "smooth")
            self.assertTrue((array == before).all())

    def test_transparency_lies_on_white(self):
        picture = numpy.zeros((8, 8, 4), numpy.uint8)
        picture[2:4, :, 3] = 255
        for given in (picture, encoded(PIL.Image.fromarray(picture), format="PNG"),
                      PIL.Image.fromarray(picture[:, :, [0, 3]])):
            self.assertEqual((~tavrix.binarize(given, "isodata")).sum(), 16)

    def test_sides(self):
        generator = numpy.random.default_rng(1)
        for height, width in ((0, 0), (0, 5), (1, 1), (3, 33), (40, 7)):
            bits = generator.random((height, width)) < 0.5
            for mode in ("auto", "isodata"):
                self.assertTrue((tavrix.binarize(bits, mode) == bits).all())
                self.assertEqual(tavrix.binarize(bits.astype(numpy.uint8), mode).shape, (height, width))

    def test_files(self):
        turned = PIL.Image.fromarray(self.colour)
        exif = turned.getexif()
        exif[0x0112] = 6  # lies on its left side
        pages = [PIL.Image.fromarray(self.bits), PIL.Image.fromarray(~self.bits)]
        self.assertEqual(tavrix.read(encoded(turned, format="JPEG", exif=exif)).shape, (53, 37, 3))
        book = encoded(pages[0], format="TIFF", save_all=True, append_images=pages[1:])
        self.assertTrue((tavrix.read(book, page=1) == ~self.bits).all())
        deep = PIL.Image.fromarray(self.gray.astype(numpy.uint16) * 257)
        self.assertTrue((tavrix.read(encoded(deep, format="PNG")) == self.gray).all())
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "bits.tif")
            tavrix.to_image(self.bits).save(path, compression="group4")
            self.assertTrue((tavrix.read(path) == self.bits).all())
            with self.assertRaises(IndexError):
                tavrix.read(path, page=1)

    def test_says_what_to_give_instead(self):
        gray, jpeg = self.gray, SAMPLE.read_bytes()
        cases = (
            (TypeError, "255 \\* array", lambda: tavrix.binarize(gray / 255)),
            (TypeError, ">> 8", lambda: tavrix.binarize(gray.astype(numpy.uint16))),
            (TypeError, "height x width", lambda: tavrix.rotate(gray[0], 90)),
            (TypeError, "cannot take list", lambda: tavrix.binarize([[0]])),
            (TypeError, "go together", lambda: tavrix.binarize(b"1234", width=2)),
            (ValueError, "leave width and height out", lambda: tavrix.binarize(jpeg, width=2, height=2)),
            (ValueError, "at most 32767", lambda: tavrix.binarize(numpy.zeros((1, 32768), numpy.uint8))),
            (ValueError, "scale 3", lambda: tavrix.binarize(numpy.zeros((1, 20000), numpy.uint8), scale=3)),
            (ValueError, "none of 1, 2, 3", lambda: tavrix.binarize(gray, scale=4)),
            (ValueError, "only mode auto", lambda: tavrix.binarize(gray, 5, scale=2)),
            (ValueError, "local, otsu", lambda: tavrix.binarize(gray, "none")),
            (ValueError, "local, otsu", lambda: tavrix.binarize(gray, 7)),
            (ValueError, "by blocks", lambda: tavrix.binarize(gray, "sharp", by_blocks=True)),
            (ValueError, "0 to 52", lambda: tavrix.turn(gray, block=(53, 0, 60, 9))),
            (ValueError, "3600", lambda: tavrix.rotate(gray, float("nan"))),
            (ValueError, "text, aligned", lambda: tavrix.blocks(gray, group="all")),
            (ValueError, "pair", lambda: tavrix.components(gray, noise=(1, -1))),
            (ValueError, "margin", lambda: tavrix.pad(numpy.ones((1, 32767), bool))),
            (tavrix.Error, "not a picture", lambda: tavrix.card(b"")),
            (tavrix.Error, "cannot be read", lambda: tavrix.card(jpeg[:20000])),
            (FileNotFoundError, "missing.png", lambda: tavrix.card("missing.png")),
        )
        for error, words, call in cases:
            with self.subTest(words), self.assertRaisesRegex(error, words):
                call()


class ResultsTest(unittest.TestCase):
    def test_components_count_from_the_top(self):
        bits = numpy.ones((10, 20), bool)
        bits[1, 2] = bits[2, 3] = False  # touch at a corner
        bits[7:9, 10:14] = False
        self.assertEqual(tavrix.components(bits), [(2, 1, 3, 2, 2), (10, 7, 13, 8, 8)])

    def test_more_components_than_a_store_begins_with(self):
        bits = numpy.ones((100, 100), bool)
        bits[::2, ::2] = False
        for _ in range(2):  # with a store that was used already, too
            found = tavrix.components(bits)
            self.assertEqual(len(found), 2500)
            self.assertTrue(all(box.left == box.right and box.pixels == 1 for box in found))

    def test_warns_of_lost_text(self):
        picture = numpy.random.default_rng(1).choice(numpy.array([0, 90, 255], numpy.uint8), (200, 300))
        with self.assertWarns(tavrix.LostTextWarning) as caught:
            tavrix.binarize(picture)
        self.assertEqual(caught.filename, __file__)
        self.assertTrue(tavrix.binarize_automatically(picture).warnings)

    def test_two_levels_stay(self):
        levels = numpy.full((20, 30), 200, numpy.uint8)
        levels[5:9, 5:9] = 190
        for picture in (levels, numpy.dstack([levels] * 3)):
            self.assertEqual((~tavrix.binarize(picture, "otsu")).sum(), 16)

    def test_threads(self):
        pictures = [numpy.rot90(tavrix.read(SAMPLE), k) for k in range(4)]
        expected = [tavrix.card(picture, "regions")[1:] for picture in pictures]
        got = [None] * 4

        def work(i):
            got[i] = [tavrix.card(pictures[i], "regions")[1:] for _ in range(3)]
        threads = [threading.Thread(target=work, args=(i,)) for i in range(4)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(got, [[card] * 3 for card in expected])

    def test_version(self):
        version = subprocess.run([os.environ["TAVRIX_COMMAND"], "--version"], stdout=subprocess.PIPE, encoding="utf-8")
        self.assertIn(f"tavrix {tavrix.__version__}\n", version.stdout)


if __name__ == "__main__":
    unittest.main()
