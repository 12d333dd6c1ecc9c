# SPDX-License-Identifier: MIT
"""Clean black and white, components, text lines and the logo from scans of business cards.

Pictures are NumPy arrays (rows top-down: height x width of uint8 gray or bool, height x width x 3 of
uint8 red, green, blue) or bytes in the same order, with width and height given. All boxes are inclusive
columns and rows counted from the top left.

    import tavrix
    black_and_white = tavrix.binarize(gray)           # bool array, True is white
    for box in tavrix.components(black_and_white):
        print(box.left, box.top, box.right, box.bottom, box.pixels)
    print(tavrix.card(gray).true_line)

The module needs the shared library: the one named by the environment variable TAVRIX_LIBRARY, else one
beside this file, built in this checkout or installed with this file, else the system's. The automatic
mode, which is used unless another one is named, needs libtavrixauto from the same place.
"""

import contextlib
import ctypes
import ctypes.util
import functools
import os
from typing import List, NamedTuple, Optional

__all__ = ["Box", "Card", "Component", "Error", "MODES", "binarize", "card", "components"]

#: Names of the library's binarization modes; "auto" stands beside them.
MODES = {
    "local": 0, "otsu": 1, "midrange": 2, "peaks": 3, "gradient": 4,
    "regions": 5, "isodata": 6, "lines": 8, "sharp": 9,
}


class Error(Exception):
    """The library refused a picture or ran out of memory."""


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
    pixels: int  # black ones


class Card(NamedTuple):
    black_and_white: object  # as binarize gives it
    components: List[Component]
    lines: List[Box]  # text lines, from top to bottom
    true_line: Optional[Box]  # the main text line
    logo: Optional[Box]


class _Header(ctypes.Structure):
    _fields_ = [("size", ctypes.c_uint32), ("width", ctypes.c_int32), ("height", ctypes.c_int32),
                ("planes", ctypes.c_uint16), ("bit_count", ctypes.c_uint16), ("compression", ctypes.c_uint32),
                ("image_bytes", ctypes.c_uint32), ("x_resolution", ctypes.c_int32),
                ("y_resolution", ctypes.c_int32), ("colours", ctypes.c_uint32), ("important", ctypes.c_uint32)]


class _Record(ctypes.Structure):
    _fields_ = [("header", ctypes.POINTER(_Header)), ("palette", ctypes.c_void_p), ("bits", ctypes.c_void_p)]


class _Node(ctypes.Structure):
    pass


_Node._fields_ = [("reserved", ctypes.c_uint16 * 2), ("left", ctypes.c_int16), ("top", ctypes.c_int16),
                  ("right", ctypes.c_int16), ("bottom", ctypes.c_int16), ("tag", ctypes.c_uint16),
                  ("padding", ctypes.c_uint16), ("kind", ctypes.c_uint32), ("reserved20", ctypes.c_uint8 * 80),
                  ("pixel_count", ctypes.c_uint32), ("line_height", ctypes.c_uint32),
                  ("prev", ctypes.POINTER(_Node)), ("next", ctypes.POINTER(_Node)),
                  ("parent", ctypes.POINTER(_Node)), ("first_child", ctypes.POINTER(_Node))]

_CAPACITY, _INITIAL, _GROW, _ALLOCATED = 65535, 1000, 500, 0xFFFF


class _Store(ctypes.Structure):
    _fields_ = [("nodes", ctypes.POINTER(_Node)), ("free_list", ctypes.POINTER(_Node)),
                ("first_block", ctypes.POINTER(_Node)), ("state", ctypes.c_uint32), ("grow_step", ctypes.c_uint32),
                ("threaded_count", ctypes.c_uint32), ("live_count", ctypes.c_uint32),
                ("block_count", ctypes.c_uint32), ("line_count", ctypes.c_uint32),
                ("component_count", ctypes.c_uint32)]


