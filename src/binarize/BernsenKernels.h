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

}  // namespace tavrix

// Minima and maxima over windows of 15 pixels a side, by doubling: of 4, then of 15.
#define TAVRIX_BERNSEN_KERNELS                                                                \
    /* of4[x] are the extremes of padded[x .. x + 3]. */                                      \
    void ExtremesOf4(const std::uint8_t* padded, int count, Extremes of4);                    \
    /* of15[x] are the extremes over of4 at x, x + 4, x + 8 and x + 11. */                    \
    void ExtremesOf15(Extremes of4, int width, Extremes of15);                                \
    /* Extremes of two rows of windows. */                                                    \
    void MergeExtremes(Extremes a, Extremes b, int width, Extremes merged);                   \
    /* In place: the rule of BernsenBinarizer, from the extremes over two rows of windows. */ \
    void MidRangeRow(std::uint8_t* row, int width, Extremes a, Extremes b);

namespace tavrix::baseline {
TAVRIX_BERNSEN_KERNELS
}
namespace tavrix::avx2 {
TAVRIX_BERNSEN_KERNELS
}
#undef TAVRIX_BERNSEN_KERNELS
