// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "automatic/Filters.h"
#include "picture/GrayRow.h"
#include "picture/Scaling.h"

namespace host {
namespace {

constexpr int kWidth = 37;
constexpr int kHeight = 11;

Levels Noise() {
    Levels picture(kWidth, kHeight);
    std::mt19937 random(5);
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) picture.Row(y)[x] = static_cast<std::uint8_t>(random());
    }
    return picture;
}

// Calls with the level of every pixel around (x, y), and its distance in columns and rows.
template <class Call>
void Around(const Levels& picture, int x, int y, int reach, Call call) {
    for (int dy = -reach; dy <= reach; ++dy) {
        for (int dx = -reach; dx <= reach; ++dx) {
            call(picture.Row(std::clamp(y + dy, 0, kHeight - 1))[std::clamp(x + dx, 0, kWidth - 1)], dx, dy);
        }
    }
}

TEST(FiltersTest, AreWhatTheirDefinitionsSay) {
    const Levels picture = Noise();
    Plane<double> values(kWidth, kHeight);
    for (int y = 0; y < kHeight; ++y) std::copy_n(picture.Row(y), kWidth, values.Row(y));
    const Extremes extremes = ExtremesOf(picture);
    for (const double deviation : {0.3, 0.8, 2.5}) {
        const Levels smooth = Smoothed(picture, deviation);
        for (int side : {3, 7, 41}) {  // the last one is wider than the picture
            Plane<double> means(kWidth, kHeight);
            AddMeans(values, side, 0.5, means);
            for (int y = 0; y < kHeight; ++y) {
                for (int x = 0; x < kWidth; ++x) {
                    int low = 255, high = 0, sum = 0;
                    double bell = 0, weights = 0;
                    Around(picture, x, y, 1, [&](int level, int, int) {
                        low = std::min(low, level);
                        high = std::max(high, level);
                    });
                    Around(picture, x, y, side / 2, [&](int level, int, int) { sum += level; });
                    Around(picture, x, y, 9, [&](int level, int dx, int dy) {
                        const double weight = std::exp(-(dx * dx + dy * dy) / (2 * deviation * deviation));
                        bell += weight * level;
                        weights += weight;
                    });
                    ASSERT_EQ(extremes.darkest.Row(y)[x], low);
                    ASSERT_EQ(extremes.lightest.Row(y)[x], high);
                    ASSERT_DOUBLE_EQ(means.Row(y)[x], 0.5 / (side * side) * sum);
                    ASSERT_NEAR(smooth.Row(y)[x], bell / weights, 2.5) << deviation;
                }
            }
        }
    }
}

TEST(GrayRowTest, IsTheLuminanceOfEveryColour) {
    constexpr int kRow = 256 * 256 - 5;  // no whole number of vectors
    std::vector<std::uint8_t> colours(3 * kRow), gray(kRow);
    for (int red = 0; red < 256; ++red) {
        for (int i = 0; i < kRow; ++i) {
            colours[3 * i] = static_cast<std::uint8_t>(i);
            colours[3 * i + 1] = static_cast<std::uint8_t>(i / 256);
            colours[3 * i + 2] = static_cast<std::uint8_t>(red);
        }
        ToGrayRow(colours.data(), kRow, gray.data());
        for (int i = 0; i < kRow; ++i) {
            const double level = 0.299 * red + 0.587 * colours[3 * i + 1] + 0.114 * colours[3 * i] + 0.5;
            ASSERT_EQ(gray[i], static_cast<std::uint8_t>(level)) << red << " " << i;
        }
    }
}

TEST(ScalingTest, KeepsRampsAndMeans) {
    for (const int bitCount : {8, 24}) {
        for (const double factor : {2.0, 3.0, 1.37, 0.5, 0.31}) {
            HostImage ramp(120, 90, bitCount);
            const auto level = [](double x, double y) { return 20 + x + y; };
            for (int y = 0; y < 90; ++y) {
                for (int i = 0; i < 120 * bitCount / 8; ++i) {
                    ramp.TopRow(y)[i] = static_cast<std::uint8_t>(level(i / (bitCount / 8), y));
                }
            }
            const HostImage scaled = Scaled(std::move(ramp), factor);
            ASSERT_EQ(scaled.Width(), std::lround(120 * factor));
            const double across = 120.0 / scaled.Width(), down = 90.0 / scaled.Height();
            for (int y = 9; y < scaled.Height() - 9; ++y) {
                for (int x = 9; x < scaled.Width() - 9; ++x) {
                    const double expected = level((x + 0.5) * across - 0.5, (y + 0.5) * down - 0.5);
                    ASSERT_NEAR(scaled.TopRow(y)[x * bitCount / 8], expected, 1) << factor;
                }
            }
        }
    }
    HostImage white(5, 4, 8);
    std::fill_n(white.Record().bits, white.RowBytes() * 4, std::uint8_t{255});
    const HostImage scaled = Scaled(std::move(white), 0.2);
    EXPECT_EQ(scaled.Width(), 1);
    EXPECT_EQ(scaled.TopRow(0)[0], 255);
}

}  // namespace
}  // namespace host
