// SPDX-License-Identifier: MIT
#include "binarize/BernsenKernels.h"

#include <cstring>

namespace tavrix {
namespace {

using Byte = std::uint8_t;

constexpr Byte kContrastLimit = 15;  // levels

inline Byte Min(Byte a, Byte b) {
    return a < b ? a : b;
}
inline Byte Max(Byte a, Byte b) {
    return a > b ? a : b;
}

inline void MidRange(const BernsenWindow& window, int start, int count, Byte* row) {
    const auto [columns4, rows1, rows2, rows4, rows8] = window;
    // No row of the window is another's, and none is the image's.
#pragma GCC ivdep
    for (int x = start; x < start + count; ++x) {
        const Byte* low4 = columns4.low + x;
        const Byte low1 = Min(Min(low4[0], low4[4]), Min(low4[8], low4[11]));
        const Byte low2 = Min(low1, rows1.low[x]);
        const Byte lowOf4 = Min(low2, rows2.low[x]);
        const Byte low8 = Min(lowOf4, rows4.low[x]);
        const Byte low = Min(low8, rows8.low[x]);
        rows1.low[x] = low1;
        rows2.low[x] = low2;
        rows4.low[x] = lowOf4;
        rows8.low[x] = low8;

        const Byte* high4 = columns4.high + x;
        const Byte high1 = Max(Max(high4[0], high4[4]), Max(high4[8], high4[11]));
        const Byte high2 = Max(high1, rows1.high[x]);
        const Byte highOf4 = Max(high2, rows2.high[x]);
        const Byte high8 = Max(highOf4, rows4.high[x]);
        const Byte high = Max(high8, rows8.high[x]);
        rows1.high[x] = high1;
        rows2.high[x] = high2;
        rows4.high[x] = highOf4;
        rows8.high[x] = high8;

        // Below the mid-range: nearer to the lowest value, or as near; the window holds the pixel itself.
        const Byte value = row[x - start];
        const bool strong = static_cast<Byte>(high - low) >= kContrastLimit;
        const Byte above = strong ? static_cast<Byte>(value - low) : value;
        const Byte below = strong ? static_cast<Byte>(high - value) : Byte{0};
        row[x - start] = above > below ? 255 : 0;
    }
}

void ExtremesOf4(const Byte* padded, int count, Extremes extremes) {
    Byte* const low = extremes.low;
    Byte* const high = extremes.high;
#pragma GCC ivdep
    for (int x = 0; x < count; ++x) {
        const Byte a = padded[x], b = padded[x + 1], c = padded[x + 2], d = padded[x + 3];
        low[x] = Min(Min(a, b), Min(c, d));
        high[x] = Max(Max(a, b), Max(c, d));
    }
}

void MidRangeRow(const BernsenWindow& window, int width, Byte* row) {
    const int whole = width - width % BernsenWindow::kStep, rest = width - whole;
    MidRange(window, 0, whole, row);
    if (rest == 0) return;
    Byte last[BernsenWindow::kStep] = {};
    std::memcpy(last, row + whole, static_cast<std::size_t>(rest));
    MidRange(window, whole, BernsenWindow::kStep, last);
    std::memcpy(row + whole, last, static_cast<std::size_t>(rest));
}

}  // namespace

const BernsenKernels BernsenKernels::TAVRIX_KERNEL_LEVEL{.extremesOf4 = ExtremesOf4,
                                                         .midRangeRow = MidRangeRow};

}  // namespace tavrix
