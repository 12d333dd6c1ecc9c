# SPDX-License-Identifier: MIT
"""What is found, in columns and rows that count from the top left and are inclusive."""

from __future__ import annotations

from typing import List, NamedTuple, Optional, TYPE_CHECKING

if TYPE_CHECKING:
    import numpy


class Error(Exception):
    """A picture that cannot be read, or a failure of the library; the text says which."""


class LostTextWarning(UserWarning):
    """The automatic result may have lost text; the message says how."""


class Box(NamedTuple):
    left: int
    top: int
    right: int
    bottom: int


class Component(NamedTuple):
    left: int
    top: int
    right: int
    bottom: int
    pixels: int
    """Black ones; 0 in text lines, where the grouping has used the field otherwise."""


class Line(NamedTuple):
    left: int
    top: int
    right: int
    bottom: int
    height: int
    """Of its characters; 0 where it was not measured."""
    components: List[Component]
    """From left to right."""

    @property
    def box(self) -> Box:
        return Box(*self[:4])


class Block(NamedTuple):
    left: int
    top: int
    right: int
    bottom: int
    lines: List[Line]

    @property
    def box(self) -> Box:
        return Box(*self[:4])


class Card(NamedTuple):
    black_and_white: numpy.ndarray
    """As binarize gives it."""
    blocks: List[Block]
    """The components without specks, grouped along the text."""
    lines: List[Line]
    """Text lines, from top to bottom."""
    true_line: Optional[Box]
    """The main text line."""
    logo: Optional[Box]

    @property
    def components(self) -> List[Component]:
        """Those of all blocks."""
        return [component for block in self.blocks for line in block.lines for component in line.components]


class Automatic(NamedTuple):
    black_and_white: numpy.ndarray
    """As binarize gives it."""
    scale: int
    """Sides of black_and_white in those of the picture."""
    confidence: float
    """Share of the black pixels that belong to letters in rows, 0 to 1."""
    warnings: List[str]
    """How the result may have lost text; mostly none."""
