# SPDX-License-Identifier: MIT
import unittest

import numpy

import tavrix


def card_picture():
    """Paper with two rows of letter-like marks and a large solid mark."""
    picture = numpy.full((300, 500), 210, numpy.uint8)
    for row, height in ((60, 30), (150, 18)):
        for i in range(12):
            picture[row:row + height, 40 + i * 24:40 + i * 24 + 14] = 35
    picture[200:270, 380:450] = 40
    return picture


class BinarizeTest(unittest.TestCase):
    def test_splits_ink_from_paper_for_arrays_and_bytes(self):
        picture = card_picture()
        expected = picture > 100
        for mode in ("isodata", 6):
            self.assertTrue((tavrix.binarize(picture, mode) == expected).all())
        data = tavrix.binarize(picture.tobytes(), "isodata", width=500, height=300)
        self.assertEqual(data, numpy.where(expected, 255, 0).astype(numpy.uint8).tobytes())

    def test_chooses_by_itself(self):
        picture = numpy.full((200, 400), 220, numpy.uint8)
        picture[100:] = 30  # a dark band
        marks = numpy.zeros(picture.shape, bool)
        for x in range(20, 380, 20):
            for y in (40, 140):
                marks[y:y + 20, x:x + 4] = marks[y + 16:y + 20, x:x + 10] = True  # like an L
        picture[marks] = 250 - picture[marks]
        picture = (picture * numpy.linspace(1, 0.5, 400)).astype(numpy.uint8)  # in a shade
        ink = ~tavrix.binarize(picture)
        self.assertGreater(ink[marks].mean(), 0.9, "light marks on the dark band come out dark, too")
        self.assertLess(ink[~marks].mean(), 0.05)

    def test_colour_goes_through_gray(self):
        picture = numpy.zeros((8, 5, 3), numpy.uint8)
        picture[:, :2] = (255, 255, 0)  # 226 in gray
        picture[:, 2:] = (0, 0, 255)  # 29 in gray
        result = tavrix.binarize(picture, "isodata")
        self.assertTrue(result[:, :2].all() and not result[:, 2:].any())
        self.assertEqual(tavrix.binarize(picture.tobytes(), "isodata", 5, 8)[:5], b"\xff\xff\0\0\0")

    def test_odd_sides_and_bits(self):
        generator = numpy.random.default_rng(1)
        for height, width in ((0, 0), (1, 1), (3, 33), (40, 7)):
            bits = generator.random((height, width)) < 0.5
            self.assertTrue((tavrix.binarize(bits) == bits).all())

    def test_refuses_what_it_cannot_take(self):
        for arguments in ((numpy.zeros((2, 2), float),), (b"123",), (b"123", "local", 2, 2),
                          (numpy.zeros((2, 2), numpy.uint8), "none"), (numpy.zeros((1, 32768), numpy.uint8),)):
            with self.assertRaises((TypeError, ValueError)):
                tavrix.binarize(*arguments)


class ComponentsTest(unittest.TestCase):
    def test_boxes_are_top_down(self):
        bits = numpy.ones((10, 20), bool)
        bits[1, 2] = bits[2, 3] = False  # touch at a corner
        bits[7:9, 10:14] = False
        self.assertCountEqual(tavrix.components(bits), [(2, 1, 3, 2, 2), (10, 7, 13, 8, 8)])

    def test_card(self):
        card = tavrix.card(card_picture(), "isodata")
        self.assertEqual(len(card.components), 25)
        self.assertIn((40, 60, 40 + 11 * 24 + 13, 89), card.lines)
        self.assertIn(card.true_line, card.lines)
        self.assertEqual(card.logo, (380, 200, 449, 269))


if __name__ == "__main__":
    unittest.main()
