// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "platform/CpuFeatures.h"

namespace tavrix {

// Rows of GradientBinarizer, worked on in whole steps of kStep columns: there is room for one step more than
// the columns need, and for a pixel before the first.
struct GradientKernels {
    static constexpr int kStep = 32;

    using Row = const std::uint8_t*;
    // Sums of three neighbours of a row, the middle one twice: the low eight bits, and an eighth of the sum,
    // by which sums that are far apart are told.
    struct Smoothed {
        std::uint8_t* low;
        std::int8_t* eighth;
    };

    void (*smoothRow)(Row values, int width, Smoothed smoothed);
    // Sobel magnitudes |gx| + |gy|, the low eight bits of each sum; the rows above and below also smoothed.
    void (*gradientRow)(Row above, Row values, Row below, Smoothed smoothedAbove, Smoothed smoothedBelow,
                        int width, std::uint8_t* gradient);
    // Black and white from a row's values, those of the row before, and the magnitudes around it: 255 where
    // the two values differ and a quarter of the four neighbours' magnitudes is 1 to 99, else 0. The row has
    // `width` pixels and no room beyond.
    void (*edgeLevelRow)(Row values, Row previous, Row gradientAbove, Row gradient, Row gradientBelow,
                         int width, std::uint8_t* row);

    static const GradientKernels baseline, avx2;
};

}  // namespace tavrix
