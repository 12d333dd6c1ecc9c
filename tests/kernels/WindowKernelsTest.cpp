// SPDX-License-Identifier: MIT
// Kernels that work on blocks of rows, or keep something from row to row, against plain loops.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include "binarize/BernsenKernels.h"
#include "binarize/LocalContrastKernels.h"
#include "binarize/WindowColumns.h"
#include "geometry/InterpolationKernels.h"
#include "geometry/TurnKernels.h"
#include "kernels/Levels.h"
#include "morphology/MorphologyKernels.h"

namespace tavrix {
namespace {

using Byte = std::uint8_t;
using Bytes = std::vector<Byte>;

constexpr int kEveryWidth = 130;

Bytes RandomBytes(std::size_t count, std::mt19937& random, int span = 256) {
    Bytes bytes(count);
    for (Byte& byte : bytes) byte = static_cast<Byte>(255 - random() % static_cast<unsigned>(span));
    return bytes;
}

int BitAt(const Byte* row, int x) {
    return row[x / 8] >> (7 - x % 8) & 1;
}

TEST(WindowKernels, ExtremesOf4) {
    std::mt19937 random(1);
    for (int width = 1; width <= kEveryWidth; ++width) {
        const auto count = static_cast<std::size_t>(width);
        const Bytes padded = RandomBytes(count + 3, random);
        Bytes low, high;
        for (auto at = padded.begin(); at + 3 < padded.end(); ++at) {
            low.push_back(*std::min_element(at, at + 4));
            high.push_back(*std::max_element(at, at + 4));
        }
        for (const BernsenKernels* kernels : test::LevelsOf<BernsenKernels>()) {
            Bytes foundLow(count), foundHigh(count);
            kernels->extremesOf4(padded.data(), width, {foundLow.data(), foundHigh.data()});
            ASSERT_EQ(std::tie(foundLow, foundHigh), std::tie(low, high)) << width;
        }
    }
}

// One row comes into the window: as the newest of 1, 2, 4, 8 and 15 rows.
TEST(WindowKernels, MidRangeRow) {
    std::mt19937 random(2);
    for (int width = 1; width <= kEveryWidth; ++width) {
        const std::size_t columns = static_cast<std::size_t>(width + 31) / 32 * 32;
        std::vector<Bytes> rows;  // low and high of columns4, rows1, rows2, rows4, rows8; the image's row
        for (int i = 0; i < 10; ++i) rows.push_back(RandomBytes(columns + 32, random, 20));
        rows.push_back(RandomBytes(static_cast<std::size_t>(width), random, 20));
        for (int x = 0; x < width; ++x) {  // the window holds the pixel itself
            rows[8][x] = std::min(rows[8][x], rows[10][x]);
            rows[9][x] = std::max(rows[9][x], rows[10][x]);
        }
        std::vector<Bytes> expected = rows;
        for (std::size_t x = 0; x < columns; ++x) {
            int extremes[2];  // of the whole window
            for (int side = 0; side < 2; ++side) {
                const auto pick = [&](int a, int b) { return side == 0 ? std::min(a, b) : std::max(a, b); };
                const Byte* of4 = &rows[side][x];
                int value = pick(pick(of4[0], of4[4]), pick(of4[8], of4[11]));
                for (int i = 2 + side; i < 10; i += 2) {
                    expected[i][x] = static_cast<Byte>(value);
                    value = pick(value, rows[i][x]);
                }
                extremes[side] = value;
            }
            if (x >= rows[10].size()) continue;
            const int limit = extremes[1] - extremes[0] >= 15 ? (extremes[0] + extremes[1]) / 2 : 0;
            expected[10][x] = rows[10][x] > limit ? 255 : 0;
        }
        for (const BernsenKernels* kernels : test::LevelsOf<BernsenKernels>()) {
            std::vector<Bytes> found = rows;
            const auto pair = [&](int i) { return Extremes{found[i].data(), found[i + 1].data()}; };
            kernels->midRangeRow({pair(0), pair(2), pair(4), pair(6), pair(8)}, width, found[10].data());
            ASSERT_EQ(found, expected) << width;
        }
    }
}

// A window of five rows goes down a picture; outside it is white.
TEST(WindowKernels, SlideWindowAndContrastRow) {
    std::mt19937 random(3);
    for (int width = 1; width <= kEveryWidth; ++width) {
        const auto count = static_cast<std::size_t>(width);
        std::vector<Bytes> rows;
        for (const int span : {256, 150, 150, 150, 60, 60, 60, 60, 256}) {
            rows.push_back(RandomBytes(count, random, span));
        }
        const int global = static_cast<int>(random() % 256);
        for (const LocalContrastKernels* kernels : test::LevelsOf<LocalContrastKernels>()) {
            WindowColumns window(width);
            for (int i = 0; i < static_cast<int>(rows.size()); ++i) {
                kernels->slideWindow(rows[i].data(), window.Row(i), width, window.Columns());
                ASSERT_TRUE(std::equal(rows[i].begin(), rows[i].end(), window.Row(i)));
                Bytes found = rows[i], expected;
                found.push_back(77);
                kernels->contrastRow(found.data(), width, window.Columns(), global);
                for (int x = 0; x < width; ++x) {
                    double sum = 0, square = 0;
                    for (int k = 0; k < 25; ++k) {
                        const int column = x - 2 + k % 5;
                        const int value = column >= 0 && column < width ? window.Row(k / 5)[column] : 255;
                        sum += value;
                        square += value * value;
                    }
                    const int mean = static_cast<int>(sum * 0.04);
                    const int base = std::sqrt((25 * square - sum * sum) * 0.0016) >= 20 ? mean : global;
                    expected.push_back(rows[i][x] > (mean < global ? base + 20 : base - 20) ? 255 : 0);
                }
                expected.push_back(77);
                ASSERT_EQ(found, expected) << "width " << width << " row " << i;
            }
        }
    }
}

void CheckInterpolation(InterpolationKernels::Interpolate* InterpolationKernels::*kernel, int pixelBytes) {
    constexpr std::uint32_t kRowBytes = 300;
    std::mt19937 random(4);
    Bytes source = RandomBytes(kRowBytes * kRowBytes, random);
    for (std::size_t i = 0; i < source.size(); ++i) {
        if (i / kRowBytes % 32 < 16) source[i] = static_cast<Byte>(180 + i / 32 % 2);  // areas of one value
    }
    for (int i = 0; i < 16 * kEveryWidth; ++i) {
        const int width = 1 + i / 16;
        // The last are turns by which every other row is missed by less than float can tell.
        const double theta = i % 16 < 12 ? i * 0.0008 : 0.5235989;
        const auto rounded = [](double value) { return static_cast<double>(static_cast<float>(value)); };
        const TurnedRow row{
            rounded(std::sin(theta)), rounded(std::cos(theta)), 70.0, 3.0, i % 16 - 8.0, 15.0, 200.0};
        const int first = 70, last = first + width;  // inside the source whatever the angle
        Bytes expected(static_cast<std::size_t>(pixelBytes * (last + 9)), 77);
        std::vector<std::size_t> offset(last);
        std::vector<float> weightX(last), weightY(last);
        for (int column = first; column < last; ++column) {
            const double dx = column - row.centre;
            const double sx = dx * row.cosine + row.a + row.halfWidth;
            const double sy = row.b - dx * row.sine + row.halfHeight;
            const int ix = static_cast<int>(sx), iy = static_cast<int>(sy);
            const double x = sx - ix, y = sy - iy;
            const std::size_t start = std::size_t{kRowBytes} * iy + pixelBytes * ix;
            for (int k = 0; k < pixelBytes; ++k) {
                const Byte* near = &source[start + k];
                const Byte* far = near + kRowBytes;
                expected[pixelBytes * column + k] =
                    static_cast<Byte>(x * (y * far[pixelBytes] + (1 - y) * near[pixelBytes]) +
                                      (1 - x) * ((1 - y) * near[0] + y * far[0]));
            }
            offset[column] = start - static_cast<std::size_t>(kRowBytes * (row.b + row.halfHeight) +
                                                              pixelBytes * (row.a + row.halfWidth));
            weightX[column] = static_cast<float>(x);
            weightY[column] = static_cast<float>(y);
        }
        // Without weights a column's offset says nothing.
        weightX[first] = std::numeric_limits<float>::quiet_NaN();
        offset[first] = kRowBytes * (i % 64);
        for (const InterpolationKernels* kernels : test::LevelsOf<InterpolationKernels>()) {
            for (const TurnedColumns& columns :
                 {TurnedColumns{}, TurnedColumns{offset.data(), weightX.data(), weightY.data()}}) {
                Bytes found(expected.size(), 77);
                (kernels->*kernel)(row, columns, source.data(), kRowBytes, first, last, found.data());
                ASSERT_EQ(found, expected) << width;
            }
        }
    }
}

TEST(WindowKernels, Interpolate) {
    CheckInterpolation(&InterpolationKernels::gray, 1);
    CheckInterpolation(&InterpolationKernels::color, 3);
}

// Every width with some heights, and every height with some widths.
template <class Check>
void ForEachSize(Check check) {
    for (int side = 1; side <= kEveryWidth; ++side) {
        for (const int other : {1, 8, 15, 16, 31, 32, 33, 65, 130}) {
            check(side, other);
            check(other, side);
        }
    }
}

TEST(WindowKernels, TransposeBits) {
    std::mt19937 random(5);
    ForEachSize([&](int width, int height) {
        const int stride = (width + 7) / 8, targetStride = (height + 31) / 32 * 4;
        const Bytes source = RandomBytes(static_cast<std::size_t>(stride) * height, random);
        for (const TurnKernels* kernels : test::LevelsOf<TurnKernels>()) {
            // Backwards through the target, as a quarter turn goes.
            Bytes target = RandomBytes(static_cast<std::size_t>(targetStride) * width, random);
            kernels->transposeBits(source.data(), stride, width, height, &target[targetStride * (width - 1)],
                                   -targetStride);
            for (int x = 0; x < width; ++x) {
                const Byte* row = &target[targetStride * (width - 1 - x)];
                for (int y = 0; y < 8 * targetStride; ++y) {
                    ASSERT_EQ(BitAt(row, y), y < height ? BitAt(&source[stride * y], x) : 0)
                        << width << 'x' << height << " at " << x << ',' << y;
                }
            }
        }
    });
}

TEST(WindowKernels, TransposeBytes) {
    std::mt19937 random(6);
    ForEachSize([&](int width, int height) {
        const Bytes source = RandomBytes(static_cast<std::size_t>(width) * height, random);
        Bytes expected;
        for (int x = 0; x < width; ++x) {
            for (int y = 0; y < height; ++y) expected.push_back(source[y * width + x]);
        }
        for (const TurnKernels* kernels : test::LevelsOf<TurnKernels>()) {
            Bytes target(source.size());
            kernels->transposeBytes(source.data(), width, width, height, target.data(), height);
            ASSERT_EQ(target, expected) << width << 'x' << height;
        }
    });
}

TEST(WindowKernels, Spread) {
    std::mt19937 random(7);
    for (int width = 1; width <= kEveryWidth; ++width) {
        const int height = width % 3 == 0 ? 64 : 1 + width % 20;
        const std::size_t stride = static_cast<std::size_t>(width + 31) / 32 * 4;
        for (const int radius : {1, 7}) {
            for (const bool black : {true, false}) {
                Bytes source = RandomBytes(stride * static_cast<std::size_t>(height), random);
                for (Byte& byte : source) {  // what spreads is rare
                    for (int i = 0; i < radius; ++i) byte |= static_cast<Byte>(random());
                    if (!black) byte = static_cast<Byte>(~byte);
                }
                // Outside is white.
                const auto isBlack = [&](int x, int y) {
                    return x >= 0 && x < width && y >= 0 && y < height && !BitAt(&source[stride * y], x);
                };
                const Bytes before = width % 2 == 0 ? source : Bytes(source.size(), 0x55);
                Bytes expected = before;
                for (int y = 0; y < height; ++y) {
                    for (int x = 0; x < width; ++x) {
                        bool spreads = false;
                        for (int i = y - radius; i <= y + radius; ++i) {
                            for (int j = x - radius; j <= x + radius; ++j) spreads |= isBlack(j, i) == black;
                        }
                        const auto mask = static_cast<Byte>(0x80 >> x % 8);
                        Byte& byte = expected[stride * y + x / 8];
                        byte = static_cast<Byte>(spreads == black ? byte & ~mask : byte | mask);
                    }
                }
                for (const MorphologyKernels* kernels : test::LevelsOf<MorphologyKernels>()) {
                    Bytes found = before;  // of even widths in place
                    std::vector<std::uint64_t> scratch(SpreadScratchWords(width));
                    const Byte* from = width % 2 == 0 ? found.data() : source.data();
                    (black ? kernels->spreadBlack : kernels->spreadWhite)(
                        {from, found.data(), stride, width, height}, radius, scratch.data());
                    ASSERT_EQ(found, expected) << width << " radius " << radius << " black " << black;
                }
            }
        }
    }
}

}  // namespace
}  // namespace tavrix
