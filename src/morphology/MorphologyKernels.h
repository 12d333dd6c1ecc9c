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

struct MorphologyKernels {
    // Black, or white, spreads over the square of radius 1 or 7 around it; outside the image is white.
    // scratch holds SpreadScratchWords(rows.width).
    void (*spreadBlack)(const BitRows& rows, int radius, std::uint64_t* scratch);
    void (*spreadWhite)(const BitRows& rows, int radius, std::uint64_t* scratch);

    static const MorphologyKernels baseline, avx2;
};

}  // namespace tavrix
