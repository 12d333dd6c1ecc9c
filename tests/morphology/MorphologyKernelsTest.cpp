// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <vector>

#include "morphology/MorphologyKernels.h"
#include "support/KernelVariants.h"

namespace tavrix {
namespace {

using Bytes = std::vector<std::uint8_t>;

// The results of one variant are checked through the operations; here all must agree.
TEST(MorphologyKernels, VariantsAgree) {
    std::mt19937 random(1);
    for (int width = 1; width <= 300; ++width) {
        const std::size_t stride = (width + 31) / 32 * 4;
        constexpr int kHeight = 20;
        Bytes source(stride * kHeight);
        for (std::uint8_t& byte : source) byte = static_cast<std::uint8_t>(random() | random() | random());
        const auto agree = [&](auto baseline, auto avx2, int radius) {
            std::optional<Bytes> expected;
            test::OnVariants(baseline, avx2, [&](auto* kernel) {
                Bytes target(source.size(), 0x55);
                std::vector<std::uint64_t> scratch(SpreadScratchWords(width));
                kernel({source.data(), target.data(), stride, width, kHeight}, radius, scratch.data());
                EXPECT_EQ(target, expected.value_or(target)) << width << " radius " << radius;
                expected = target;
            });
        };
        for (const int radius : {1, 7}) {
            agree(TAVRIX_VARIANTS(SpreadBlack), radius);
            agree(TAVRIX_VARIANTS(SpreadWhite), radius);
        }
    }
}

TEST(MorphologyKernels, EdgeRowVariantsAgree) {
    std::mt19937 random(2);
    for (int count = 0; count < 100; ++count) {
        Bytes rows(3 * 102);
        for (std::uint8_t& byte : rows) byte = static_cast<std::uint8_t>(random() % 90);
        std::optional<Bytes> expected;
        test::OnVariants(TAVRIX_VARIANTS(EdgeRow), [&](auto* kernel) {
            Bytes target(count);
            kernel(&rows[1], &rows[103], &rows[205], count, target.data());
            EXPECT_EQ(target, expected.value_or(target)) << count;
            expected = target;
        });
    }
}

}  // namespace
}  // namespace tavrix
