// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/CpuFeatures.h"

namespace tavrix {

// Where the pixels of one row of a turned picture lie in the source. Positions are double and evaluated
// in exactly this order: a step along the row, another order or another precision would move pixels.
struct TurnedRow {
    double sine;
    double cosine;
    double centre;  // column about which the result turns
    double a;       // row terms, truncated to whole pixels
    double b;
    double halfWidth;
    double halfHeight;

    [[gnu::always_inline]] double SourceX(int x) const { return (x - centre) * cosine + a + halfWidth; }
    [[gnu::always_inline]] double SourceY(int x) const { return b - (x - centre) * sine + halfHeight; }
};

// What the columns of a turned picture have in common in every row, since a row adds whole pixels only: the
// offset in bytes of the source pixel that a column reads, to be added to that of the row (both wrap), and
// the weights of the neighbours to the right and below, to float's precision. Columns whose position lies too
// near a whole pixel to tell which side it falls on have no number as weights. All null where there is no
// such table.
struct TurnedColumns {
    const std::size_t* offset;
    const float* x;
    const float* y;
};

// Bilinear interpolation of the columns first .. last - 1 of a turned row, in double, truncated. No bounds
// are tested: pixels lie in the source, at least two rows below its end.
struct InterpolationKernels {
    using Interpolate = void(const TurnedRow& row, const TurnedColumns& columns, const std::uint8_t* source,
                             std::uint32_t rowBytes, int first, int last, std::uint8_t* target);
    Interpolate* gray;   // 8 bits a pixel
    Interpolate* color;  // 24

    static const InterpolationKernels baseline, avx2;
};

}  // namespace tavrix
