// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "platform/CpuFeatures.h"

// Row kernels of the format conversions.
#define TAVRIX_PIXEL_KERNELS                                                                        \
    /* 8-bit pixels to bits, most significant first: 1 where the value is above limit. Writes whole \
     * bytes up to the row's last pixel, unused low bits 0. */                                      \
    void PackAbove(const std::uint8_t* row, int width, std::uint8_t limit, std::uint8_t* packed);   \
    /* Blue, green, red bytes to gray: trunc(0.299 R + 0.587 G + 0.114 B + 0.5) in double. */       \
    void GrayRow(const std::uint8_t* row, int width, std::uint8_t* gray);

namespace tavrix::baseline {
TAVRIX_PIXEL_KERNELS
}
namespace tavrix::avx2 {
TAVRIX_PIXEL_KERNELS
}
#undef TAVRIX_PIXEL_KERNELS
