// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <array>
#include <map>
#include <numeric>

#include "binarize/Binarizer.h"
#include "binarize/Histogram.h"
#include "binarize/OtsuBinarizer.h"
#include "binarize/PeakFitBinarizer.h"
#include "support/HostImage.h"

namespace tavrix {
namespace {

using test::HostImage;
using Counters = std::array<std::uint32_t, kGrayLevels>;

Counters CountersOf(const std::map<int, std::uint32_t>& counts) {
    Counters counters{};
    for (const auto& [level, count] : counts) counters[level] = count;
    return counters;
}

TEST(Binarizer, IntensityIsOneBelowTheLevelOfGrays) {
    EXPECT_EQ(Binarizer::Intensity(0, 0, 0), 0);
    for (int level = 1; level < kGrayLevels; ++level) {
        ASSERT_EQ(Binarizer::Intensity(level, level, level), level - 1);
    }
    EXPECT_EQ(Binarizer::Intensity(255, 0, 0), 147);
}

TEST(Binarizer, AttachTakesGeometryAndTheColourTable) {
    const HostImage host(13, 3, 8);
    host.Record().palette[7] = {30, 20, 10, 99};
    DibImage image(host.Handle());
    OtsuBinarizer binarizer(&image);
    EXPECT_EQ(binarizer.width, 13);
    EXPECT_EQ(binarizer.height, 3);
    EXPECT_EQ(binarizer.rowBytes, 16u);
    EXPECT_EQ(binarizer.bitCount, 8u);
    EXPECT_EQ(binarizer.intensity[7], Binarizer::Intensity(10, 20, 30));
    EXPECT_FALSE(binarizer.Attach(nullptr));
    EXPECT_EQ(binarizer.image, &image);
}

TEST(Binarizer, HistogramCountsEveryStepthPixelAndNoPadding) {
    std::mt19937 random(3);
    for (const int width : {0, 1, 3, 7, 8, 9, 31, 100, 32749}) {
        const int height = width > 100 ? 9 : 5;
        const HostImage host = HostImage::Random(width, height, 8, random);
        DibImage image(host.Handle());
        OtsuBinarizer binarizer(&image);
        for (const int step : {1, 2, 3}) {
            Counters expected{};
            for (int y = 0; y < height; y += step) {
                for (int x = 0; x < width; x += step) ++expected[host.Row(y)[x]];
            }
            binarizer.ComputeHistogram(step);
            EXPECT_TRUE(std::equal(expected.begin(), expected.end(), binarizer.histogram)) << width;
        }
    }
}

TEST(Binarizer, IsodataThresholdOfKnownHistograms) {
    const struct {
        std::map<int, std::uint32_t> counts;
        int threshold;
    } cases[] = {
        {{}, 0},
        {{{10, 5}, {200, 5}}, 105},
        {{{30, 7}, {220, 7}}, 125},
        {{{77, 3}}, 38},  // nothing is below the threshold
        {{{0, 9}}, 0},
        {{{255, 1}}, 127},
        // The sums of 20 million pixels pass 32 bits.
        {{{100, 10000000}, {250, 10000000}}, 175},
    };
    for (const auto& [counts, threshold] : cases) {
        EXPECT_EQ(Binarizer::IsodataThreshold(CountersOf(counts).data()), threshold);
    }
}

TEST(Binarizer, OtsuThresholdOfARange) {
    const struct {
        std::map<int, std::uint32_t> counts;
        int low, high, threshold;
    } cases[] = {
        {{}, 0, 256, 255},        // no counts: the last bin
        {{{10, 4}}, 50, 50, 50},  // empty range
        {{{10, 4}}, 60, 50, 60},
        {{{10, 4}}, 0, 256, 255},            // one level: no split is better than none
        {{{30, 5}, {220, 5}}, 0, 256, 219},  // ties take the last
        {{{30, 5}, {220, 5}}, 0, 221, 219},
        {{{30, 5}, {220, 5}}, 0, 220, 219},  // one level in the range
        {{{0, 1}, {2, 1}, {4, 1}, {6, 1}}, 0, 8, 3},
        {{{10, 10}, {12, 1}}, 0, 256, 11},  // the criterion is rounded up, then compared
        {{{100, 20000000}, {250, 20000000}}, 0, 256, 249},
    };
    for (const auto& [counts, low, high, threshold] : cases) {
        EXPECT_EQ(Binarizer::OtsuThreshold(CountersOf(counts).data(), low, high), threshold)
            << low << ".." << high;
    }
}

TEST(Binarizer, ImageOtsuThresholdTakesTheFirstBest) {
    const auto threshold = [](int width, int height, const std::vector<std::uint8_t>& levels) {
        const HostImage host(width, height, 8);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) host.Row(y)[x] = levels[(y * width + x) % levels.size()];
        }
        DibImage image(host.Handle());
        return OtsuBinarizer(&image).ImageOtsuThreshold();
    };
    EXPECT_EQ(threshold(0, 0, {0}), 120);
    EXPECT_EQ(threshold(5, 0, {0}), 120);
    EXPECT_EQ(threshold(5, 5, {0}), 0);
    EXPECT_EQ(threshold(8, 8, {30, 220}), 30);
    EXPECT_EQ(threshold(8, 8, {30, 220, 220, 221}), 30);
    EXPECT_EQ(threshold(9, 9, {10, 20, 200}), 20);
}

