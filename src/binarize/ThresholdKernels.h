// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "platform/CpuFeatures.h"

#define TAVRIX_THRESHOLD_KERNELS                                             \
    /* In place: values below the threshold become 0 (black), others 255. */ \
    void ThresholdRow(std::uint8_t* row, int width, std::uint8_t threshold);

namespace tavrix::baseline {
TAVRIX_THRESHOLD_KERNELS
}
namespace tavrix::avx2 {
TAVRIX_THRESHOLD_KERNELS
}
#undef TAVRIX_THRESHOLD_KERNELS
