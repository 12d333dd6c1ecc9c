# SPDX-License-Identifier: MIT
"""Pictures in, findings out."""

from __future__ import annotations

from typing import List, Optional, Tuple, Union

from ._dib import Dib, array_of
from ._native import (MEASURE_FROM_LEFT, SELECT_ALL_LINES, SELECT_JOIN_PIECES, SPLIT_WIDE, BlockRect, GroupingOptions,
                      automatic, library)
from ._operations import page_of
from ._pictures import Picture, pixels
from ._results import Block, Box, Card, Component, Line
from ._store import blocks_of, extracted

#: How blocks groups: along the direction of the text, or what stands aligned.
GROUPINGS = {"text": 0, "aligned": 1}
_TEXT_LINES = 3  # mode of Grouping
_BY_SIZE, _BY_LINE = 0, 1  # modes of Noise_Filter1
_SPECK = (2, 2)  # pixels; a component of at most that belongs to no print

Mode = Union[str, int]
Size = Tuple[int, int]


def _filtered(store, bits, noise, line_noise):
    if noise is not None:
        library.Noise_Filter1(bits.record, store.header, *noise, _BY_SIZE)
    if line_noise:
        library.Noise_Filter1(bits.record, store.header, 0, 0, _BY_LINE)


def _blocks(bits, grow=(0, 0), noise=None, line_noise=False, grouping=None):
    for name, size in (("grow", grow), ("noise", noise or (0, 0))):
        if len(size) != 2 or not all(0 <= side <= 32767 for side in size):
            raise ValueError(f"{name}={size} is no pair of pixels, width and height, from 0 to 32767")
    with extracted(bits, grow) as store:
        _filtered(store, bits, noise, line_noise)
        if grouping is not None:
            library.Grouping(bits.record, store.header, None, grouping, 0, 0)
        return blocks_of(store, bits.height)


def _lines(bits, options, extra=0):
    with extracted(bits) as store:
        if not library.Grouping(bits.record, store.header, options, _TEXT_LINES, extra, 0):
            return []
        found = [line for block in blocks_of(store, bits.height, has_pixels=False) for line in block.lines]
    return sorted(found, key=lambda line: line.top)


def _true_line(bits, options):
    return _box(library.FindTrueLineRect(bits.record, options), bits.height)


def _logo(bits, mode):
    if mode == "auto":
        found = BlockRect()
        return _box(found, bits.height) if automatic("TavrixFindLogo")(bits.handle, found) else None
    with extracted(bits) as store:
        _filtered(store, bits, _SPECK, False)
        library.Grouping(bits.record, store.header, None, GROUPINGS["aligned"], 0, 0)
        return _box(library.FindCardLogo(bits.record, store.header), bits.height)


def _box(rect, height):
    """None for the all-zero rectangle that says that there is none."""
    if not (rect.left or rect.top or rect.right or rect.bottom):
        return None
    return Box(rect.left, height - 1 - rect.top, rect.right, height - 1 - rect.bottom)


def _options(is_all, join_pieces, split_wide):
    select = (SELECT_ALL_LINES if is_all else 0) | (SELECT_JOIN_PIECES if join_pieces else 0)
    return GroupingOptions(select, 0, SPLIT_WIDE if split_wide else 0)


def components(picture: Picture, mode: Mode = "auto", width: Optional[int] = None, height: Optional[int] = None, *,
               grow: Size = (0, 0), noise: Optional[Size] = None, line_noise: bool = False) -> List[Component]:
    """The 8-connected black components, from left to right; at most 65,533.

    picture, width, height: see binarize; mode: how a picture that is not bool becomes black and white.
    grow: every box is wider by that many columns and higher by that many rows on each side, clipped to the picture.
    noise: leaves out components of at most that width and height, thin rules and large frames.
    line_noise: leaves out what is small beside the others, and frame edges. Raises as binarize.
    """
    found = _blocks(page_of(pixels(picture, width, height), mode).bits, grow, noise, line_noise)
    return [component for block in found for line in block.lines for component in line.components]


def blocks(picture: Picture, mode: Mode = "auto", *, group: str = "text", grow: Size = (0, 0),
           noise: Optional[Size] = None, line_noise: bool = False) -> List[Block]:
    """The components in blocks, one line each. group: one of GROUPINGS; the other arguments are those of
    components. Raises as binarize."""
    if group not in GROUPINGS:
        raise ValueError(f"unknown group {group!r}: take one of {', '.join(GROUPINGS)}")
    return _blocks(page_of(pixels(picture), mode).bits, grow, noise, line_noise, GROUPINGS[group])


def lines(picture: Picture, mode: Mode = "auto", *, join_pieces: bool = False, split_wide: bool = False,
          from_left: bool = False) -> List[Line]:
    """All text lines, from top to bottom.

    join_pieces: joins side-by-side pieces of a line first. split_wide: splits components that hold several
    characters. from_left: measures a line from its leftmost component. Raises as binarize.
    """
    text = page_of(pixels(picture), mode).text
    return _lines(text, _options(True, join_pieces, split_wide), MEASURE_FROM_LEFT if from_left else 0)


def true_line(picture: Picture, mode: Mode = "auto", *, join_pieces: bool = False,
              split_wide: bool = False) -> Optional[Box]:
    """The main text line, or None. Options are those of lines. Raises as binarize."""
    return _true_line(page_of(pixels(picture), mode).text, _options(False, join_pieces, split_wide))


def logo(picture: Picture, mode: Mode = "auto") -> Optional[Box]:
    """The box that most likely holds the logo, or None. Raises as binarize."""
    return _logo(page_of(pixels(picture), mode).bits, mode)


def card(picture: Picture, mode: Mode = "auto", width: Optional[int] = None, height: Optional[int] = None, *,
         join_pieces: bool = False, split_wide: bool = False) -> Card:
    """All that is found on a card. Arguments are those of binarize and lines. Raises as binarize."""
    page = page_of(pixels(picture, width, height), mode)
    return Card(array_of(page.bits), _blocks(page.bits, noise=_SPECK, line_noise=True, grouping=GROUPINGS["text"]),
                _lines(page.text, _options(True, join_pieces, split_wide)),
                _true_line(page.text, _options(False, join_pieces, split_wide)), _logo(page.bits, mode))
