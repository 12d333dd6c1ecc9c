# SPDX-License-Identifier: MIT
"""The shared libraries, their structures and their functions."""

import ctypes
import functools
import os
from ctypes import (POINTER, c_double, c_int16, c_int32, c_size_t, c_ssize_t, c_uint, c_uint8, c_uint16, c_uint32,
                    c_void_p)

from ._results import Error

GHND, GPTR = 0x42, 0x40
STORE_CAPACITY, STORE_INITIAL, STORE_GROW, STORE_ALLOCATED = 65535, 1000, 500, 0xFFFF
SELECT_JOIN_PIECES, SELECT_ALL_LINES = 0x4000, 0x8000
SPLIT_WIDE = 1  # any bit of split_flags but 0x40 and 0x80
MEASURE_FROM_LEFT = 0x20  # of Grouping's extra


class Header(ctypes.Structure):
    _fields_ = [("size", c_uint32), ("width", c_int32), ("height", c_int32), ("planes", c_uint16),
                ("bit_count", c_uint16), ("compression", c_uint32), ("image_bytes", c_uint32),
                ("x_resolution", c_int32), ("y_resolution", c_int32), ("colours", c_uint32), ("important", c_uint32)]


class Record(ctypes.Structure):
    _fields_ = [("header", POINTER(Header)), ("palette", c_void_p), ("bits", c_void_p)]


class Node(ctypes.Structure):
    _fields_ = [("reserved", c_uint16 * 2), ("left", c_int16), ("top", c_int16), ("right", c_int16),
                ("bottom", c_int16), ("tag", c_uint16), ("padding", c_uint16), ("kind", c_uint32),
                ("reserved20", c_uint8 * 80), ("pixel_count", c_uint32), ("line_height", c_uint32),
                ("prev", c_void_p), ("next", c_void_p), ("parent", c_void_p), ("first_child", c_void_p)]


class StoreHeader(ctypes.Structure):
    _fields_ = [("nodes", c_void_p), ("free_list", c_void_p), ("first_block", c_void_p), ("state", c_uint32),
                ("grow_step", c_uint32), ("threaded_count", c_uint32), ("live_count", c_uint32),
                ("block_count", c_uint32), ("line_count", c_uint32), ("component_count", c_uint32)]


class GroupingOptions(ctypes.Structure):
    _fields_ = [("select_flags", c_uint16), ("reserved", c_uint16), ("split_flags", c_uint16)]


class BlockRect(ctypes.Structure):
    _fields_ = [(name, c_int16) for name in ("left", "top", "right", "bottom", "tag")]


class TrueLineRect(ctypes.Structure):
    _fields_ = [(side, c_int32) for side in ("left", "top", "right", "bottom")]


class AutomaticRecord(ctypes.Structure):
    _fields_ = [("bits", Record), ("letters", Record), ("scale", c_int32),
                ("confidence", c_double), ("warnings", ctypes.c_char * 256)]


_RESULTS_AND_ARGUMENTS = {
    "GlobalAlloc": (c_void_p, [c_uint, c_size_t]),
    "GlobalLock": (c_void_p, [c_void_p]),
    "GlobalFree": (c_void_p, [c_void_p]),
    "GlobalHandle": (c_void_p, [c_void_p]),
    "Binarized": (c_int32, [c_void_p, POINTER(Record), c_int32]),
    "Binarized_Separate_Block": (c_int32, [c_void_p, POINTER(Record), c_int32]),
    "Extract_Eight_Connected_Components": (c_uint8, [Record, POINTER(StoreHeader), c_int32, c_int32, c_int32]),
    "Noise_Filter1": (c_uint8, [Record, POINTER(StoreHeader), c_int32, c_int32, c_int32]),
    "Grouping": (c_uint8, [Record, POINTER(StoreHeader), POINTER(GroupingOptions), c_int32, c_uint32, c_uint32]),
    "FindTrueLineRect": (TrueLineRect, [POINTER(Record), POINTER(GroupingOptions)]),
    "FindCardLogo": (BlockRect, [Record, StoreHeader]),
    "RotateGrayImage": (c_int16, [c_void_p, c_int32, POINTER(Record)]),
    "RotateImageFree": (c_int16, [c_void_p, c_double, c_int32, POINTER(Record)]),
    "RotateImageBlock": (c_int16, [Record, BlockRect, c_int32, POINTER(Record)]),
    "Morphology": (c_uint8, [c_void_p, POINTER(Record), c_int32]),
    "CopyImgWithWhiteSurr": (c_int16, [POINTER(Record), POINTER(c_int32)]),
}


_ARGUMENTS_OF_AUTOMATIC = {
    "TavrixReadAutomatically": [c_void_p, c_int32, POINTER(AutomaticRecord)],
    "TavrixFindLogo": [c_void_p, POINTER(BlockRect)],
}


def _places(name):
    """Where a library may lie, the first one that is there counts; the last one is for the system to find."""
    here = os.path.dirname(os.path.abspath(__file__))
    chosen = os.environ.get("TAVRIX_LIBRARY")
    if chosen:
        yield chosen if name == "libtavrix.so.1" else os.path.join(os.path.dirname(os.path.realpath(chosen)), name)
    yield os.path.join(here, name)  # a wheel
    yield os.path.join(here, "../../build/release/src", name)  # a checkout
    yield os.path.join(here, "../../..", name)  # below another prefix than /usr


def _open(name):
    return ctypes.CDLL(next(filter(os.path.exists, _places(name)), name))


def _declare(function, result, arguments):
    function.restype, function.argtypes = result, arguments
    return function


def _load():
    library = _open("libtavrix.so.1")
    for name, (result, arguments) in _RESULTS_AND_ARGUMENTS.items():
        _declare(getattr(library, name), result, arguments)
    return library


@functools.lru_cache(maxsize=None)
def automatic(name):
    """A function of the automatic mode."""
    try:
        function = getattr(_open("libtavrixauto.so.1"), name)
    except (OSError, AttributeError) as error:
        raise Error(f"mode auto needs libtavrixauto ({error}); install it, or name another mode") from None
    return _declare(function, c_int32, _ARGUMENTS_OF_AUTOMATIC[name])


@functools.lru_cache(maxsize=None)
def swapped_copy():
    """TavrixCopySwapped, or None where only the libraries for everybody are installed."""
    try:
        function = _open("libtavrixrows.so").TavrixCopySwapped
    except OSError:
        return None
    return _declare(function, None, [c_void_p, c_ssize_t, c_void_p, c_ssize_t, c_size_t, c_size_t])


library = _load()