class _Options(ctypes.Structure):
    _fields_ = [("select_flags", ctypes.c_uint16), ("reserved", ctypes.c_uint16), ("split_flags", ctypes.c_uint16)]


class _LineRect(ctypes.Structure):
    _fields_ = [(side, ctypes.c_int32) for side in ("left", "top", "right", "bottom")]


class _LogoRect(ctypes.Structure):
    _fields_ = [(side, ctypes.c_int16) for side in ("left", "top", "right", "bottom", "reserved")]


_GHND, _GPTR = 0x42, 0x40
_SELECT_ALL_LINES = 0x8000
_SPECK_SIDE = 2  # pixels; a component of at most that is no part of a logo
_RESULTS_AND_ARGUMENTS = {
    "GlobalAlloc": (ctypes.c_void_p, [ctypes.c_uint, ctypes.c_size_t]),
    "GlobalLock": (ctypes.c_void_p, [ctypes.c_void_p]),
    "GlobalFree": (ctypes.c_void_p, [ctypes.c_void_p]),
    "GlobalHandle": (ctypes.c_void_p, [ctypes.c_void_p]),
    "Binarized": (ctypes.c_int32, [ctypes.c_void_p, ctypes.POINTER(_Record), ctypes.c_int32]),
    "Extract_Eight_Connected_Components":
        (ctypes.c_uint8, [_Record, ctypes.POINTER(_Store), ctypes.c_int32, ctypes.c_int32, ctypes.c_int32]),
    "Noise_Filter1": (ctypes.c_uint8, [_Record, ctypes.POINTER(_Store), ctypes.c_int32, ctypes.c_int32, ctypes.c_int32]),
    "Grouping": (ctypes.c_uint8, [_Record, ctypes.POINTER(_Store), ctypes.POINTER(_Options), ctypes.c_int32,
                                  ctypes.c_uint32, ctypes.c_uint32]),
    "FindTrueLineRect": (_LineRect, [ctypes.POINTER(_Record), ctypes.POINTER(_Options)]),
    "FindCardLogo": (_LogoRect, [_Record, _Store]),
}


def _load():
    here = os.path.dirname(os.path.abspath(__file__))
    near = [os.path.join(here, path)
            for path in ("libtavrix.so", "../build/release/src/libtavrix.so", "../../libtavrix.so.1")]
    library = ctypes.CDLL(os.environ.get("TAVRIX_LIBRARY") or next(filter(os.path.exists, near), None) or
                          ctypes.util.find_library("tavrix") or "libtavrix.so.1")
    for function, (result, arguments) in _RESULTS_AND_ARGUMENTS.items():
        getattr(library, function).restype = result
        getattr(library, function).argtypes = arguments
    return library


_library = _load()


