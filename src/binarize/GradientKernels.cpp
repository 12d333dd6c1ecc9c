// SPDX-License-Identifier: MIT
#include "binarize/GradientKernels.h"

#include <cstring>

namespace tavrix {
namespace {

using Byte = std::uint8_t;
using SignedByte = std::int8_t;
using Smoothed = GradientKernels::Smoothed;

constexpr int kStep = GradientKernels::kStep;
constexpr Byte kFirstBlack = 100;  // quarter of the neighbours' sum; 0 is black as well

// Columns that are worked on at a time, so that their sums stay in the fastest cache.
constexpr int kBlock = 1024;

constexpr int InSteps(int width) {
    return (width + kStep - 1) / kStep * kStep;
}

// Rounded up.
inline Byte Mean(Byte a, Byte b) {
    return static_cast<Byte>((a + b + 1) >> 1);
}

// The sum of a, b and twice the middle.
inline Byte LowOfSum(Byte a, Byte middle, Byte b) {
    return static_cast<Byte>(a + b + middle + middle);
}
// An eighth of it, or an eighth of up to three more.
inline SignedByte EighthOfSum(Byte a, Byte middle, Byte b) {
    return static_cast<SignedByte>(Mean(Mean(a, b), middle) >> 1);
}

// The low eight bits of how far two sums are apart. The eighths tell which is greater; where they are equal,
// the sums differ by less than a byte can tell with its sign.
inline Byte Distance(Byte low1, SignedByte eighth1, Byte low2, SignedByte eighth2) {
    const auto difference = static_cast<SignedByte>(low2 - low1);
    const auto mark = static_cast<SignedByte>(difference < 0 ? -1 : 0);
    const auto isLess = static_cast<Byte>(eighth1 > static_cast<SignedByte>(eighth2 + mark) ? 255 : 0);
    return static_cast<Byte>((static_cast<Byte>(difference) ^ isLess) - isLess);
}

void SmoothRow(const Byte* values, int width, Smoothed smoothed) {
    Byte* __restrict const low = smoothed.low;
    SignedByte* __restrict const eighth = smoothed.eighth;
    const int count = InSteps(width);
    for (int x = 0; x < count; ++x) {
        low[x] = LowOfSum(values[x - 1], values[x], values[x + 1]);
        eighth[x] = EighthOfSum(values[x - 1], values[x], values[x + 1]);
    }
}

void GradientRow(const Byte* above, const Byte* values, const Byte* below, Smoothed smoothedAbove,
                 Smoothed smoothedBelow, int width, Byte* __restrict gradient) {
    Byte low[kBlock + kStep];  // of the three rows, from column -1 on
    SignedByte eighth[kBlock + kStep];
    for (int start = 0; start < width; start += kBlock) {
        const int count = InSteps(width - start < kBlock ? width - start : kBlock);
        const Byte* a = above + start - 1;
        const Byte* v = values + start - 1;
        const Byte* b = below + start - 1;
        for (int x = 0; x < count + kStep; ++x) {
            low[x] = LowOfSum(a[x], v[x], b[x]);
            eighth[x] = EighthOfSum(a[x], v[x], b[x]);
        }
        const Byte *lowAbove = smoothedAbove.low + start, *lowBelow = smoothedBelow.low + start;
        const SignedByte *eighthAbove = smoothedAbove.eighth + start,
                         *eighthBelow = smoothedBelow.eighth + start;
        for (int x = 0; x < count; ++x) {
            gradient[start + x] =
                static_cast<Byte>(Distance(low[x], eighth[x], low[x + 2], eighth[x + 2]) +
                                  Distance(lowAbove[x], eighthAbove[x], lowBelow[x], eighthBelow[x]));
        }
    }
}

// The quarter is the mean of means, less one where any of them was rounded up: not always rounded down, but
// 1 to 99 for the same sums, 4 to 399.
inline void EdgeLevels(const Byte* values, const Byte* previous, const Byte* above, const Byte* gradient,
                       const Byte* below, int count, Byte* __restrict row) {
    for (int x = 0; x < count; ++x) {
        const Byte up = above[x], down = below[x], left = gradient[x - 1], right = gradient[x + 1];
        const Byte vertical = Mean(up, down), horizontal = Mean(left, right);
        const auto rounded = static_cast<Byte>(((up ^ down) | (left ^ right) | (vertical ^ horizontal)) & 1);
        const auto quarter = static_cast<Byte>(Mean(vertical, horizontal) - rounded);
        const bool isInside = static_cast<Byte>(quarter - 1) < kFirstBlack - 1;
        row[x] = static_cast<Byte>((isInside ? 255 : 0) & (values[x] != previous[x] ? 255 : 0));
    }
}

void EdgeLevelRow(const Byte* values, const Byte* previous, const Byte* gradientAbove, const Byte* gradient,
                  const Byte* gradientBelow, int width, Byte* row) {
    const int whole = width / kStep * kStep, rest = width - whole;
    EdgeLevels(values, previous, gradientAbove, gradient, gradientBelow, whole, row);
    if (rest == 0) return;
    Byte last[kStep];
    EdgeLevels(values + whole, previous + whole, gradientAbove + whole, gradient + whole,
               gradientBelow + whole, kStep, last);
    std::memcpy(row + whole, last, static_cast<std::size_t>(rest));
}

}  // namespace

const GradientKernels GradientKernels::TAVRIX_KERNEL_LEVEL{
    .smoothRow = SmoothRow, .gradientRow = GradientRow, .edgeLevelRow = EdgeLevelRow};

}  // namespace tavrix
