// SPDX-License-Identifier: MIT
#include "binarize/BernsenKernels.h"

namespace tavrix::TAVRIX_KERNEL_TARGET {
namespace {

using Byte = std::uint8_t;

constexpr int kContrastLimit = 15;  // levels

inline Byte Min(Byte a, Byte b) {
    return a < b ? a : b;
}
inline Byte Max(Byte a, Byte b) {
    return a > b ? a : b;
}

}  // namespace

void ExtremesOf4(const Byte* __restrict padded, int count, Extremes of4) {
    Byte* __restrict low = of4.low;
    Byte* __restrict high = of4.high;
    for (int x = 0; x < count; ++x) {
        low[x] = Min(Min(padded[x], padded[x + 1]), Min(padded[x + 2], padded[x + 3]));
        high[x] = Max(Max(padded[x], padded[x + 1]), Max(padded[x + 2], padded[x + 3]));
    }
}

void ExtremesOf15(Extremes of4, int width, Extremes of15) {
    const Byte* __restrict low = of4.low;
    const Byte* __restrict high = of4.high;
    Byte* __restrict lowest = of15.low;
    Byte* __restrict highest = of15.high;
    for (int x = 0; x < width; ++x) {
        lowest[x] = Min(Min(low[x], low[x + 4]), Min(low[x + 8], low[x + 11]));
        highest[x] = Max(Max(high[x], high[x + 4]), Max(high[x + 8], high[x + 11]));
    }
}

void MergeExtremes(Extremes a, Extremes b, int width, Extremes merged) {
    const Byte* lowA = a.low;
    const Byte* lowB = b.low;
    const Byte* highA = a.high;
    const Byte* highB = b.high;
    Byte* __restrict low = merged.low;
    Byte* __restrict high = merged.high;
    for (int x = 0; x < width; ++x) {
        low[x] = Min(lowA[x], lowB[x]);
        high[x] = Max(highA[x], highB[x]);
    }
}

void MidRangeRow(Byte* __restrict row, int width, Extremes a, Extremes b) {
    const Byte* lowA = a.low;
    const Byte* lowB = b.low;
    const Byte* highA = a.high;
    const Byte* highB = b.high;
    for (int x = 0; x < width; ++x) {
        const Byte value = row[x];
        const Byte low = Min(lowA[x], lowB[x]), high = Max(highA[x], highB[x]);
        const auto contrast = static_cast<Byte>(high - low);
        // value <= (low + high) / 2, in bytes: the window holds the pixel itself
        const bool dark = static_cast<Byte>(value - low) <= static_cast<Byte>(high - value);
        row[x] = (contrast >= kContrastLimit ? dark : value == 0) ? 0 : 255;
    }
}

}  // namespace tavrix::TAVRIX_KERNEL_TARGET