class _Dib:
    """A packed image in global memory, freed with the object."""

    def __init__(self, handle):
        if not handle:
            raise MemoryError("no memory for the picture")
        self.handle = handle
        address = _library.GlobalLock(handle)
        self.header = ctypes.cast(address, ctypes.POINTER(_Header))
        self._record = None

    def __del__(self):
        _library.GlobalFree(self.handle)

    @classmethod
    def blank(cls, width, height, bit_count):
        row_bytes = _row_bytes(bit_count, width)
        colours = 1 << bit_count if bit_count <= 8 else 0
        dib = cls(_library.GlobalAlloc(_GHND, 40 + 4 * colours + row_bytes * height))
        dib.header[0] = _Header(40, width, height, 1, bit_count, 0, row_bytes * height, 0, 0, colours, 0)
        table = b"".join(bytes([level * 255 // (colours - 1)]) * 3 + b"\0" for level in range(colours))
        ctypes.memmove(dib.record.palette, table, len(table))
        return dib

    @property
    def record(self):
        header = ctypes.addressof(self.header[0])
        return _Record(self.header, header + 40, header + 40 + 4 * self.header[0].colours)

    @property
    def width(self):
        return self.header[0].width

    @property
    def height(self):
        return self.header[0].height

    @property
    def row_bytes(self):
        return _row_bytes(self.header[0].bit_count, self.width)

    def set_rows(self, rows):
        """Stores rows of bytes given from the top."""
        bits, row_bytes = self.record.bits, self.row_bytes
        for y, row in enumerate(rows):
            ctypes.memmove(bits + (self.height - 1 - y) * row_bytes, row, len(row))

    def rows(self):
        """Whole rows as bytes, from the top."""
        bits, row_bytes = self.record.bits, self.row_bytes
        return [ctypes.string_at(bits + y * row_bytes, row_bytes) for y in range(self.height - 1, -1, -1)]


def _row_bytes(bit_count, width):
    return (bit_count * width + 31) // 8 // 4 * 4


def _dib_of_array(array):
    import numpy

    if array.dtype == numpy.bool_ and array.ndim == 2:
        bit_count, rows = 1, numpy.packbits(array, axis=1)
    elif array.dtype == numpy.uint8 and array.ndim == 2:
        bit_count, rows = 8, array
    elif array.dtype == numpy.uint8 and array.ndim == 3 and array.shape[2] == 3:
        bit_count, rows = 24, array[:, :, ::-1]  # stored as blue, green, red
    else:
        raise TypeError("want a height x width array of uint8 or bool, or height x width x 3 of uint8")
    _check_sides(array.shape[1], array.shape[0])
    dib = _Dib.blank(array.shape[1], array.shape[0], bit_count)
    dib.set_rows(row.tobytes() for row in rows)
    return dib


def _dib_of_bytes(data, width, height):
    if width is None or height is None:
        raise TypeError("bytes need width and height")
    _check_sides(width, height)
    data = bytes(data)
    channels = {width * height: 1, 3 * width * height: 3}.get(len(data))
    if channels is None:
        raise ValueError(f"{len(data)} bytes are neither gray nor red, green, blue for {width} x {height}")
    dib = _Dib.blank(width, height, 8 * channels)
    if channels == 3:
        swapped = bytearray(data)
        swapped[0::3], swapped[2::3] = data[2::3], data[0::3]
        data = bytes(swapped)
    stride = width * channels
    dib.set_rows(data[y * stride:(y + 1) * stride] for y in range(height))
    return dib


def _check_sides(width, height):
    if not (0 <= width <= 32767 and 0 <= height <= 32767):
        raise ValueError(f"sides of {width} x {height} are not within 0 to 32767")


def _dib_of(picture, width, height):
    return _dib_of_array(picture) if hasattr(picture, "__array_interface__") else _dib_of_bytes(picture, width, height)


_WHITE_AND_BLACK = [bytes(255 if value >> (7 - i) & 1 else 0 for i in range(8)) for value in range(256)]


def _pixels(dib, like):
    """The pixels of a 1-bit image: a bool array for an array, else bytes of 0 and 255."""
    if hasattr(like, "__array_interface__"):
        import numpy

        rows = numpy.frombuffer(b"".join(dib.rows()), numpy.uint8).reshape(dib.height, dib.row_bytes)
        return numpy.unpackbits(rows, axis=1)[:, :dib.width].astype(bool)
    return b"".join(b"".join(_WHITE_AND_BLACK[byte] for byte in row)[:dib.width] for row in dib.rows())


@functools.lru_cache(maxsize=None)
def _automatic():
    """The function of libtavrixauto, which lies beside the library unless the system finds it."""
    name = "libtavrixauto.so.1"
    beside = os.path.join(os.path.dirname(os.path.realpath(_library._name)), name)
    try:
        function = ctypes.CDLL(beside if os.path.exists(beside) else name).TavrixBinarizeAutomatically
    except OSError as error:
        raise Error(f"mode auto needs libtavrixauto ({error}); the other modes do not") from None
    function.restype = ctypes.c_int32
    function.argtypes = [ctypes.c_void_p, ctypes.POINTER(_Record), ctypes.c_int32, ctypes.POINTER(ctypes.c_double)]
    return function


def _mode(mode):
    if mode in MODES:
        return MODES[mode]
    if mode in MODES.values():
        return mode
    raise ValueError(f"unknown mode {mode!r}: one of auto, {', '.join(MODES)} or their numbers")


def _binarized(picture, mode, width, height):
    dib = _dib_of(picture, width, height)
    record = _Record()
    if dib.width == 0 or dib.height == 0 or dib.header[0].bit_count == 1:
        mode = "isodata" if mode == "auto" else mode  # nothing to choose
    if mode == "auto":
        is_done = _automatic()(dib.handle, record, 1, None) == 1
    else:
        is_done = _library.Binarized(dib.handle, record, _mode(mode)) == 1
    if not is_done:
        raise Error("the library refused the picture")
    return _Dib(_library.GlobalHandle(record.header))


@contextlib.contextmanager
def _store():
    """A store in the layout that the library shares with its hosts."""
    block = _library.GlobalAlloc(_GPTR, _CAPACITY * ctypes.sizeof(_Node))
    if not block:
        raise MemoryError("no memory for the components")
    nodes = ctypes.cast(block, ctypes.POINTER(_Node))
    step = ctypes.sizeof(_Node)
    for i in range(_INITIAL - 1):
        nodes[i].next = ctypes.cast(block + (i + 1) * step, ctypes.POINTER(_Node))
    try:
        yield _Store(nodes=nodes, free_list=nodes, state=_ALLOCATED, grow_step=_GROW, threaded_count=_INITIAL)
    finally:
        _library.GlobalFree(block)


def _siblings(first):
    while first:
        yield first[0]
        first = first[0].next


def _lines(store):
    for block in _siblings(store.first_block):
        yield from _siblings(block.first_child)


def _box(node, height):
    return Box(node.left, height - 1 - node.top, node.right, height - 1 - node.bottom)


def _extract(dib, store):
    if not _library.Extract_Eight_Connected_Components(dib.record, store, 1, 0, 0):
        raise Error("the library refused the picture")


def _components(dib):
    with _store() as store:
        _extract(dib, store)
        return [Component(*_box(node, dib.height), node.pixel_count)
                for line in _lines(store) for node in _siblings(line.first_child)]


def binarize(picture, mode="auto", width=None, height=None):
    """The picture in black and white: a bool array (True is white), or bytes of 0 and 255 for bytes."""
    return _pixels(_binarized(picture, mode, width, height), picture)


def components(picture, mode="auto", width=None, height=None):
    """The 8-connected black components; a picture that is not bool is binarized first."""
    return _components(_binarized(picture, mode, width, height))


def card(picture, mode="auto", width=None, height=None):
    """All that the library finds on a card."""
    dib = _binarized(picture, mode, width, height)
    options = _Options(_SELECT_ALL_LINES, 0, 0)
    with _store() as store:
        _extract(dib, store)
        found = _library.Grouping(dib.record, store, options, 3, 0, 0)
        lines = sorted((_box(line, dib.height) for line in _lines(store) if found), key=lambda box: box.top)
    with _store() as store:
        _extract(dib, store)
        _library.Noise_Filter1(dib.record, store, _SPECK_SIDE, _SPECK_SIDE, 0)
        _library.Grouping(dib.record, store, None, 1, 0, 0)
        logo = _library.FindCardLogo(dib.record, store)
    true_line = _library.FindTrueLineRect(dib.record, _Options(0, 0, 0))
    return Card(_pixels(dib, picture), _components(dib), lines, _found(true_line, dib.height), _found(logo, dib.height))


def _found(rect, height):
    """None for the all-zero rectangle that says that there is none."""
    return _box(rect, height) if rect.right or rect.top else None
