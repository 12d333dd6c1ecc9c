# SPDX-License-Identifier: MIT
"""Component stores: the tree of blocks, lines and components that the library shares with its hosts."""

import contextlib
import ctypes
import functools
import operator
from typing import List

from ._native import (GPTR, STORE_ALLOCATED, STORE_CAPACITY, STORE_GROW, STORE_INITIAL, Node, StoreHeader, library)
from ._numpy import numpy
from ._results import Block, Component, Error, Line

_STEP = ctypes.sizeof(Node)
_component = functools.partial(tuple.__new__, Component)  # as Component._make, at a third of its time
_left = operator.itemgetter(0)
_spare: List["Store"] = []  # stores not in use: a new block would have to be cleared as a whole


class Store:
    def __init__(self):
        self.base = library.GlobalAlloc(GPTR, STORE_CAPACITY * _STEP)
        if not self.base:
            raise MemoryError("no memory for the components")
        data = (ctypes.c_uint8 * (STORE_CAPACITY * _STEP)).from_address(self.base)
        self._bytes = numpy.frombuffer(data, numpy.uint8)
        self.nodes = self._bytes.view(_node_type())
        self._first_links = self.base + _STEP * numpy.arange(1, STORE_INITIAL, dtype=numpy.uintp)
        self.header = StoreHeader()

    def __del__(self):
        if getattr(self, "base", None):
            library.GlobalFree(self.base)

    def clear(self):
        self._bytes[:_STEP * self.header.threaded_count] = 0
        self.nodes["next"][:STORE_INITIAL - 1] = self._first_links
        self.header = StoreHeader(self.base, self.base, None, STORE_ALLOCATED, STORE_GROW, STORE_INITIAL)


@functools.lru_cache(maxsize=None)
def _node_type():
    formats = {"left": "i2", "top": "i2", "right": "i2", "bottom": "i2", "pixel_count": "u4", "line_height": "u4",
               "next": numpy.uintp, "first_child": numpy.uintp}
    return numpy.dtype({"names": list(formats), "formats": list(formats.values()),
                        "offsets": [getattr(Node, name).offset for name in formats], "itemsize": _STEP})


@contextlib.contextmanager
def extracted(dib, grow=(0, 0)):
    """A store with the components of a 1-bit image in one line of one block."""
    try:
        store = _spare.pop()
    except IndexError:
        store = Store()
    store.clear()
    try:
        mode = 2 if any(grow) else 1
        if not library.Extract_Eight_Connected_Components(dib.record, store.header, mode, *grow):
            raise Error("the library refused the picture")
        yield store
    finally:
        _spare.append(store)


def blocks_of(store, height, has_pixels=True):
    """All blocks that hold lines. height: of the picture."""
    used = store.nodes[:store.header.threaded_count]

    def slots(name):  # a null pointer becomes a negative one
        return ((used[name].astype(numpy.int64) - store.base) // _STEP).tolist()

    nexts, children = slots("next"), slots("first_child")

    def siblings(slot):
        found = []
        while slot >= 0:
            found.append(slot)
            slot = nexts[slot]
        return found

    facts = numpy.empty((len(used), 5), numpy.int32)
    for column, (side, sign) in enumerate((("left", 1), ("top", -1), ("right", 1), ("bottom", -1))):
        numpy.multiply(used[side], sign, out=facts[:, column])
    facts[:, 1:4:2] += height - 1
    facts[:, 4] = used["pixel_count"] if has_pixels else 0
    blocks = []
    for block in siblings(((store.header.first_block or 0) - store.base) // _STEP):
        lines = []
        for line in siblings(children[block]):
            components = list(map(_component, facts[siblings(children[line])].tolist()))
            components.sort(key=_left)
            lines.append(Line(*facts[line, :4].tolist(), int(used["line_height"][line]), components))
        if lines:  # else a rest of the extraction that grouping leaves behind
            lefts, tops, rights, bottoms = zip(*(line[:4] for line in lines))
            blocks.append(Block(min(lefts), min(tops), max(rights), max(bottoms), lines))
    return blocks
