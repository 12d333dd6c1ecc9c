#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Draws the sample scans: a business card of nobody, as a flatbed scanner at 300 dpi would see it.

Needs Debian's python3-numpy, python3-pil and fonts-dejavu-core. The same packages give the same pictures.
Usage: draw_card.py [FOLDER]
"""
import math
import pathlib
import sys

import numpy as np
from PIL import Image, ImageDraw, ImageFilter, ImageFont

DPI = 300
CARD = (1004, 650)  # 85 x 55 mm
SCAN = (1150, 760)
OVERSAMPLING = 2
SKEW = 0.6  # degrees
FONTS = pathlib.Path("/usr/share/fonts/truetype/dejavu")

PAPER = (246, 243, 234)
INK = (38, 40, 48)
FAINT_INK = (120, 122, 126)
BLUE = (24, 74, 134)
BAND = (205, 220, 232)

TEXTS = [  # x, y, size, font, colour, text; pixels of the card
    (70, 250, 58, "DejaVuSans-Bold.ttf", INK, "Marta Quillfeather"),
    (72, 322, 30, "DejaVuSerif.ttf", INK, "Keeper of Maps and Charts"),
    (72, 404, 25, "DejaVuSans.ttf", INK, "Harbour Library"),
    (72, 438, 25, "DejaVuSans.ttf", INK, "14 Lantern Row, Port Ember"),
    (72, 490, 22, "DejaVuSansMono.ttf", INK, "marta@harbour-library.example"),
    (72, 522, 22, "DejaVuSansMono.ttf", INK, "+00 555 0142 618"),
    (700, 590, 15, "DejaVuSans.ttf", FAINT_INK, "Open daily 9 to 17, Fridays to 20"),
    (360, 92, 44, "DejaVuSerif-Bold.ttf", BLUE, "HARBOUR LIBRARY"),
    (362, 150, 20, "DejaVuSans.ttf", BLUE, "maps \u00b7 charts \u00b7 voyages"),
]


def draw_logo(pen, left, top, size):
    """A compass rose: a ring and an eight-pointed star."""
    middle = size / 2
    pen.ellipse((left, top, left + size, top + size), outline=BLUE, width=int(size * 0.07))
    for i in range(8):
        angle = math.pi / 4 * i
        reach = middle * (0.98 if i % 2 == 0 else 0.55)
        points = [(angle, reach), (angle + math.pi / 8, middle * 0.2), (angle - math.pi / 8, middle * 0.2)]
        pen.polygon([(left + middle + r * math.cos(a), top + middle + r * math.sin(a)) for a, r in points], BLUE)


def draw_card():
    scale = OVERSAMPLING
    card = Image.new("RGB", (CARD[0] * scale, CARD[1] * scale), PAPER)
    pen = ImageDraw.Draw(card)
    pen.rectangle((0, 570 * scale, CARD[0] * scale, CARD[1] * scale), BAND)
    pen.line((70 * scale, 384 * scale, 560 * scale, 384 * scale), BLUE, 3 * scale)
    draw_logo(pen, 80 * scale, 40 * scale, 170 * scale)
    for x, y, size, name, colour, text in TEXTS:
        font = ImageFont.truetype(str(FONTS / name), size * scale, layout_engine=ImageFont.Layout.BASIC)
        pen.text((x * scale, y * scale), text, colour, font)
    return card


def scan(card):
    """Lid and dark edge of the scanner, the card slightly askew, lens, uneven lamp, noise."""
    scale = OVERSAMPLING
    lid = Image.new("RGB", (SCAN[0] * scale, SCAN[1] * scale), (226, 227, 228))
    mask = Image.new("L", card.size, 255)
    turn = dict(resample=Image.Resampling.BICUBIC, expand=True)
    turned, turned_mask = card.rotate(SKEW, **turn), mask.rotate(SKEW, **turn)
    place = (60 * scale, 50 * scale)
    shadow = turned_mask.filter(ImageFilter.GaussianBlur(6 * scale))
    lid.paste((150, 150, 152), (place[0] + 3 * scale, place[1] + 4 * scale), shadow)
    lid.paste(turned, place, turned_mask)
    seen = lid.filter(ImageFilter.GaussianBlur(0.8 * scale)).resize(SCAN, Image.Resampling.BOX)

    light = np.asarray(seen, dtype=np.float64)
    y, x = np.mgrid[0 : SCAN[1], 0 : SCAN[0]]
    lamp = 1.02 - 0.20 * (x / SCAN[0]) ** 2 - 0.10 * (1 - y / SCAN[1]) ** 3
    edge = np.clip((SCAN[0] - 1 - x - 4 * np.sin(y / 90.0)) / 26.0, 0.08, 1.0)  # where the lid does not close
    edge *= np.clip((SCAN[1] - 1 - y) / 8.0, 0.15, 1.0)
    light *= (lamp * edge)[..., None]
    random = np.random.Generator(np.random.PCG64(2024))
    light += random.normal(0.0, 2.0, light.shape[:2])[..., None]  # sensor
    light += random.normal(0.0, 0.8, light.shape)
    for _ in range(60):  # dust
        cx, cy = random.integers(0, SCAN[0]), random.integers(0, SCAN[1])
        light[cy : cy + random.integers(1, 3), cx : cx + random.integers(1, 3)] -= 90
    return Image.fromarray(np.clip(light + 0.5, 0, 255).astype(np.uint8), "RGB")


def main():
    folder = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parent)
    colour = scan(draw_card())
    colour.save(folder / "card-colour.jpg", quality=90, dpi=(DPI, DPI))
    colour.convert("L").save(folder / "card-gray.png", dpi=(DPI, DPI), optimize=True)


if __name__ == "__main__":
    main()
