// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "platform/CpuFeatures.h"

namespace tavrix {

// Rows of GradientBinarizer, of `width` pixels.
struct GradientKernels {
    static constexpr int kRows = 4;  // that are worked on at a time

    using Row = const std::uint8_t*;
    // Sobel magnitudes |gx| + |gy| of kRows rows, the low eight bits of each, from these rows and the one at
    // either side. Pixels to the left and right of a row count as 0.
    void (*gradientRows)(const Row (&rows)[kRows + 2], int width, std::uint8_t* const (&gradients)[kRows]);
    // Black and white, in place: 255 where a value of the rows differs from the one in the row before and a
    // quarter of the four neighbours' magnitudes is 1 to 99, else 0. The values of the row before the first
    // are in `previous`, where those of the last one are left. The magnitudes are those of these rows and of
    // the one at either side, from the one before a row's first to the one after its last, all even.
    void (*edgeLevelRows)(std::uint8_t* const (&rows)[kRows], std::uint8_t* previous,
                          const Row (&gradients)[kRows + 2], int width);

    static const GradientKernels baseline, avx2;
};

}  // namespace tavrix
