# SPDX-License-Identifier: MIT
"""Packed images in the library's memory, and arrays in and out of them with one copy."""

import ctypes
import functools

from ._native import GHND, Header, Record, library, swapped_copy
from ._numpy import numpy
from ._results import Error

MAX_SIDE = 32767
_BIT_COUNTS = {("?",): 1, ("B",): 8, ("B", 3): 24}  # by type and channels


class Dib:
    """A packed image that is freed with the object."""

    def __init__(self, handle):
        if not handle:
            raise MemoryError("no memory for the picture: take a smaller one, or fewer at the same time")
        self.handle = handle
        self._address = library.GlobalLock(handle)
        self.header = Header.from_address(self._address)
        self.width, self.height, self.bit_count = self.header.width, self.header.height, self.header.bit_count

    def __del__(self):
        if getattr(self, "handle", None):
            library.GlobalFree(self.handle)

    @classmethod
    def blank(cls, width, height, bit_count):
        table = _colour_table(bit_count)
        image_bytes = _row_bytes(bit_count, width) * height
        handle = library.GlobalAlloc(GHND, 40 + len(table) + image_bytes)
        if handle:
            address = library.GlobalLock(handle)
            Header.from_address(address).__init__(
                40, width, height, 1, bit_count, 0, image_bytes, 0, 0, len(table) // 4, 0)
            ctypes.memmove(address + 40, table, len(table))
        return cls(handle)

    @classmethod
    def of_result(cls, is_done, record):
        """Takes over the image that a function of the library made."""
        if not is_done:
            raise Error(f"no memory, or a result of more than {MAX_SIDE} pixels a side: take a smaller picture")
        return cls(library.GlobalHandle(record.header))

    def release(self):
        """The record of the image, which is not freed with the object any more."""
        record, self.handle = self.record, None
        return record

    @property
    def record(self):
        bits = self._address + 40 + 4 * self.header.colours
        return Record(ctypes.pointer(self.header), self._address + 40, bits)

    @property
    def rows(self):
        """The bytes of the rows from the top, padding included: an array over the library's memory."""
        row_bytes = _row_bytes(self.bit_count, self.width)
        address = self._address + 40 + 4 * self.header.colours
        data = (ctypes.c_uint8 * (row_bytes * self.height)).from_address(address)
        return numpy.frombuffer(data, numpy.uint8).reshape(self.height, row_bytes)[::-1]


def _row_bytes(bit_count, width):
    return (bit_count * width + 31) // 32 * 4


@functools.lru_cache(maxsize=None)
def _colour_table(bit_count):
    colours = 1 << bit_count if bit_count <= 8 else 0
    return b"".join(bytes([level * 255 // (colours - 1)]) * 3 + b"\0" for level in range(colours))


def dib_of(array):
    """An image of its own for an array."""
    array = on_white(array)
    bit_count = check(array)
    height, width = array.shape[:2]
    dib = Dib.blank(width, height, bit_count)
    if width and height:
        _store(array, dib.rows, bit_count)
    return dib


def check(array):
    """How many bits a pixel an array of bool, gray or red, green, blue takes. Raises TypeError, ValueError."""
    bit_count = _BIT_COUNTS.get((array.dtype.char, *array.shape[2:])) if array.ndim >= 2 else None
    if bit_count is None:
        text = (f"cannot take an array of shape {array.shape} and type {array.dtype}: want height x width of uint8 or "
                "bool, or height x width x 3 or 4 of uint8")
        if array.dtype.kind == "f":
            text += "; for values of 0 to 1 give (255 * array).astype(numpy.uint8)"
        elif array.dtype == numpy.uint16:
            text += "; give (array >> 8).astype(numpy.uint8)"
        raise TypeError(text)
    height, width = array.shape[:2]
    if max(height, width) > MAX_SIDE:
        raise ValueError(f"a picture of {width} x {height} is too large: make it at most {MAX_SIDE} pixels wide and "
                         "high, or cut it")
    return bit_count


def on_white(array):
    """Red, green, blue of an array with transparency; any other one as it is."""
    if array.dtype != numpy.uint8 or array.shape[2:] != (4,):
        return array
    alpha = array[:, :, 3:].astype(numpy.uint16)
    return ((array[:, :, :3] * alpha + 255 * (255 - alpha) + 127) // 255).astype(numpy.uint8)


def _store(array, rows, bit_count):
    height, width = array.shape[:2]
    if bit_count == 1:
        packed = numpy.packbits(array, axis=1)
        rows[:, :packed.shape[1]] = packed
    elif bit_count == 8:
        rows[:, :width] = array
    elif swapped_copy() and array.strides[1:] == (3, 1):
        swapped_copy()(rows.ctypes.data, rows.strides[0], array.ctypes.data, array.strides[0], width, height)
    else:
        pixels = rows[:, :3 * width].reshape(height, width, 3)
        for channel in range(3):
            pixels[:, :, channel] = array[:, :, 2 - channel]  # stored as blue, green, red


def array_of(dib):
    """A new array: bool for 1 bit (True is white), height x width or height x width x 3 of uint8."""
    if not dib.width or not dib.height:
        return numpy.zeros((dib.height, dib.width), bool if dib.bit_count == 1 else numpy.uint8)
    if dib.bit_count == 1:
        return numpy.unpackbits(dib.rows, axis=1, count=dib.width).view(bool)
    if dib.bit_count == 8:
        return dib.rows[:, :dib.width].copy()
    array = numpy.empty((dib.height, dib.width, 3), numpy.uint8)
    _store(dib.rows[:, :3 * dib.width].reshape(dib.height, dib.width, 3), array.reshape(dib.height, -1), 24)
    return array
