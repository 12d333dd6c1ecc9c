// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/CpuFeatures.h"

namespace tavrix {

// Moving runs and blocks of pixels: bits, the most significant of a byte first, or bytes. Source and target
// may not overlap; only bytes that hold a pixel of the run or block are read or written. Strides are in
// bytes and may be negative, so that one transposition serves all quarter turns.
struct TurnKernels {
    // Copies count (> 0) bits from bit first of source to the start of target; unused bits of the last byte
    // become 0.
    void (*copyBits)(const std::uint8_t* source, int first, int count, std::uint8_t* target);
    // The same in reverse order.
    void (*reverseBits)(const std::uint8_t* source, int first, int count, std::uint8_t* target);
    // Target bit (y, x) = source bit (x, y). Target rows are whole 32-bit words; bits past the source's
    // height become 0.
    void (*transposeBits)(const std::uint8_t* source, std::ptrdiff_t sourceStride, int width, int height,
                          std::uint8_t* target, std::ptrdiff_t targetStride);
    // Target byte (y, x) = source byte (x, y).
    void (*transposeBytes)(const std::uint8_t* source, std::ptrdiff_t sourceStride, int width, int height,
                           std::uint8_t* target, std::ptrdiff_t targetStride);

    static const TurnKernels baseline, avx2;
};

}  // namespace tavrix
