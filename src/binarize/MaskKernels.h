// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "platform/CpuFeatures.h"

namespace tavrix {

// Comparisons of a row of `count` pixels of a byte with a limit.
struct MaskKernels {
    // Pixels of at least threshold, 0 to 255.
    int (*countFrom)(const std::uint8_t* row, int count, int threshold);
    // 255 up to limit (-1 to 255), else 0. The target may be the row.
    void (*maskUpTo)(const std::uint8_t* row, int count, int limit, std::uint8_t* target);
    // 0 up to limit (-1 to 255), else 255. The target may be the row.
    void (*maskAbove)(const std::uint8_t* row, int count, int limit, std::uint8_t* target);

    static const MaskKernels baseline, avx2;
};

}  // namespace tavrix
