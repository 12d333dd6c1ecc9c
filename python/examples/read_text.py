# SPDX-License-Identifier: MIT
"""read_text.py PICTURE: the text of a picture, cleaned and then read by Tesseract.

Needs pytesseract, or Debian's python3-tesserocr, and tesseract-ocr-eng.
"""

import sys

import tavrix

try:
    from pytesseract import image_to_string
except ImportError:
    from tesserocr import image_to_text as image_to_string


def main(picture):
    clean = tavrix.binarize(picture, scale=0)  # twice the size where the type is small: it is read better
    print(image_to_string(tavrix.to_image(clean)))


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
