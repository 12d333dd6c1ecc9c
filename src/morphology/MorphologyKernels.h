// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/CpuFeatures.h"

namespace tavrix {

// The rows of a 1-bit image, stride bytes apart, and where the result goes, which may be the same rows.
// Of the result only bits below width are written.
struct BitRows {
    const std::uint8_t* source;
    std::uint8_t* target;
    std::size_t stride;
    int width;
    int height;
};

// 64-bit words that a spreading needs to work in.
constexpr std::size_t SpreadScratchWords(int width) {
    return (static_cast<std::size_t>(width) / 64 + 8) * 20;
}

}  // namespace tavrix

#define TAVRIX_MORPHOLOGY_KERNELS                                                                           \
    /* 0 where the Sobel magnitude is at least 127, else 255. Reads a byte before and after the rows. */    \
    void EdgeRow(const std::uint8_t* before, const std::uint8_t* row, const std::uint8_t* after, int count, \
                 std::uint8_t* target);                                                                     \
    /* Black, or white, spreads over the square of radius 1 or 7 around it; outside the image is white. */  \
    void SpreadBlack(const BitRows& rows, int radius, std::uint64_t* scratch);                              \
    void SpreadWhite(const BitRows& rows, int radius, std::uint64_t* scratch);

namespace tavrix::baseline {
TAVRIX_MORPHOLOGY_KERNELS
}
namespace tavrix::avx2 {
TAVRIX_MORPHOLOGY_KERNELS
}
#undef TAVRIX_MORPHOLOGY_KERNELS
