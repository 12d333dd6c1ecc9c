// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "image/DibImage.h"
#include "image/Rect.h"

namespace tavrix::lines {

inline constexpr int kStripWidth = 64;  // columns that one word holds

// The black pixels of a 1-bit image inside a rectangle, a strip of 64 columns at a time. Strips begin at
// whole bytes; places outside the rectangle or the image hold no ink.
class InkStrips {
  public:
    InkStrips(const DibImage& imageOfInk, const Rect& area)
        : image(imageOfInk),
          x0(std::max<int>(area.x0, 0)),
          y0(std::max<int>(area.y0, 0)),
          x1(std::min<int>(area.x1, image.Width() - 1)),
          y1(std::min<int>(area.y1, image.Height() - 1)) {}

    bool IsEmpty() const { return x0 > x1 || y0 > y1; }
    int FirstColumn() const { return x0 & ~7; }
    int LastColumn() const { return x1; }
    int FirstRow() const { return y0; }
    int LastRow() const { return y1; }

    // Ink of the strip's columns x .. x + 63 in row y; the highest bit is column x.
    std::uint64_t Word(int x, int y) const {
        const std::uint8_t* const row = image.Row(y);
        const int offset = x / 8;
        const int bytes = std::min(8, static_cast<int>(image.RowBytes()) - offset);
        std::uint64_t word = 0;
        if (bytes == 8) {
            std::memcpy(&word, row + offset, 8);
        } else {
            std::memcpy(&word, row + offset, static_cast<std::size_t>(bytes));
        }
        return ~__builtin_bswap64(word) & MaskOf(x);
    }

    // Columns of a strip with ink in any row.
    std::uint64_t InkedColumns(int x) const {
        std::uint64_t inked = 0;
        for (int y = y0; y <= y1; ++y) inked |= Word(x, y);
        return inked;
    }

    bool IsInked(int y) const {
        for (int x = FirstColumn(); x <= x1; x += kStripWidth) {
            if (Word(x, y) != 0) return true;
        }
        return false;
    }

  private:
    std::uint64_t MaskOf(int x) const {
        std::uint64_t mask = ~std::uint64_t{0};
        if (x < x0) mask >>= x0 - x;
        if (x1 - x < kStripWidth - 1) mask &= ~std::uint64_t{0} << (kStripWidth - 1 - (x1 - x));
        return mask;
    }

    const DibImage& image;
    const int x0;
    const int y0;
    const int x1;
    const int y1;
};

// The box of the ink inside a box. Where there is none each side ends at the one across from it, which
// leaves the box inside out: its right side is the left one of before, and so on.
Rect ShrinkToInk(const DibImage& image, const Rect& box);

}  // namespace tavrix::lines
