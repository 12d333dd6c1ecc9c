// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "image/DibImage.h"
#include "image/Rect.h"

namespace tavrix {

// Rows of pixels of a byte, rowBytes apart, in memory that somebody else owns. Passes over a plane take the
// columns below `columns` for it: what lies outside reads as 0, and what is written there is dropped.
template <class Pixel>
struct BasicPlane {
    Pixel* pixels;
    int rowBytes;
    int width;  // columns that carry pixels
    int height;
    int columns;  // width, or rowBytes where the padding at the end of rows counts as well

    Pixel* Row(int y) const { return pixels + static_cast<std::ptrdiff_t>(rowBytes) * y; }
    std::size_t Bytes() const {
        return static_cast<std::size_t>(rowBytes) * static_cast<std::size_t>(height);
    }
    // Every pixel, without padding. Not for planes without pixels.
    Rect Whole() const { return {0, 0, static_cast<std::int16_t>(width - 1), LastRow()}; }
    // All that passes take for the plane.
    Rect Reach() const { return {0, 0, static_cast<std::int16_t>(columns - 1), LastRow()}; }

    // The same shape over other memory.
    template <class Other>
    BasicPlane<Other> Over(Other* otherPixels) const {
        return {otherPixels, rowBytes, width, height, columns};
    }
    operator BasicPlane<const Pixel>() const { return {pixels, rowBytes, width, height, columns}; }

  private:
    std::int16_t LastRow() const { return static_cast<std::int16_t>(height - 1); }
};

using Plane = BasicPlane<std::uint8_t>;
using ConstPlane = BasicPlane<const std::uint8_t>;

// The pixels of an 8-bit image.
inline Plane PlaneOfPixels(DibImage& image) {
    return {image.bits, static_cast<int>(image.RowBytes()), image.Width(), image.Height(), image.Width()};
}
// The padding at the end of rows included, as it lies in memory.
inline Plane PlaneOfRows(DibImage& image) {
    Plane plane = PlaneOfPixels(image);
    plane.columns = plane.rowBytes;
    return plane;
}

// A plane of the shape of an image's pixels beside them, in the room that the image brings or in memory of
// its own; not cleared.
class SidePlane {
  public:
    SidePlane(DibImage& image, const Plane& pixels)
        : room(image.RoomOfPixels()),
          own(room != nullptr ? nullptr : new std::uint8_t[pixels.Bytes()]),
          plane(pixels.Over(room != nullptr ? room : own.get())) {}
    const Plane& Get() const { return plane; }

  private:
    std::uint8_t* room;
    std::unique_ptr<std::uint8_t[]> own;
    Plane plane;
};

}  // namespace tavrix
