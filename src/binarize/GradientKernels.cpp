// SPDX-License-Identifier: MIT
#include "binarize/GradientKernels.h"

namespace tavrix {
namespace {

using Byte = std::uint8_t;
using Word = std::uint16_t;

// White for a quarter of the neighbours' sum from 1 to 99.
constexpr Word kWhiteFrom = 4, kBlackFrom = 400;

// Columns that are worked on at a time, so that their sums stay in the fastest cache.
constexpr int kBlock = 1024;

inline Word Magnitude(short component) {
    return static_cast<Word>(component < 0 ? -component : component);
}

void GradientRow(const Byte* above, const Byte* values, const Byte* below, int width,
                 Byte* __restrict gradient) {
    short sums[kBlock + 2], differences[kBlock + 2];  // of the three rows, from column -1 on
    for (int start = 0; start < width; start += kBlock) {
        const int count = width - start < kBlock ? width - start : kBlock;
        const Byte* a = above + start - 1;
        const Byte* v = values + start - 1;
        const Byte* b = below + start - 1;
        for (int x = 0; x < count + 2; ++x) {
            sums[x] = static_cast<short>(a[x] + 2 * v[x] + b[x]);
            differences[x] = static_cast<short>(b[x] - a[x]);
        }
        for (int x = 0; x < count; ++x) {
            const auto gx = static_cast<short>(sums[x + 2] - sums[x]);
            const auto gy = static_cast<short>(differences[x] + 2 * differences[x + 1] + differences[x + 2]);
            gradient[start + x] = static_cast<Byte>(Magnitude(gx) + Magnitude(gy));
        }
    }
}

void EdgeLevelRow(const Byte* values, const Byte* previous, const Byte* gradientAbove, const Byte* gradient,
                  const Byte* gradientBelow, int width, Byte* __restrict row) {
    for (int x = 0; x < width; ++x) {
        const auto sum =
            static_cast<Word>(gradientAbove[x] + gradient[x - 1] + gradient[x + 1] + gradientBelow[x]);
        const Word inside = static_cast<Word>(sum - kWhiteFrom) < kBlackFrom - kWhiteFrom ? 255 : 0;
        const Byte changed = values[x] != previous[x] ? 255 : 0;
        row[x] = static_cast<Byte>(changed & static_cast<Byte>(inside));
    }
}

}  // namespace

const GradientKernels GradientKernels::TAVRIX_KERNEL_LEVEL{.gradientRow = GradientRow,
                                                           .edgeLevelRow = EdgeLevelRow};

}  // namespace tavrix
