# SPDX-License-Identifier: MIT
"""Pictures of every kind as arrays, and arrays as pictures of Pillow."""

from __future__ import annotations

import io
import os
import sys
from typing import Any, TYPE_CHECKING, Optional, Union

from ._numpy import numpy
from ._results import Error

if TYPE_CHECKING:
    import PIL.Image

_EXIF_ORIENTATION = 0x0112
_DEEP_WHITE = 65535  # of 16 bits

Picture = Union["numpy.ndarray", "PIL.Image.Image", str, "os.PathLike[str]", bytes, bytearray, memoryview]


def _pillow():
    try:
        import PIL.Image
        import PIL.ImageOps
    except ImportError:
        raise ImportError("files and pictures of Pillow need Pillow: install pillow (Debian: python3-pil), "
                          "or give an array of NumPy") from None
    return PIL


def read(picture: Picture, page: int = 0) -> numpy.ndarray:
    """The pixels of a picture as an array of height x width (uint8 gray, or bool for 1 bit) or height x width x 3
    (uint8 red, green, blue).

    picture: a path, the bytes of a file, or a picture of Pillow. Files are turned as their EXIF says; a picture
    of Pillow is taken as it is. Transparency lies on white. page: from 0 on.

    Raises Error where it is no picture, or a damaged one, FileNotFoundError, IndexError for a page that is not
    there, ImportError without Pillow.
    """
    pil = _pillow()
    source: Any = picture
    if isinstance(source, pil.Image.Image):
        return _pixels_of(source)
    is_path = isinstance(source, (str, os.PathLike))
    name = os.fspath(source) if is_path else f"picture of {len(source)} bytes"
    try:
        with pil.Image.open(source if is_path else io.BytesIO(source)) as image:
            count = getattr(image, "n_frames", 1)
            if 0 <= page < count:
                image.seek(page)
                is_turned = image.getexif().get(_EXIF_ORIENTATION, 1) != 1
                return _pixels_of(pil.ImageOps.exif_transpose(image) if is_turned else image)
    except (Error, FileNotFoundError, PermissionError, IsADirectoryError, MemoryError):
        raise
    except pil.UnidentifiedImageError:
        raise Error(f"{name} is not a picture that Pillow reads") from None
    except Exception as error:  # decoders raise anything at all on damaged files
        raise Error(f"{name} cannot be read: {error}") from error
    raise IndexError(f"{name} has no page {page}: it has {count}, from 0 on")


def _pixels_of(image: PIL.Image.Image) -> numpy.ndarray:
    if image.mode == "I" or image.mode.startswith("I;16"):  # what Pillow makes of 16 bits
        levels = numpy.asarray(image).astype(numpy.int64)
        if levels.size and (levels.min() < 0 or levels.max() > _DEEP_WHITE):
            raise Error(f"levels beyond 0 to {_DEEP_WHITE} tell no white: convert the picture to mode L")
        return ((levels * 255 + _DEEP_WHITE // 2) // _DEEP_WHITE).astype(numpy.uint8)
    if image.mode == "F":
        raise Error("pictures of mode F tell no white: convert them to mode L")
    if "transparency" in image.info or image.mode in ("LA", "La", "PA", "RGBa"):
        image = image.convert("RGBA")
    elif image.mode not in ("1", "L", "RGB", "RGBA"):
        image = image.convert("RGB")
    return numpy.asarray(image)


def pixels(picture: Any, width: Optional[int] = None, height: Optional[int] = None) -> numpy.ndarray:
    """Any picture as an array; with width and height, bytes are raw pixels."""
    if isinstance(picture, numpy.ndarray):
        return picture
    if width is not None or height is not None:
        return _raw(picture, width, height)
    if isinstance(picture, (str, os.PathLike, bytes, bytearray, memoryview)):
        return read(picture)
    image = sys.modules.get("PIL.Image")
    if image and isinstance(picture, image.Image):
        return read(picture)
    if hasattr(picture, "__array__") or hasattr(picture, "__array_interface__"):
        return numpy.asarray(picture)
    raise TypeError(f"cannot take {type(picture).__name__}: give an array of NumPy, a picture of Pillow, a path or "
                    "bytes")


def _raw(data, width, height):
    if width is None or height is None or isinstance(data, (str, os.PathLike)):
        raise TypeError("width and height go together, and only with bytes that are raw pixels")
    if width < 0 or height < 0:
        raise ValueError(f"width {width} and height {height} must not be negative")
    data = numpy.frombuffer(data, numpy.uint8) if len(data) else numpy.zeros(0, numpy.uint8)
    shape = {width * height: (height, width), 3 * width * height: (height, width, 3),
             4 * width * height: (height, width, 4)}.get(data.size) if data.size else (height, width)
    if shape is None or data.size != numpy.prod(shape):
        raise ValueError(f"{data.size} bytes are not 1, 3 or 4 for each of {width} x {height} pixels: "
                         "leave width and height out for the bytes of a file")
    return data.reshape(shape)


def to_image(array: numpy.ndarray) -> PIL.Image.Image:
    """A picture of Pillow for an array that this module gave: mode 1 for bool, L or RGB for uint8. Raises ImportError
    without Pillow."""
    return _pillow().Image.fromarray(array)
