# SPDX-License-Identifier: MIT
"""Pictures turned and photographed at an angle: how exactly the command finds out. Prints the errors."""
import math
import random
import re
import unittest

from PIL import ImageChops, ImageDraw, ImageFilter, ImageFont, ImageOps
from support import *

WORDS = ("the quick brown fox jumps over lazy dogs while bright vixens help every able judge find proper text "
         "during long days of scanning and filing small old letters").split()
CARD, CARD_SKEW = SAMPLES / "card-colour.jpg", 0.6  # degrees
DESKS = {"dark wood": ((70, 55, 40), 9), "gray": ((150, 152, 155), 2), "pale": ((236, 234, 230), 1)}


def text_page(width=900, height=700, paper=(250, 249, 245), ink=(30, 30, 40), letter=2, lines=16, seed=1, words=WORDS, spacing=0):
    """Lines of words in Pillow's own font, enlarged."""
    picture, font, choice = Image.new("RGB", (width, height), paper), ImageFont.load_default(), random.Random(seed)
    for i in range(lines):
        text = " ".join(choice.choice(words) for _ in range(width // (44 * letter)))
        mask = Image.new("L", (font.getbbox(text)[2] + spacing * len(text), font.getbbox(text)[3]), 0)
        x = 0
        for character in text:
            ImageDraw.Draw(mask).text((x, 0), character, fill=255, font=font)
            x += font.getlength(character) + spacing * (character != " ")
        mask = mask.resize((mask.width * letter, mask.height * letter), Image.BICUBIC)
        picture.paste(ink, (width // 12, height // 12 + i * (height * 10 // 12) // lines), mask)
    return picture


def grainy(size, colour, noise, seed=3):
    grain = Image.effect_noise(size, 4 * noise).filter(ImageFilter.GaussianBlur(1))
    ground = Image.new("RGB", size, colour)
    return ImageChops.add(ground, Image.merge("RGB", [grain] * 3), 1, -128)


def photographed(card, corners, desk):
    """The card drawn into the desk with its corners there: top left, top right, bottom right, bottom left."""
    (w, h), rows, rim = card.size, [], 4  # pixels around the card, for its edges not to mix with black
    card = ImageOps.expand(card, rim, card.getpixel((2, 2)))
    for (x, y), (u, v) in zip(corners, ((rim, rim), (rim + w, rim), (rim + w, rim + h), (rim, rim + h))):
        rows += [([x, y, 1, 0, 0, 0, -u * x, -u * y], u), ([0, 0, 0, x, y, 1, -v * x, -v * y], v)]
    factors = solved(rows)
    placed = card.transform(desk.size, Image.PERSPECTIVE, factors, Image.BICUBIC)
    mask = Image.new("L", (4 * desk.width, 4 * desk.height), 0)
    ImageDraw.Draw(mask).polygon([(4 * x, 4 * y) for x, y in corners], fill=255)
    picture = desk.copy()
    picture.paste(placed, (0, 0), mask.resize(desk.size, Image.BOX))
    return picture.filter(ImageFilter.GaussianBlur(0.7))


def solved(rows):
    """Linear equations, by elimination."""
    rows = [list(left) + [right] for left, right in rows]
    for i in range(len(rows)):
        pivot = max(range(i, len(rows)), key=lambda k: abs(rows[k][i]))
        rows[i], rows[pivot] = rows[pivot], rows[i]
        rows[i] = [v / rows[i][i] for v in rows[i]]
        for k in range(len(rows)):
            if k != i:
                rows[k] = [v - rows[k][i] * u for v, u in zip(rows[k], rows[i])]
    return [row[-1] for row in rows]


class StraightenTest(CommandTest):
    def remark(self, picture, *options):
        picture.save(self.folder / "in.png")
        result = self.run_command("binarize", "in.png", "-m", "otsu", "-v", *options, "-o", "out.png")
        self.assertEqual(result.returncode, 0, result.stderr)
        return result.stderr.decode()

    def angle(self, picture):
        found = re.search(r"by (-?[\d.]+) degrees", self.remark(picture, "--straighten"))
        return float(found[1]) if found else 0.0

    def corners(self, picture):
        found = re.search(r"corners((?: [\d.]+,[\d.]+){4})", self.remark(picture, "--crop"))
        return [tuple(map(float, pair.split(","))) for pair in found[1].split()] if found else None

    def test_small_angles(self):
        pages = {"page": text_page(), "light on dark": text_page(paper=(25, 30, 60), ink=(240, 240, 230), lines=8, letter=3),
                 "card": Image.open(CARD).convert("RGB").rotate(-CARD_SKEW, Image.BICUBIC).crop((75, 75, 1115, 735))}
        for name, page in pages.items():
            errors = []
            for angle in (-10, -6.3, -1.7, 0, 0.4, 3.2, 8.6, 10):  # counter-clockwise
                turned = page.rotate(angle, Image.BICUBIC, expand=True, fillcolor=page.getpixel((2, 2)))
                errors.append(abs(self.angle(turned) - angle))
            print("%s: angles within %.2f degrees" % (name, max(errors)))
            self.assertLessEqual(max(errors), 0.3, (name, errors))

    def test_quarters(self):
        page, capitals = text_page(), text_page(1200, 700, lines=10, words=[word.upper() for word in WORDS], spacing=1)
        said = {0: None, 90: "a quarter to the right", 180: "upside down", 270: "a quarter to the left"}
        for angle, words in said.items():
            for upright in capitals, page:
                remark = self.remark(upright.rotate(angle, expand=True), "--straighten")
                self.assertIn(words or "not turned", remark)
                self.assertEqual(self.open("out.png").size, upright.size)
        straight = self.open("out.png").tobytes()
        self.remark(page)
        self.assertEqual(straight, self.open("out.png").tobytes(), "quarters are exact")
        for size in ((32767, 1), (32767, 40), (5, 5)):
            self.assertIn("left as it is", self.remark(Image.new("L", size, 200), "--straighten", "--crop"))
        figures = text_page(words=["%05d" % (i * 7919 % 100000) for i in range(1, 60)])  # stems to the right
        for picture in figures, Image.new("RGB", (300, 200), "white"):
            self.assertIn("not turned", self.remark(picture, "--straighten"))

    def test_corners(self):
        cards = {"white": text_page(850, 540, lines=7), "dark": text_page(850, 540, (40, 20, 60), (240, 230, 220), lines=6),
                 "colour": Image.open(CARD).convert("RGB").rotate(-CARD_SKEW, Image.BICUBIC).crop((75, 75, 1115, 735))}
        views = {"turned": [(200, 90), (960, 190), (890, 690), (130, 590)],
                 "from below": [(250, 130), (830, 140), (960, 650), (120, 640)],
                 "from the side": [(140, 100), (900, 190), (890, 570), (150, 680)]}
        for name, card in cards.items():
            for desk_name, (colour, noise) in DESKS.items():
                errors = []
                for view, corners in views.items():
                    desk = grainy((1080, 760), colour, noise)
                    found = self.corners(photographed(card, corners, desk))
                    self.assertIsNotNone(found, (name, desk_name, view))
                    errors.append(max(math.dist(a, b) for a, b in zip(found, corners)) / math.hypot(1080, 760))
                print("%s card on %s: corners within %.2f %% of the diagonal" % (name, desk_name, 100 * max(errors)))
                self.assertLessEqual(max(errors), 0.01, (name, desk_name, errors))

    def test_no_text_is_cut_off(self):
        page = text_page(1000, 800, lines=14)
        for box, colour in (((40, 200, 960, 420), (20, 120, 60)), ((500, 0, 1000, 800), (200, 190, 90))):
            banded = ImageChops.multiply(page, Image.new("RGB", page.size, "white"))
            banded.paste(ImageChops.multiply(page.crop(box), Image.new("RGB", (box[2] - box[0], box[3] - box[1]), colour)), box)
            self.assertIsNone(self.corners(banded), "coloured fields on a page are no sheet")
            self.assertEqual(self.open("out.png").size, page.size)
        # A sheet that leaves the picture on three sides, a dark lid on the fourth.
        lid = Image.new("RGB", (1000, 800), (25, 25, 25))
        lid.paste(page, (60, 0))
        found = self.corners(lid)
        for (x, y), (u, v) in zip(found, ((60, 0), (1000, 0), (1000, 800), (60, 800))):
            self.assertLess(math.hypot(x - u, y - v), 5)


class ScanTest(CommandTest):
    def black(self, name):
        return self.open(name).convert("L").histogram()[0]

    def test_a_photograph_comes_out_clean(self):
        card, desk = text_page(850, 540, lines=7), grainy((1080, 760), *DESKS["dark wood"])
        ImageDraw.Draw(card).line((60, 500, 780, 500), fill=(30, 30, 40), width=3)
        card.save(self.folder / "card.png")
        photographed(card, [(250, 130), (830, 140), (960, 650), (120, 640)], desk).save(self.folder / "in.png", dpi=(200, 200))
        self.succeed("binarize", "card.png", "-o", "ideal.png")
        self.succeed("scan", "in.png", "-o", "out.png")
        width, height = self.open("out.png").size
        self.assertTrue(825 < width < 865 and 500 < height < 545, (width, height))
        self.assertAlmostEqual(self.black("out.png") / (width * height), self.black("ideal.png") / (850 * 540), delta=0.02)
        border = ImageOps.invert(self.open("out.png").convert("L"))
        border.paste(0, (4, 4, width - 4, height - 4))
        self.assertIsNone(border.getbbox(), "nothing of the desk is left")
        rule = self.open("out.png").convert("L").crop((0, height * 9 // 10, width, height - 5)).histogram()[0]
        self.assertGreater(rule, 1000, "rules are no specks")
        self.succeed("scan", "in.png", "--no-crop", "--no-straighten", "-o", "whole.png")
        self.assertEqual(self.open("whole.png").size, (1080, 760))
        self.succeed("scan", "in.png", "card.png", "-q", "-o", "all.pdf")
        self.assertEqual(self.read("all.pdf").count(b"/CCITTFaxDecode"), 2)

    def test_resolution(self):
        text_page(400, 300, lines=6).save(self.folder / "in.png", dpi=(200, 200))
        for options, size, dpi in ((("--dpi", 300), (600, 450), 300), (("--dpi", 100), (200, 150), 100), (("--scale", 3), (1200, 900), 600)):
            self.succeed("binarize", "in.png", "-m", "otsu", *options, "-o", "out.png")
            self.assertEqual((self.open("out.png").size, round(self.open("out.png").info["dpi"][0])), (size, dpi))
        text_page(400, 300, lines=6).save(self.folder / "in.png")
        self.fail_with(1, "take --scale", "binarize", "in.png", "--dpi", "300", "-o", "out.png")
        self.fail_with(2, "--scale", "binarize", "in.png", "--dpi", "300", "--scale", "2", "-o", "out.png")


if __name__ == "__main__":
    main()
