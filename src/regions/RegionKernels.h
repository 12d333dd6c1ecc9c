// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "platform/CpuFeatures.h"

namespace tavrix {

// Operations on a row of `count` bytes of masks and results. In a mask 0 is foreground and 255 background;
// in a result 0 is black, 255 white, 1 and 254 the same for good.
struct RegionKernels {
    // Upper right tips of strokes: foreground whose right neighbour and three neighbours in the row after
    // are background. Reads a byte before and after the row after, and one after the row.
    int (*countTips)(const std::uint8_t* row, const std::uint8_t* after, int count);
    // Bytes below threshold (0 to 256) become 0 in the target, others 255 where force is set or the target
    // is not 0. Adds to the counts of each. The target may be the row.
    void (*thresholdRegionRow)(const std::uint8_t* row, int count, int threshold, bool force,
                               std::uint8_t* target, std::int64_t* dark, std::int64_t* light);
    // 0 where both are 0, else 255.
    void (*mergeRow)(std::uint8_t* target, const std::uint8_t* other, int count);
    // A bit for every second byte, from the first one on, least significant first: 1 where the byte is 0.
    // Gives count bits, followed by zeros to the end of the word after the last bit.
    void (*evenZeroBits)(const std::uint8_t* row, int count, std::uint64_t* words);
    // 1 where the target is 1 or the mask 0, else 254.
    void (*applyEdgesRow)(std::uint8_t* target, const std::uint8_t* mask, int count);
    // 0 becomes 1, 255 becomes 254.
    void (*markRow)(std::uint8_t* row, int count);
    // The same, but from left to right a 255 becomes 1 when three of its four neighbours are 0 or 1 by
    // then. Reads the byte before the row and, unless blackAfter says that it counts as black, the one
    // after it.
    void (*fillAndMarkRow)(const std::uint8_t* before, std::uint8_t* row, const std::uint8_t* after,
                           int count, bool blackAfter);

    static const RegionKernels baseline, avx2;
};

}  // namespace tavrix
