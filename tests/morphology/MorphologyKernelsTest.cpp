// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <random>
#include <vector>

#include "image/NeighbourhoodKernels.h"
#include "morphology/MorphologyKernels.h"
#include "support/KernelVariants.h"

namespace tavrix {
namespace {

using Bytes = std::vector<std::uint8_t>;

// What this machine chooses is checked through the operations; here all variants must agree.
template <class Kernel, class Run>
void Agree(Kernel* baseline, Kernel* avx2, Run run) {
    std::optional<Bytes> expected;
    test::OnVariants(baseline, avx2, [&](auto* kernel) {
        const Bytes result = run(kernel);
        EXPECT_EQ(result, expected.value_or(result));
        expected = result;
    });
}

TEST(MorphologyKernels, VariantsAgree) {
    std::mt19937 random(1);
    for (int width = 1; width <= 300; ++width) {
        SCOPED_TRACE(width);
        constexpr int kHeight = 20;
        const std::size_t stride = (width + 31) / 32 * 4;
        Bytes source(std::max<std::size_t>(stride * kHeight, 3 * width + 6));
        for (std::uint8_t& byte : source) byte = static_cast<std::uint8_t>(random() | random() | random());
        for (const int radius : {1, 7}) {
            const auto spread = [&](auto* kernel) {
                Bytes target(source.size(), 0x55);
                std::vector<std::uint64_t> scratch(SpreadScratchWords(width));
                kernel({source.data(), target.data(), stride, width, kHeight}, radius, scratch.data());
                return target;
            };
            Agree(TAVRIX_VARIANTS(MorphologyKernels, spreadBlack), spread);
            Agree(TAVRIX_VARIANTS(MorphologyKernels, spreadWhite), spread);
        }
        Agree(TAVRIX_VARIANTS(NeighbourhoodKernels, edgeRow), [&](auto* kernel) {
            Bytes target(width);
            const std::uint8_t* row = source.data() + 1;
            kernel(row, row + width + 2, row + 2 * (width + 2), width, target.data());
            return target;
        });
    }
}

}  // namespace
}  // namespace tavrix
