# SPDX-License-Identifier: MIT
"""The exported functions, called by ctypes: what performance.py measures of them. It sets TAVRIX_LIBRARY first.

Each call works on an input that was put in place before; only the call is timed, less what a refused call takes.
"""
import ctypes
import math
import os
import pathlib
import resource
import statistics
import sys
import time
import typing

import numpy

import limits
from limits import timed

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "python"))
from tavrix import _dib, _native, _store  # noqa: E402

library = _native.library
RotateFree = _native._declare(library.RotateFree, ctypes.c_void_p, library.RotateImageFree.argtypes)
RemoveImageBorder = _native._declare(library.RemoveImageBorder, ctypes.c_uint8, library.Morphology.argtypes[:2])
NODE_BYTES = ctypes.sizeof(_native.Node)
OPTIONS = _native.GroupingOptions(0, 0, _native.SPLIT_WIDE)
SPECK, CELL = 2, 14  # pixels: the noise filter's largest component; a cell of a page of specks
TURN = 30.0  # degrees
SIZES = {"card": (1063, 650), "large": (4000, 3000)}
WALK_BYTES = 1 << 29  # more than the caches keep of a process
_walked = None


def gray_page(width, height):
    """Dark text-like strokes on uneven light paper with noise, as the benches draw them; larger pages have more of it."""
    tile_width, tile_height = min(width, 2048), min(height, 1536)  # whole periods of lines and paper
    x, y = numpy.arange(tile_width)[None, :], numpy.arange(tile_height)[:, None]
    line = (y % 48 >= 16) & (y % 48 < 40) & (x % 512 > 40)
    stroke = line & (((x + y // 3) % 23 < 5) | ((y % 24 < 4) & (x % 29 < 17)))
    noise = numpy.random.default_rng(7).integers(-6, 7, (tile_height, tile_width))
    tile = numpy.where(stroke, 55, 205 + x // 64 % 24 - y // 64 % 16) + noise
    copies = (-(-height // tile_height), -(-width // tile_width))
    return numpy.tile(tile.clip(0, 255).astype(numpy.uint8), copies)[:height, :width]


def specks(count):
    """A black and white page of so many components of 2 to 9 pixels a side."""
    columns = int(count ** 0.5 + 1)
    page = numpy.ones((-(-count // columns) * CELL, columns * CELL), bool)
    numbers = numpy.random.default_rng(7).integers((0, 0, 2, 2), (5, 5, 10, 10), (count, 4))
    for i, (dx, dy, width, height) in enumerate(numbers.tolist()):
        x, y = i % columns * CELL + dx, i // columns * CELL + dy
        page[y:y + height, x:x + width] = False
    return page


class Input:
    """An image in global memory that is put back before each call, and the record of what the last call made."""

    def __init__(self, array):
        self.dib = _dib.dib_of(array)
        self.bytes = 40 + 4 * self.dib.header.colours + self.dib.header.image_bytes
        self.original = ctypes.string_at(self.dib._address, self.bytes)
        self.result, self.copy = _native.Record(), None

    def restore(self):
        if self.result.header:
            library.GlobalFree(library.GlobalHandle(ctypes.addressof(self.result.header.contents)))
            self.result = _native.Record()
        if self.copy:
            library.GlobalFree(self.copy)
            self.copy = None
        ctypes.memmove(self.dib._address, self.original, self.bytes)


class StoreInput(Input):
    """A black and white image and a store that is put back: empty, or with the components that were found in it."""

    def __init__(self, array, prepare=()):
        super().__init__(array)
        self.store, self.prepare = _store.Store(), prepare

    def restore(self):
        super().restore()
        self.store.clear()
        for step in self.prepare:
            step(self)


# ---- calls, by the input that they take

def of_gray(function, *arguments):
    return Input, "gray", lambda it: function(it.dib.handle, *arguments, it.result)


def binarized(mode, function=library.Binarized):
    return Input, "gray", lambda it: function(it.dib.handle, it.result, mode)


def rotated(kind):
    return Input, kind, lambda it: library.RotateImageFree(it.dib.handle, TURN, 0, it.result)


def rotated_twice(it):
    it.copy = RotateFree(it.dib.handle, TURN, 0, it.result)
    return it.copy


def morphed(operation, kind):
    return Input, kind, lambda it: library.Morphology(it.dib.handle, it.result, operation)


def block(code):
    def call(it):
        whole = _native.BlockRect(0, it.dib.height - 1, it.dib.width - 1, 0, 0)
        return library.RotateImageBlock(it.dib.record, whole, code, it.result)
    return Input, "bits", call


def surround(it):
    it.result = it.dib.release() if it.dib.handle else it.result
    return library.CopyImgWithWhiteSurr(it.result, None) + 1


class Surrounded(Input):
    """The function takes the image away from its host: each call gets one of its own."""

    def restore(self):
        if self.result.header:
            self.result, old = _native.Record(), self.result
            library.GlobalFree(library.GlobalHandle(ctypes.addressof(old.header.contents)))
        if not self.dib.handle:
            self.dib = _dib.Dib.blank(self.dib.width, self.dib.height, 1)
        super().restore()


def extract(it):
    return library.Extract_Eight_Connected_Components(it.dib.record, it.store.header, 1, 0, 0)


def filter_noise(it, mode=0):
    return library.Noise_Filter1(it.dib.record, it.store.header, SPECK, SPECK, mode)


def grouped(mode):
    return lambda it: library.Grouping(it.dib.record, it.store.header, OPTIONS, mode, 0, 0)


def true_line(it):
    return library.FindTrueLineRect(it.dib.record, OPTIONS).top


def logo(it):
    return library.FindCardLogo(it.dib.record, it.store.header).top


def analyse(it):
    """What a host does with a card: components without specks, blocks, the logo; the main line."""
    return (extract(it) and filter_noise(it) and grouped(1)(it) and logo(it)) and true_line(it)


def stored(call, *prepare):
    return lambda array: StoreInput(array, prepare), "bits", call


STORE_CALLS = {
    "Extract_Eight_Connected_Components": stored(extract),
    "Noise_Filter1, by size": stored(filter_noise, extract),
    "Noise_Filter1, by line": stored(lambda it: filter_noise(it, 1), extract),
    "Grouping, blocks by direction": stored(grouped(0), extract),
    "Grouping, aligned blocks": stored(grouped(1), extract),
    "Grouping, text lines": stored(grouped(3), extract),
    "FindTrueLineRect": stored(true_line),
    "FindCardLogo": stored(logo, extract, grouped(1)),
}


class Export(typing.NamedTuple):
    call: tuple         # class of its input, kind of page, function
    moved: float        # bytes a pixel that must be read and written
    bound: str          # what bounds it
    counts: float = 0   # a pixel, at least
    roots: float = 0    # square roots a pixel, at least
    also: tuple = ()    # what else must be: "nodes" and "result" are moved, "edges" counted


def of_store(name, bound, *also, moved=0):
    return Export(STORE_CALLS[name], moved, bound, also=also)


_block_of = library.Binarized_Separate_Block
_COUNT = "counting: half a step a pixel, then one pass that writes what it reads"
_REGIONS = "passes over the page, of which the text below gives shares"
_BLOCK = "passes: histogram, thresholds, filling of gaps, all on the whole page"
_FREE = "arithmetic: four neighbours in single precision, and in double where that leaves doubt"
_LINKS = "cache misses: a walk along links, a node after the other"
_LOOKUP = "cache and branch misses: neighbours looked up in trees, sorting, nodes linked anew"
_WORDS = "arithmetic: shifts along and across, 64 pixels at a time"
EXPORTS = {
    "Binarized, mode 0": Export(binarized(0), 2.125, "arithmetic: sums of 25 pixels and of their squares, after counting", 0.5),
    "Binarized, mode 1": Export(binarized(1), 2.125, _COUNT, 0.5),
    "Binarized, mode 2": Export(binarized(2), 2.125, "arithmetic: some 20 minima and maxima of bytes a pixel, in rows that stay in cache"),
    "Binarized, mode 3": Export(binarized(3), 2.125, _COUNT, 0.5),
    "Binarized, mode 4": Export(binarized(4), 2.125, "arithmetic: sums of 2 x 2 pixels in 16 bits, the neighbours' sum in bytes"),
    "Binarized, mode 5": Export(binarized(5), 2.25, _REGIONS, 1, 1),
    "Binarized, mode 6": Export(binarized(6), 2.125, _COUNT, 0.5),
    "Binarized, mode 8": Export(binarized(8), 2.25, _REGIONS, 1, 1),
    "Binarized, mode 9": Export(binarized(9), 2.25, "passes; with many strokes also square roots, and stroke ends at every edge level", 1),
    "Binarized_Separate_Block, mode 5": Export(binarized(5, _block_of), 2.25, _BLOCK, 0.5),
    "Binarized_Separate_Block, mode 8": Export(binarized(8, _block_of), 2.25, _BLOCK, 0.5),
    "Extract_Eight_Connected_Components": of_store(
        "Extract_Eight_Connected_Components", "branch misses: each run of black asks for its neighbours above", "edges", "nodes", moved=0.125),
    "Noise_Filter1, by size": of_store("Noise_Filter1, by size", _LINKS, "nodes"),
    "Noise_Filter1, by line": of_store("Noise_Filter1, by line", _LINKS, "nodes"),
    "Grouping, blocks by direction": of_store("Grouping, blocks by direction", _LOOKUP, "nodes", "nodes"),
    "Grouping, aligned blocks": of_store("Grouping, aligned blocks", _LOOKUP, "nodes", "nodes"),
    "Grouping, text lines": of_store(
        "Grouping, text lines", "branch misses: neighbours looked up in trees, chains of lines, sorting", "nodes", "nodes"),
    "FindTrueLineRect": of_store(
        "FindTrueLineRect", "text lines for the most part, extraction and a store's first touch", "edges", "nodes", "nodes", moved=0.125),
    "FindCardLogo": of_store("FindCardLogo", _LINKS, "nodes"),
    "RotateGrayImage": Export(of_gray(library.RotateGrayImage, 90), 2, "bandwidth and cache misses: rows on one side are columns on the other"),
    "RotateImageFree, gray": Export(rotated("gray"), 1, _FREE, also=("result",)),
    "RotateImageFree, colour": Export(rotated("colour"), 3, _FREE + ", thrice; of large pictures also cache misses", also=("result",)),
    "RotateFree, colour": Export((Input, "colour", rotated_twice), 3, "the same, and a copy of the result", also=("result",) * 3),
    "RotateImageBlock, quarter turn": Export(block(1), 0.25, "arithmetic: 8 x 8 bits transposed at a time"),
    "RotateImageBlock, half turn": Export(block(2), 0.25, "arithmetic: bits reversed in bytes and shifted"),
    "RotateImageBlock, upside down": Export(block(4), 0.25, "bandwidth; of a card the allocation"),
    "Morphology, edge map": Export(morphed(0, "gray"), 2.125, "arithmetic: two gradients in 16 bits"),
    "Morphology, mean": Export(morphed(3, "gray"), 3, "arithmetic: nine neighbours in 16 bits; bandwidth for a second copy"),
    "Morphology, sharpening": Export(morphed(4, "gray"), 3, "the same, with a product in fixed point"),
    "Morphology, opening": Export(morphed(1, "bits"), 0.375, _WORDS + ", twice"),
    "Morphology, closing": Export(morphed(2, "bits"), 0.375, _WORDS + ", twice, into a second image and back"),
    "Morphology, dilation": Export(morphed(5, "bits"), 0.375, _WORDS),
    "RemoveImageBorder": Export(of_gray(RemoveImageBorder), 2, "bandwidth: a copy"),
    "CopyImgWithWhiteSurr": Export((Surrounded, "bits", surround), 0.25, "arithmetic: each row shifted by the margin's odd bits"),
}


# ---- measuring

def refused_ns():
    """What a call costs that does nothing: ctypes."""
    record = _native.Record()
    return statistics.median(timed(lambda: library.Binarized(None, record, 0)) for _ in range(1000))


def warm(call, array, budget=0.15, may_refuse=False):
    """Median nanoseconds of calls one after another, and page faults of one."""
    kind, _, function = call
    it = kind(array)
    it.restore()
    if function(it) <= 0 and not may_refuse:
        sys.exit("a call was refused")
    times, faults, spent = [], [], time.perf_counter()
    for turn in range(-1, 1000):
        it.restore()
        before = resource.getrusage(resource.RUSAGE_SELF).ru_minflt
        times.append(timed(lambda: function(it)))
        faults.append(resource.getrusage(resource.RUSAGE_SELF).ru_minflt - before)
        if turn >= 4 and time.perf_counter() - spent > budget or turn >= 1 and time.perf_counter() - spent > 4 * budget:
            break
    return statistics.median(times[1:]), statistics.median(faults[1:])


def cold(call, array):
    """Nanoseconds of the first call in a process of its own, after walking over more than the caches hold."""
    global _walked
    if _walked is None:
        _walked = numpy.ones(WALK_BYTES // 8, numpy.int64)
    ends = os.pipe()
    child = os.fork()
    if child == 0:
        kind, _, function = call
        it = kind(array)
        it.restore()
        _walked.sum()
        os.write(ends[1], str(timed(lambda: function(it))).encode())
        os._exit(0)
    os.close(ends[1])
    with os.fdopen(ends[0]) as answer:
        time_ns = int(answer.read())
    os.waitpid(child, 0)
    return time_ns


def pages(width, height):
    gray = gray_page(width, height)
    return {"gray": gray, "bits": gray > 128, "colour": numpy.stack([gray] * 3, axis=-1)}


def blank(page):
    return numpy.full_like(page, page.dtype == bool or 205)


def exports(_):
    """Every export on a card and on 12 megapixels, on paper without anything, and what the floors are made of."""
    refused, reached, rows = refused_ns(), limits.measured(), {}
    drawn = {size: pages(*sides) for size, sides in SIZES.items()}
    for name, export in EXPORTS.items():
        rows[name] = {"bound": export.bound}
        for size, kinds in drawn.items():
            page = kinds[export.call[1]]
            time_ns, faults = warm(export.call, page)
            rows[name][size] = {"ns": max(time_ns - refused, 1), "faults": faults,
                                "floor": floor_ns(export, page, reached)}
        rows[name]["blank"] = max(warm(export.call, blank(drawn["card"][export.call[1]]), may_refuse=True)[0] - refused, 1)
    return {"rows": rows, "limits": {**reached, "refused": refused}}


def floor_ns(export, page, reached):
    """Nanoseconds that the bytes to move take to copy, and the counts and square roots that nobody gets round."""
    pixels = page.shape[0] * page.shape[1]
    sizes = {"nodes": lambda: NODE_BYTES * _components(page),
             "result": lambda: (page.shape[2] if page.ndim > 2 else 1) * _turned_pixels(*page.shape[:2])}
    moved = export.moved * pixels + sum(sizes[what]() for what in export.also if what in sizes)
    steps = export.counts * pixels
    if "edges" in export.also:
        steps += int((page[:, 1:] != page[:, :-1]).sum())
    copied = max(limits.copy_ns(int(moved / 2)) - limits.copy_ns(0), 1)
    return copied + reached["cycle"] * steps + reached["root"] * export.roots * pixels


def _turned_pixels(height, width):
    sine, cosine = math.sin(math.radians(TURN)), math.cos(math.radians(TURN))
    return int((width * cosine + height * sine) * (height * cosine + width * sine))


def _components(page):
    it = StoreInput(page)
    it.restore()
    extract(it)
    return it.store.header.component_count


def growth(modes):
    """Warm and cold nanoseconds by megapixels of modes, or of the analysis of a card that is scanned ever finer."""
    result = {}
    for mode in modes.split(","):
        series = []
        for megapixels in (0.2, 0.7, 2, 5, 12, 25, 50, 100):
            height = int((megapixels * 1e6 / 1.6) ** 0.5)
            width = int(height * 1.6)
            if mode == "card":
                card = gray_page(1063, 650) > 128
                rows, columns = (numpy.arange(count) * side // count for count, side in ((height, 650), (width, 1063)))
                page, call = card[rows][:, columns], stored(analyse)
            else:
                page, call = gray_page(width, height), binarized(int(mode))
            rounds = 3 if megapixels < 10 else 1
            series.append((width * height, warm(call, page, 0.1)[0], min(cold(call, page) for _ in range(rounds))))
        result[mode] = series
    return result


def components(_):
    """Warm and cold nanoseconds by the number of components; a full store has no room for blocks, which is refused at the end."""
    result = {name: [] for name in STORE_CALLS}
    for count in (1000, 4000, 16000, 65533):
        page = specks(count)
        for name, call in STORE_CALLS.items():
            result[name].append((count, warm(call, page, may_refuse=count > 60000)[0], min(cold(call, page) for _ in range(3))))
    return result
