// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "platform/CpuFeatures.h"

namespace tavrix {

// Smallest and largest values of a row of windows.
struct Extremes {
    std::uint8_t* low;
    std::uint8_t* high;
};

// Extremes over windows of 15 columns and over the last rows, by doubling. As a row comes, `rows1` holds
// the row before it, `rows2`, `rows4` and `rows8` hold those of 2, 4 and 8 rows that ended 2, 4 and 7 rows
// before it; they leave as those that end with the row.
// Every row has room for whole steps of kStep columns.
struct BernsenWindow {
    static constexpr int kStep = 32;

    Extremes columns4;  // of 4 columns, a step more than the image has
    Extremes rows1, rows2, rows4, rows8;
};

struct BernsenKernels {
    // extremes.low[x] and .high[x] of padded[x .. x + 3], for `count` columns; padded holds three more. No
    // two rows overlap.
    void (*extremesOf4)(const std::uint8_t* padded, int count, Extremes extremes);
    // Takes columns4 into the window and binarizes, in place, the row of `width` pixels in its centre.
    void (*midRangeRow)(const BernsenWindow& window, int width, std::uint8_t* row);

    static const BernsenKernels baseline, avx2;
};

}  // namespace tavrix
