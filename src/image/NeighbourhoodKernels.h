// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "image/SharpeningFactor.h"
#include "platform/CpuFeatures.h"

namespace tavrix {

// 3 x 3 neighbourhood operations on a row of `count` pixels of a byte. `before` and `after` are the rows at
// either side; all three are read from the byte before the first pixel to the byte after the last one, so
// that the caller decides what lies beyond an edge. The target may be none of the rows.
struct NeighbourhoodKernels {
    using Row = const std::uint8_t*;

    // Gradient magnitude by the operator of Sobel and Feldman (1968), truncated and limited to 255.
    void (*sobelRow)(Row before, Row row, Row after, int count, std::uint8_t* target);
    // 0 where that magnitude is at least 127, else 255.
    void (*edgeRow)(Row before, Row row, Row after, int count, std::uint8_t* target);
    // Mean of the nine, rounded down.
    void (*meanRow)(Row before, Row row, Row after, int count, std::uint8_t* target);
    // The centre times the factor, in single precision and truncated, less the eight neighbours, limited to
    // 0..255.
    void (*sharpenRow)(Row before, Row row, Row after, int count, const SharpeningFactor& factor,
                       std::uint8_t* target);

    static const NeighbourhoodKernels baseline, avx2;
};

}  // namespace tavrix
