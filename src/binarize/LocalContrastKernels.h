// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "platform/CpuFeatures.h"

namespace tavrix {

// Column sums of a window of five rows, and what LocalContrastBinarizer makes of them.
struct LocalContrastKernels {
    // Moves the window down a row of `width` pixels: adds the entering row's values and squares to the sums
    // and takes those of the leaving one away. The entering row is copied over the leaving one.
    void (*slideWindow)(const std::uint8_t* entering, std::uint8_t* leaving, int width, std::uint16_t* sums,
                        std::int32_t* squares);
    // Binarizes, in place, the row in the window's middle. sums[0] and squares[0] are those of column -2;
    // there are width + 4 of each.
    void (*contrastRow)(std::uint8_t* row, int width, const std::uint16_t* sums, const std::int32_t* squares,
                        int globalThreshold);

    static const LocalContrastKernels baseline, avx2;
};

}  // namespace tavrix
