# SPDX-License-Identifier: MIT
"""Clean black and white, components, text lines and the logo from scans of business cards.

    import tavrix
    clean = tavrix.binarize("card.jpg")               # bool array of height x width, True is white
    tavrix.to_image(clean).save("card.png", dpi=(300, 300))
    for line in tavrix.lines(clean):
        print(line.left, line.top, line.right, line.bottom)
    print(tavrix.card("card.jpg").logo)

Pictures are NumPy arrays (rows top-down: height x width of uint8 gray or bool, height x width x 3 of uint8 red,
green, blue, x 4 with transparency), pictures of Pillow, paths, or bytes. All boxes are inclusive columns and rows
counted from the top left. Arrays that are given are never changed. Functions may run on several threads at the
same time; the library works outside of the interpreter's lock.

The environment variable TAVRIX_LIBRARY names another libtavrix; the automatic mode's libtavrixauto is looked for
beside it first.
"""

from ._analysis import GROUPINGS, blocks, card, components, lines, logo, true_line
from ._operations import MODES, OPERATIONS, TURNS, binarize, binarize_automatically, morph, pad, rotate, turn
from ._pictures import Picture, read, to_image
from ._results import Automatic, Block, Box, Card, Component, Error, Line, LostTextWarning

__version__ = "1.0.0"
__all__ = [
    "Automatic", "Block", "Box", "Card", "Component", "Error", "GROUPINGS", "Line", "LostTextWarning", "MODES",
    "OPERATIONS", "Picture", "TURNS", "binarize", "binarize_automatically", "blocks", "card", "components", "lines",
    "logo", "morph", "pad", "read", "rotate", "to_image", "true_line", "turn",
]