TEST(PeakFit, FindsPeaksAndFeet) {
    using Peaks = PeakFitBinarizer;
    const auto counts = [](const std::map<int, std::uint32_t>& bins) {
        std::array<std::int32_t, kGrayLevels> table{};
        for (const auto& [bin, count] : bins) table[bin] = static_cast<std::int32_t>(count);
        return table;
    };
    const auto empty = counts({});
    EXPECT_EQ(Peaks::DarkPeak(empty.data()), 0);
    EXPECT_EQ(Peaks::BrightPeak(empty.data()), 120);
    const auto ties = counts({{5, 3}, {9, 3}, {119, 2}, {120, 1}, {255, 1}});
    EXPECT_EQ(Peaks::DarkPeak(ties.data()), 5);
    EXPECT_EQ(Peaks::BrightPeak(ties.data()), 120);

    const auto card = counts({{30, 1000}, {33, 100}, {220, 2000}, {210, 600}, {200, 100}});
    EXPECT_EQ(Peaks::PeakFoot(card.data(), +1, 30, 3), 33);
    EXPECT_EQ(Peaks::PeakFoot(card.data(), -1, 220, 10), 207);
    // A flank that never turns convex, walked off either end.
    std::array<std::int32_t, kGrayLevels> tent;
    for (int i = 0; i < kGrayLevels; ++i) tent[i] = 1000 - std::abs(i - 128);
    EXPECT_EQ(Peaks::PeakFoot(tent.data(), -1, 128, 10), Peaks::kNoFoot);
    EXPECT_EQ(Peaks::PeakFoot(tent.data(), +1, 128, 3), Peaks::kNoFoot);
    EXPECT_EQ(Peaks::PeakFoot(empty.data(), +1, 0, 3), Peaks::kNoFoot);
    // The vertex of the parabola on the peak itself, and a root of a negative number.
    EXPECT_EQ(Peaks::PeakFoot(counts({{100, 0}, {97, 1}, {94, 4}}).data(), -1, 100, 3), Peaks::kNoFoot);
    EXPECT_EQ(Peaks::PeakFoot(counts({{30, 1000}, {33, 450}, {36, 5}}).data(), +1, 30, 3), Peaks::kNoFoot);
}

TEST(PeakFit, PlacesTheThresholdATenthFromTheBrightFoot) {
    // Levels one above the intensities of the histogram above.
    const std::map<int, int> levels = {{31, 1000}, {34, 100}, {221, 2000}, {211, 600}, {201, 100}};
    const HostImage host(38, 100, 8);
    int at = 0;
    for (const auto& [level, count] : levels) {
        for (int i = 0; i < count; ++i, ++at) host.Row(at / 38)[at % 38] = static_cast<std::uint8_t>(level);
    }
    DibImage image(host.Handle());
    EXPECT_EQ(PeakFitBinarizer(&image).PeakThreshold(), 190);
}

}  // namespace
}  // namespace tavrix
