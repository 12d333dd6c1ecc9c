// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "platform/CpuFeatures.h"

namespace tavrix {

// Conversions of a row of `width` pixels.
struct PixelKernels {
    // 8-bit pixels to bits, most significant first: 1 where the value is above limit. Writes whole bytes up
    // to the row's last pixel, unused low bits 0.
    void (*packAbove)(const std::uint8_t* row, int width, std::uint8_t limit, std::uint8_t* packed);
    // Blue, green, red bytes to gray: trunc(0.299 R + 0.587 G + 0.114 B + 0.5) in double.
    void (*grayRow)(const std::uint8_t* row, int width, std::uint8_t* gray);

    static const PixelKernels baseline, avx2;
};

}  // namespace tavrix
