// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "platform/CpuFeatures.h"

// Column sums of a window of five rows, and the rule of LocalContrastBinarizer over them.
#define TAVRIX_LOCAL_CONTRAST_KERNELS                                                                      \
    /* Moves the window down a row: adds the entering row to the sums and takes the leaving one away. */   \
    /* The entering row is copied over the leaving one. */                                                 \
    void SlideWindow(const std::uint8_t* entering, std::uint8_t* leaving, int width, std::uint16_t* sums,  \
                     std::int32_t* squares);                                                               \
    /* In place, from the column sums; sums[0] and squares[0] are those of column -2. */                   \
    void ContrastRow(std::uint8_t* row, int width, const std::uint16_t* sums, const std::int32_t* squares, \
                     int globalThreshold);

namespace tavrix::baseline {
TAVRIX_LOCAL_CONTRAST_KERNELS
}
namespace tavrix::avx2 {
TAVRIX_LOCAL_CONTRAST_KERNELS
}
#undef TAVRIX_LOCAL_CONTRAST_KERNELS
