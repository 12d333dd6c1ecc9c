// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "platform/CpuFeatures.h"

// Row kernels of GradientBinarizer. The rows of values and magnitudes can be read one pixel beyond either
// end.
#define TAVRIX_GRADIENT_KERNELS                                                                        \
    void GradientRow(const std::uint8_t* above, const std::uint8_t* values, const std::uint8_t* below, \
                     int width, std::uint8_t* gradient);                                               \
    /* Black and white from a row's values, those of the row before, and the magnitudes around it. */  \
    void EdgeLevelRow(const std::uint8_t* values, const std::uint8_t* previous,                        \
                      const std::uint8_t* gradientAbove, const std::uint8_t* gradient,                 \
                      const std::uint8_t* gradientBelow, int width, std::uint8_t* row);

namespace tavrix::baseline {
TAVRIX_GRADIENT_KERNELS
}
namespace tavrix::avx2 {
TAVRIX_GRADIENT_KERNELS
}
#undef TAVRIX_GRADIENT_KERNELS
