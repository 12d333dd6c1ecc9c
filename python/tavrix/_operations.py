# SPDX-License-Identifier: MIT
"""Pictures in, pictures out."""

from __future__ import annotations

import ctypes
import math
import warnings
from typing import NamedTuple, Optional, Sequence, TYPE_CHECKING, Tuple, Union

from ._dib import MAX_SIDE, Dib, array_of, check, dib_of, on_white
from ._native import AutomaticRecord, BlockRect, Record, automatic, library
from ._numpy import numpy
from ._pictures import Picture, pixels
from ._results import Automatic, LostTextWarning

if TYPE_CHECKING:
    import numpy

#: Names of the library's binarization modes; "auto" stands beside them.
MODES = {
    "local": 0, "otsu": 1, "midrange": 2, "peaks": 3, "gradient": 4,
    "regions": 5, "isodata": 6, "lines": 8, "sharp": 9,
}
#: How turn turns.
TURNS = {"none": 0, "right": 1, "half": 2, "left": 3, "flip": 4, "mirror-left": 5}
#: What morph does: "edge", "smooth" and "sharpen" on gray, the others on black and white.
OPERATIONS = {"edge": 0, "open": 1, "close": 2, "smooth": 3, "sharpen": 4, "dilate": 5}
_ON_BITS = (1, 2, 5)
_SCALES = (0, 1, 2, 3)
_MOST_DEGREES = 3600


def _number_of(name, names, what):
    if isinstance(name, str) and name in names:
        return names[name]
    if not isinstance(name, str) and name in names.values():
        return int(name)
    raise ValueError(f"unknown {what} {name!r}: take one of {', '.join(names)}, or its number")


class Page(NamedTuple):
    """A 1-bit image, and what the automatic mode knows about it."""

    bits: Dib
    letters: Optional[Dib] = None
    scale: int = 1
    confidence: float = 0.0
    warnings: Tuple[str, ...] = ()

    @property
    def text(self):
        """Where lines are looked for."""
        return self.letters or self.bits


def choose(array, scale=1):
    """The page of the automatic mode."""
    if scale not in _SCALES:
        raise ValueError(f"scale {scale!r} is none of 1, 2, 3 and 0 (twice where the type is small)")
    dib = dib_of(array)
    if not dib.width or not dib.height:
        return Page(dib_of(numpy.zeros(array.shape[:2], bool)))
    if max(dib.width, dib.height) * scale > MAX_SIDE:
        raise ValueError(f"a picture of {dib.width} x {dib.height} is too large for scale {scale}: take a smaller one")
    found = AutomaticRecord()
    bits = Dib.of_result(automatic("TavrixReadAutomatically")(dib.handle, scale, found) == 1, found.bits)
    letters = Dib.of_result(True, found.letters) if found.letters.header else None
    return Page(bits, letters, found.scale, found.confidence, tuple(found.warnings.decode().splitlines()))


def page_of(array, mode, scale=1):
    """The page under any mode, for a function that users call: its caller is warned."""
    if mode != "auto" or (array.dtype == bool and scale == 1):
        return Page(to_bits(array, mode))
    page = choose(array, scale)
    for text in page.warnings:
        warnings.warn(text, LostTextWarning, stacklevel=3)
    return page


def to_bits(array, mode, by_blocks=False):
    """The 1-bit image of an array under a mode of the library."""
    number = None if mode == "auto" else _number_of(mode, MODES, "mode (or auto)")
    if by_blocks and number in (None, MODES["sharp"]):
        raise ValueError(f"mode {mode} has no variant by blocks: name another mode, or leave by_blocks out")
    if array.dtype == bool:
        return dib_of(array)
    if by_blocks or number == MODES["otsu"]:
        array = _to_gray(array)
    if number == MODES["otsu"]:
        split = _two_levels(array)
        if split is not None:
            return dib_of(split)
    dib, record = dib_of(array), Record()
    function = library.Binarized_Separate_Block if by_blocks else library.Binarized
    return Dib.of_result(function(dib.handle, record, number) == 1, record)


def _to_gray(array):
    """Gray as the library weighs colours; gray, black and white are left as they are."""
    array = on_white(array)
    if array.dtype != numpy.uint8 or array.shape[2:] != (3,):
        return array
    return (0.299 * array[:, :, 0] + 0.587 * array[:, :, 1] + 0.114 * array[:, :, 2] + 0.5).astype(numpy.uint8)


