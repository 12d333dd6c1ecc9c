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

}  // namespace tavrix

#define TAVRIX_BERNSEN_KERNELS                                                           \
    /* extremes.low[x] and .high[x] of padded[x .. x + 3]. */                            \
    void ExtremesOf4(const std::uint8_t* padded, int count, Extremes extremes);          \
    /* Takes columns4 into the window and binarizes, in place, the row in its centre. */ \
    void MidRangeRow(const BernsenWindow& window, int width, std::uint8_t* row);

namespace tavrix::baseline {
TAVRIX_BERNSEN_KERNELS
}
namespace tavrix::avx2 {
TAVRIX_BERNSEN_KERNELS
}
#undef TAVRIX_BERNSEN_KERNELS
