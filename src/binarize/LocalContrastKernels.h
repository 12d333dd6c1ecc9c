// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "platform/CpuFeatures.h"

namespace tavrix {

// Column sums of a window of five rows, and what LocalContrastBinarizer makes of them.
struct LocalContrastKernels {
    // Columns are worked on in steps of up to so many: there is room for whole ones.
    static constexpr int kStep = 16;
    static constexpr int kSquareFactor = 25;
    // A deviation of 20 levels, as 25 Q - S^2 of the window's sum S and sum of squares Q: (20 * 25)^2.
    static constexpr int kContrastLimit = 250000;

    // From column 0 on; two columns more stand before the first and after the last. Squares are multiplied by
    // kSquareFactor, a fifth of kContrastLimit is taken away, and even and odd columns stand apart.
    struct Columns {
        std::uint16_t* sums;
        std::int32_t *evenSquares, *oddSquares;
    };

    // Moves the window down a row of `width` pixels: adds the entering row's values and squares to the sums
    // and takes those of the leaving one away. The entering row is copied over the leaving one, which stays
    // as it is beyond `width`.
    void (*slideWindow)(const std::uint8_t* entering, std::uint8_t* leaving, int width,
                        const Columns& columns);
    // Binarizes, in place, the row in the window's middle.
    void (*contrastRow)(std::uint8_t* row, int width, const Columns& columns, int globalThreshold);

    static const LocalContrastKernels baseline, avx2;
};

}  // namespace tavrix