def _two_levels(gray):
    """Which pixels have the higher of two levels. Every threshold between them is as good; the library's own
    choice leaves none."""
    if gray.dtype != numpy.uint8 or not gray.size:
        return None
    some = gray[::max(1, len(gray) // 16)]
    if numpy.count_nonzero(numpy.bincount(some.ravel())) > 2:  # as nearly always: no need to look at all of it
        return None
    low, high = gray.min(), gray.max()
    is_high = gray == high
    return is_high if low < high and (is_high | (gray == low)).all() else None


def binarize(picture: Picture, mode: Union[str, int] = "auto", width: Optional[int] = None,
             height: Optional[int] = None, *, scale: int = 1, by_blocks: bool = False) -> numpy.ndarray:
    """The picture in black and white: a bool array of height x width, True is white.

    picture: an array of height x width (uint8 gray, 255 is white, or bool) or height x width x 3 or 4 (uint8 red,
        green, blue, transparency, which lies on white), also a strided view; a picture of Pillow; a path; the bytes
        of a file, or raw pixels in these orders with width and height. Sides are at most 32,767.
    mode: "auto" or one of MODES.
    scale: for auto only: 1, 2 or 3, the result's sides in those of the picture; 0: twice where the type is small,
        which programs that read text like better.
    by_blocks: the variant of a mode that treats the picture as one block; colour goes through gray.

    Warns by LostTextWarning where the automatic mode may have lost text. Raises TypeError for arrays of another type
    or shape, ValueError for arguments out of range, Error for a picture that cannot be read, MemoryError.
    """
    if scale != 1 and (mode != "auto" or by_blocks):
        raise ValueError("only mode auto has a scale, and not by blocks: enlarge the picture before")
    array = pixels(picture, width, height)
    return array_of(to_bits(array, mode, True) if by_blocks else page_of(array, mode, scale).bits)


def binarize_automatically(picture: Picture, scale: int = 1, width: Optional[int] = None,
                           height: Optional[int] = None) -> Automatic:
    """The automatic mode with what it says about its result. Arguments and exceptions are those of binarize."""
    page = choose(pixels(picture, width, height), scale)
    return Automatic(array_of(page.bits), page.scale, page.confidence, list(page.warnings))


def rotate(picture: Picture, degrees: float) -> numpy.ndarray:
    """The picture turned clockwise; negative degrees turn the other way. picture: see binarize.

    Multiples of 90 degrees are exact and keep the array's type. Other angles interpolate on white and give uint8,
    also for bool; the result grows to hold the turned picture. Raises ValueError beyond 3,600 degrees, and as
    binarize.
    """
    if not abs(degrees) <= _MOST_DEGREES:
        raise ValueError(f"{degrees} is no number of degrees from -{_MOST_DEGREES} to {_MOST_DEGREES}")
    array = on_white(pixels(picture))
    check(array)
    quarters = math.trunc(degrees / 90)
    rest = degrees - 90 * quarters
    turned = numpy.rot90(array, -quarters)
    if rest == 0:
        return turned.copy()
    dib, record = dib_of(_bits_to_gray(turned)), Record()
    return array_of(Dib.of_result(library.RotateImageFree(dib.handle, abs(rest), rest > 0, record) == 1, record))


def turn(picture: Picture, code: Union[str, int] = "none", block: Optional[Sequence[int]] = None,
         mode: Union[str, int] = "auto") -> numpy.ndarray:
    """A block of the picture in black and white, turned or mirrored: a bool array, True is white.

    code: one of TURNS: "right", "half", "left", "flip" (upside down), "mirror-left" (mirrored, then left).
    block: left, top, right, bottom, inclusive and clipped to the picture; None: all of it.
    mode: for pictures that are not bool. Raises ValueError for a block outside the picture, and as binarize.
    """
    number = _number_of(code, TURNS, "code")
    bits = page_of(pixels(picture), mode).bits
    left, top, right, bottom = block if block is not None else (0, 0, bits.width - 1, bits.height - 1)
    if block is not None and not (0 <= left <= right and 0 <= top <= bottom and left < bits.width
                                  and top < bits.height):
        raise ValueError(f"block {tuple(block)} does not lie in the picture: want left, top, right, bottom with left "
                         f"from 0 to {bits.width - 1} and top from 0 to {bits.height - 1}, neither beyond its opposite")
    last = bits.height - 1
    rect = BlockRect(left, last - top, min(right, bits.width - 1), last - min(bottom, last), 0)
    record = Record()
    return array_of(Dib.of_result(library.RotateImageBlock(bits.record, rect, number, record) == 1, record))


def pad(picture: Picture, mode: Union[str, int] = "auto") -> numpy.ndarray:
    """The picture in black and white with a white margin of 5 pixels, or more where a side is shorter than 32: a
    bool array, True is white. mode: for pictures that are not bool. Raises as binarize."""
    bits = page_of(pixels(picture), mode).bits
    record = bits.release()  # the library frees it
    library.CopyImgWithWhiteSurr(record, ctypes.c_int32())
    padded = Dib.of_result(True, record)
    if padded.width == bits.width:
        raise ValueError(f"a picture of {bits.width} x {bits.height} has no room for a margin: at most {MAX_SIDE} "
                         "pixels a side with it")
    return array_of(padded)


def morph(picture: Picture, operation: Union[str, int], mode: Union[str, int] = "auto") -> numpy.ndarray:
    """The picture filtered by its neighbourhoods, by one of OPERATIONS.

    "smooth" and "sharpen" give uint8 gray, "edge" a bool array, colours go through gray. "open", "close" and "dilate"
    work on black and white and give a bool array. mode: how they get there from a picture that is not bool.
    Raises as binarize.
    """
    number = _number_of(operation, OPERATIONS, "operation")
    array = pixels(picture)
    if number in _ON_BITS:
        dib = page_of(array, mode).bits
    else:
        dib = dib_of(_bits_to_gray(array))
    record = Record()
    return array_of(Dib.of_result(library.Morphology(dib.handle, record, number) == 1, record))


def _bits_to_gray(array):
    return numpy.where(array, numpy.uint8(255), numpy.uint8(0)) if array.dtype == bool else array
