// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "geometry/TurnKernels.h"
#include "image/DibLayout.h"
#include "support/KernelVariants.h"

namespace tavrix {
namespace {

using test::OnVariants;
using Bytes = std::vector<std::uint8_t>;

int BitAt(const std::uint8_t* row, int x) {
    return row[x / 8] >> (7 - x % 8) & 1;
}

Bytes RandomBytes(std::size_t count, std::mt19937& random) {
    Bytes bytes(count);
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
    return bytes;
}

// Source and target have exactly the bytes that the run touches, so that a sanitizer sees any step beyond.
template <class Expected>
void CheckRun(decltype(TurnKernels::copyBits) kernel, int first, int count, Expected expected) {
    std::mt19937 random(first * 1000 + count);
    const Bytes source = RandomBytes((first + count + 7) / 8, random);
    Bytes target = RandomBytes((count + 7) / 8, random);
    kernel(source.data(), first, count, target.data());
    for (int x = 0; x < static_cast<int>(target.size()) * 8; ++x) {
        const int wanted = x < count ? expected(source.data(), x) : 0;
        ASSERT_EQ(BitAt(target.data(), x), wanted) << first << '+' << count << " bit " << x;
    }
}

TEST(TurnKernels, CopyAndReverseRunsAtEveryOffset) {
    for (int first = 0; first < 16; ++first) {
        for (int count = 1; count <= 200; ++count) {
            OnVariants(TAVRIX_VARIANTS(TurnKernels, copyBits), [&](auto* kernel) {
                CheckRun(kernel, first, count,
                         [&](const std::uint8_t* row, int x) { return BitAt(row, first + x); });
            });
            OnVariants(TAVRIX_VARIANTS(TurnKernels, reverseBits), [&](auto* kernel) {
                CheckRun(kernel, first, count,
                         [&](const std::uint8_t* row, int x) { return BitAt(row, first + count - 1 - x); });
            });
        }
    }
    OnVariants(TAVRIX_VARIANTS(TurnKernels, reverseBits), [](auto* kernel) {
        CheckRun(kernel, 1, kMaxSide - 1,
                 [](const std::uint8_t* row, int x) { return BitAt(row, kMaxSide - 1 - x); });
    });
}

TEST(TurnKernels, TransposeBits) {
    std::mt19937 random(3);
    for (const int width : {1, 7, 8, 9, 63, 64, 127, 128, 129, 300}) {
        for (int height = 1; height <= 130; ++height) {
            const int sourceStride = (width + 7) / 8, targetStride = (height + 31) / 32 * 4;
            const Bytes source = RandomBytes(std::size_t(sourceStride) * height, random);
            OnVariants(TAVRIX_VARIANTS(TurnKernels, transposeBits), [&](auto* kernel) {
                // Backwards through the target, as a quarter turn goes.
                Bytes target = RandomBytes(std::size_t(targetStride) * width, random);
                kernel(source.data(), sourceStride, width, height, target.data() + targetStride * (width - 1),
                       -targetStride);
                for (int x = 0; x < width; ++x) {
                    const std::uint8_t* row = target.data() + targetStride * (width - 1 - x);
                    for (int y = 0; y < 8 * targetStride; ++y) {
                        const int wanted = y < height ? BitAt(source.data() + sourceStride * y, x) : 0;
                        ASSERT_EQ(BitAt(row, y), wanted) << width << 'x' << height << " at " << x << ',' << y;
                    }
                }
            });
        }
    }
}

TEST(TurnKernels, TransposeBytes) {
    std::mt19937 random(4);
    for (const int width : {1, 15, 16, 17, 63, 64, 65, 130}) {
        for (const int height : {1, 16, 31, 32, 33, 64, 97, 130}) {
            const Bytes source = RandomBytes(std::size_t(width) * height, random);
            OnVariants(TAVRIX_VARIANTS(TurnKernels, transposeBytes), [&](auto* kernel) {
                Bytes target(source.size());
                kernel(source.data(), width, width, height, target.data(), height);
                for (int y = 0; y < height; ++y) {
                    for (int x = 0; x < width; ++x) {
                        ASSERT_EQ(target[x * height + y], source[y * width + x])
                            << width << 'x' << height << " at " << x << ',' << y;
                    }
                }
            });
        }
    }
}

}  // namespace
}  // namespace tavrix
