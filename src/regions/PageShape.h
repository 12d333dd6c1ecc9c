// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

#include "image/DibImage.h"

namespace tavrix {

// Columns x0..x1 of the stored rows y0..y1, all inclusive, y0 <= y1.
struct PageRect {
    std::int16_t x0, y0, x1, y1;

    std::int64_t Area() const { return std::int64_t{x1 - x0 + 1} * (y1 - y0 + 1); }
};

// Geometry that the gray page and the byte buffers of one binarization share: buffers of Bytes() bytes,
// row y at y * rowBytes. `columns` says what a pass over a rectangle takes for the page: columns from it
// on, like rows from height on, read as 0 and drop what is written.
struct PageShape {
    int width;     // columns that carry pixels
    int rowBytes;  // a multiple of 4, at least width
    int height;
    int columns;

    // The padding at the end of rows counts as part of the page, as it lies in memory.
    static PageShape WithPadding(const DibImage& image) {
        const int rowBytes = static_cast<int>(image.RowBytes());
        return {image.Width(), rowBytes, image.Height(), rowBytes};
    }
    // The padding is outside.
    static PageShape PixelsOnly(const DibImage& image) {
        return {image.Width(), static_cast<int>(image.RowBytes()), image.Height(), image.Width()};
    }

    std::size_t Bytes() const { return Offset(height); }
    std::size_t Offset(int y) const { return static_cast<std::size_t>(rowBytes) * y; }
    PageRect Whole() const {
        return {0, 0, static_cast<std::int16_t>(width - 1), static_cast<std::int16_t>(height - 1)};
    }
};

}  // namespace tavrix
