// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "platform/CpuFeatures.h"

namespace tavrix {

// Rows of `width` pixels of GradientBinarizer. Rows of values and magnitudes can be read one pixel beyond
// either end.
struct GradientKernels {
    using Row = const std::uint8_t*;

    // Sobel magnitudes |gx| + |gy|, the low eight bits of each sum.
    void (*gradientRow)(Row above, Row values, Row below, int width, std::uint8_t* gradient);
    // Black and white from a row's values, those of the row before, and the magnitudes around it: 255 where
    // the two values differ and a quarter of the four neighbours' magnitudes is 1 to 99, else 0.
    void (*edgeLevelRow)(Row values, Row previous, Row gradientAbove, Row gradient, Row gradientBelow,
                         int width, std::uint8_t* row);

    static const GradientKernels baseline, avx2;
};

}  // namespace tavrix
