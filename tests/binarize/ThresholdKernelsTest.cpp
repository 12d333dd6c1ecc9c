// SPDX-License-Identifier: MIT
// The methods run the best variant of their kernels and are tested with it; the other variant has to give
// the same bytes from the same rows.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "binarize/BernsenKernels.h"
#include "binarize/GradientKernels.h"
#include "binarize/LocalContrastKernels.h"
#include "support/KernelVariants.h"

namespace tavrix {
namespace {

using Row = std::vector<std::uint8_t>;
using test::OnVariants;

constexpr int kMaxWidth = 140;

Row RandomRow(std::mt19937& random, int size) {
    Row row(size);
    const int span = 1 << random() % 9;
    for (std::uint8_t& value : row) value = static_cast<std::uint8_t>(200 - random() % span);
    return row;
}

// Runs a check that gives what a kernel made, and compares it between the variants.
template <class Kernel, class Run>
void ExpectEqualVariants(Kernel* baseline, Kernel* other, Run run) {
    OnVariants(baseline, other, [&](Kernel* kernel) { ASSERT_EQ(run(kernel), run(baseline)); });
}

TEST(ThresholdKernels, GradientVariantsAgree) {
    std::mt19937 random(1);
    for (int width = 0; width <= kMaxWidth; ++width) {
        const Row a = RandomRow(random, width + 2), b = RandomRow(random, width + 2),
                  c = RandomRow(random, width + 2), d = RandomRow(random, width + 2),
                  e = RandomRow(random, width + 2);
        ExpectEqualVariants(TAVRIX_VARIANTS(GradientKernels, gradientRow), [&](auto* kernel) {
            Row result(width + 1, 77);
            kernel(&a[1], &b[1], &c[1], width, result.data());
            return result;
        });
        ExpectEqualVariants(TAVRIX_VARIANTS(GradientKernels, edgeLevelRow), [&](auto* kernel) {
            Row result(width + 1, 77);
            kernel(&a[1], &b[1], &c[1], &d[1], &e[1], width, result.data());
            return result;
        });
    }
}

TEST(ThresholdKernels, LocalContrastVariantsAgree) {
    std::mt19937 random(2);
    for (int width = 0; width <= kMaxWidth; ++width) {
        std::vector<Row> rows;
        for (int i = 0; i < 9; ++i) rows.push_back(RandomRow(random, width));
        const int global = static_cast<int>(random() % 256);
        const auto run = [&](auto* slide, auto* contrast) {
            std::vector<Row> window(5, Row(width + 1, 255)), results;
            std::vector<std::uint16_t> sums(width + 4, 5 * 255);
            std::vector<std::int32_t> squares(width + 4, 5 * 255 * 255);
            for (std::size_t i = 0; i < rows.size(); ++i) {
                slide(rows[i].data(), window[i % 5].data(), width, sums.data() + 2, squares.data() + 2);
                results.push_back(rows[i]);
                results.back().push_back(77);
                contrast(results.back().data(), width, sums.data(), squares.data(), global);
            }
            results.insert(results.end(), window.begin(), window.end());
            return results;
        };
        ExpectEqualVariants(TAVRIX_VARIANTS(LocalContrastKernels, slideWindow), [&](auto* slide) {
            return run(slide, LocalContrastKernels::baseline.contrastRow);
        });
        ExpectEqualVariants(TAVRIX_VARIANTS(LocalContrastKernels, contrastRow), [&](auto* contrast) {
            return run(LocalContrastKernels::baseline.slideWindow, contrast);
        });
    }
}

TEST(ThresholdKernels, BernsenVariantsAgree) {
    std::mt19937 random(3);
    for (int width = 0; width <= kMaxWidth; ++width) {
        const int columns = (width + 63) / 32 * 32;
        const Row padded = RandomRow(random, columns + 3), pixels = RandomRow(random, width);
        std::vector<Row> rows;
        for (int i = 0; i < 10; ++i) rows.push_back(RandomRow(random, columns));
        const auto run = [&](auto* extremesOf4, auto* midRangeRow) {
            std::vector<Row> work = rows;
            const auto extremes = [&](int i) { return Extremes{work[i].data(), work[i + 1].data()}; };
            extremesOf4(padded.data(), columns, extremes(0));
            work.push_back(pixels);
            work.back().push_back(77);
            midRangeRow({extremes(0), extremes(2), extremes(4), extremes(6), extremes(8)}, width,
                        work.back().data());
            return work;
        };
        ExpectEqualVariants(TAVRIX_VARIANTS(BernsenKernels, extremesOf4),
                            [&](auto* kernel) { return run(kernel, BernsenKernels::baseline.midRangeRow); });
        ExpectEqualVariants(TAVRIX_VARIANTS(BernsenKernels, midRangeRow),
                            [&](auto* kernel) { return run(BernsenKernels::baseline.extremesOf4, kernel); });
    }
}

}  // namespace
}  // namespace tavrix
