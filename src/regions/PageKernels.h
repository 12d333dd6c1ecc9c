// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "platform/CpuFeatures.h"

// Row kernels of the page measurements and region passes. Rows are of `count` bytes; kernels that look
// at neighbours also read the byte before the first and after the last one of each row.
#define TAVRIX_PAGE_KERNELS                                                                                  \
    /* Sobel gradient magnitude, truncated and limited to 255. */                                            \
    void SobelRow(const std::uint8_t* before, const std::uint8_t* row, const std::uint8_t* after, int count, \
                  std::uint8_t* target);                                                                     \
    /* Mean of 3 x 3 bytes, rounded down. */                                                                 \
    void MeanRow(const std::uint8_t* before, const std::uint8_t* row, const std::uint8_t* after, int count,  \
                 std::uint8_t* target);                                                                      \
    /* The centre times the factor, in single precision and truncated, less the eight neighbours, limited to \
     * 0..255. */                                                                                            \
    void SharpenRow(const std::uint8_t* before, const std::uint8_t* row, const std::uint8_t* after,          \
                    int count, float factor, std::uint8_t* target);                                          \
    /* Bytes of at least threshold. */                                                                       \
    int CountFrom(const std::uint8_t* row, int count, int threshold);                                        \
    /* 255 up to limit (-1 to 255), else 0. The target may be the row. */                                    \
    void MaskUpTo(const std::uint8_t* row, int count, int limit, std::uint8_t* target);                      \
    /* The opposite. */                                                                                      \
    void MaskAbove(const std::uint8_t* row, int count, int limit, std::uint8_t* target);                     \
    /* Zero bytes whose right neighbour and three neighbours in the row after are not zero. */               \
    int CountTips(const std::uint8_t* row, const std::uint8_t* after, int count);                            \
    /* Bytes below threshold (0 to 256) become 0 in the target, others 255 where force is set or the target  \
     * is not 0. Adds to the counts of each. The target may be the row. */                                   \
    void ThresholdRegionRow(const std::uint8_t* row, int count, int threshold, bool force,                   \
                            std::uint8_t* target, std::int64_t* dark, std::int64_t* light);                  \
    /* 0 where both are 0, else 255. */                                                                      \
    void MergeRow(std::uint8_t* target, const std::uint8_t* other, int count);                               \
    /* One bit a second byte, from the first one on, least significant first: 1 where the byte is 0. Count   \
     * bits, followed by zeros to the end of the word after the last bit. */                                 \
    void EvenZeroBits(const std::uint8_t* row, int count, std::uint64_t* words);                             \
    /* 1 where the target is 1 or the mask 0, else 254. */                                                   \
    void ApplyEdgesRow(std::uint8_t* target, const std::uint8_t* mask, int count);                           \
    /* 0 becomes 1, 255 becomes 254. */                                                                      \
    void MarkRow(std::uint8_t* row, int count);                                                              \
    /* The same, but from left to right a 255 becomes 1 when three of its four neighbours are 0 or 1 by      \
     * then. blackAfter: the byte after the last one counts as black and is not read. */                     \
    void FillAndMarkRow(const std::uint8_t* before, std::uint8_t* row, const std::uint8_t* after, int count, \
                        bool blackAfter);

namespace tavrix::baseline {
TAVRIX_PAGE_KERNELS
}
namespace tavrix::avx2 {
TAVRIX_PAGE_KERNELS
}
#undef TAVRIX_PAGE_KERNELS
