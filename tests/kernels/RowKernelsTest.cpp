// SPDX-License-Identifier: MIT
// Every kernel that works on rows against a plain loop, at every level, for all widths up to kEveryWidth and
// some that pass the kernels' blocks and counters, wherever rows start in memory. Sources end where they may
// no longer be read, for a sanitizer to see; what lies around a target has to stay.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <ostream>
#include <random>
#include <string>
#include <tuple>

#include "binarize/GradientKernels.h"
#include "binarize/MaskKernels.h"
#include "geometry/TurnKernels.h"
#include "image/NeighbourhoodKernels.h"
#include "image/PixelKernels.h"
#include "kernels/Levels.h"
#include "regions/RegionKernels.h"

namespace tavrix {
namespace {

using Byte = std::uint8_t;
using Bytes = std::vector<Byte>;

constexpr int kEveryWidth = 130;
constexpr int kLongWidths[] = {255, 1023, 1024, 1025, 2100, 8200, 16500};
constexpr std::size_t kAround = 40;  // bytes before and after a target

// What a kernel reads and writes. Rows have a byte before their first and after their last one.
struct Case {
    int count, number, shift;
    bool flag;
    Bytes sources[5];
    std::size_t starts[5], targetStart;
    Bytes out;
    std::vector<std::uint64_t> words;
    std::int64_t dark = 7, light = 9;

    const Byte* Row(int i) const { return sources[i].data() + starts[i]; }
    const Byte* Before() const { return Row(0); }
    const Byte* At() const { return Row(1); }
    const Byte* After() const { return Row(2); }
    Byte* Target() { return out.data() + targetStart; }
    auto Written() const { return std::tie(out, words, dark, light); }
    // Bits, the first one in the highest place.
    static int Bit(const Byte* row, int x) { return row[x / 8] >> (7 - x % 8) & 1; }
    template <class IsSet>
    void WriteBits(IsSet isSet) {
        std::fill_n(Target(), (count + 7) / 8, Byte{0});
        for (int x = 0; x < count; ++x) Target()[x / 8] |= static_cast<Byte>((isSet(x) ? 0x80 : 0) >> x % 8);
    }
    template <class ValueAt>
    void Write(ValueAt valueAt) {
        for (int x = 0; x < count; ++x) Target()[x] = static_cast<Byte>(valueAt(x));
    }
};

struct RowKernel {
    std::string name;
    int bitsPerPixel;   // that sources have
    int lowest, above;  // range of Case::number
    std::vector<std::function<void(Case&)>> levels;
    std::function<void(Case&)> plain;
};

void PrintTo(const RowKernel& kernel, std::ostream* out) {
    *out << kernel.name;
}

template <class Table, class Run>
std::vector<std::function<void(Case&)>> AtEveryLevel(Run run) {
    std::vector<std::function<void(Case&)>> runs;
    for (const Table* table : test::LevelsOf<Table>()) runs.push_back([=](Case& c) { run(*table, c); });
    return runs;
}
#define KERNEL(table, name, ...) \
    AtEveryLevel<table>([](const table& kernels, Case& c) { kernels.name(__VA_ARGS__); })
#define COUNTING_KERNEL(table, name, ...) \
    AtEveryLevel<table>([](const table& kernels, Case& c) { c.dark = kernels.name(__VA_ARGS__); })

int Limited(int value) {
    return std::clamp(value, 0, 255);
}

int SumOf3(const Byte* row, int x) {
    return row[x - 1] + row[x] + row[x + 1];
}

// Gradients by the two kernels of Sobel, whose signs do not matter here.
std::pair<int, int> Sobel(const Case& c, int x) {
    const auto column = [&](int i) { return c.Before()[i] + 2 * c.At()[i] + c.After()[i]; };
    const auto row = [&](const Byte* at) { return at[x - 1] + 2 * at[x] + at[x + 1]; };
    return {std::abs(column(x + 1) - column(x - 1)), std::abs(row(c.After()) - row(c.Before()))};
}

// GradientKernels has rows that end with their pixels: number says which of its results is looked at.
const Byte* GradientSource(const Case& c, int i) {
    return c.Row(i % 5);
}

void RunGradientRows(const GradientKernels& kernels, Case& c) {
    Bytes rows[6], gradients[4];
    for (int i = 0; i < 6; ++i) rows[i].assign(GradientSource(c, i), GradientSource(c, i) + c.count);
    for (Bytes& row : gradients) row.resize(static_cast<std::size_t>(c.count));
    kernels.gradientRows(
        {rows[0].data(), rows[1].data(), rows[2].data(), rows[3].data(), rows[4].data(), rows[5].data()},
        c.count, {gradients[0].data(), gradients[1].data(), gradients[2].data(), gradients[3].data()});
    std::copy(gradients[c.number].begin(), gradients[c.number].end(), c.Target());
}

int MagnitudeInImage(const Case& c, int x) {
    const auto value = [&](int dx, int dy) {
        return x + dx < 0 || x + dx >= c.count ? 0 : GradientSource(c, c.number + 1 + dy)[x + dx];
    };
    const auto column = [&](int dx) { return value(dx, -1) + 2 * value(dx, 0) + value(dx, 1); };
    const auto row = [&](int dy) { return value(-1, dy) + 2 * value(0, dy) + value(1, dy); };
    return std::abs(column(1) - column(-1)) + std::abs(row(1) - row(-1));
}

// Magnitudes are even.
Byte Twice(int value) {
    return static_cast<Byte>(2 * value);
}

// The magnitudes of row i of an image whose rows are c's sources in turns, from the one before the first on.
Bytes MagnitudesOf(const Case& c, int i) {
    Bytes magnitudes;
    std::transform(GradientSource(c, i) - 1, GradientSource(c, i) + c.count + 1,
                   std::back_inserter(magnitudes), Twice);
    return magnitudes;
}

void RunEdgeLevelRows(const GradientKernels& kernels, Case& c) {
    Bytes magnitudes[6], rows[5];
    for (int i = 0; i < 6; ++i) magnitudes[i] = MagnitudesOf(c, i);
    for (int i = 0; i < 5; ++i) rows[i].assign(c.Row(i), c.Row(i) + c.count);
    kernels.edgeLevelRows({rows[1].data(), rows[2].data(), rows[3].data(), rows[4].data()}, rows[0].data(),
                          {&magnitudes[0][1], &magnitudes[1][1], &magnitudes[2][1], &magnitudes[3][1],
                           &magnitudes[4][1], &magnitudes[5][1]},
                          c.count);
    std::copy(rows[c.flag ? 1 : 4].begin(), rows[c.flag ? 1 : 4].end(), c.Target());
    EXPECT_TRUE(std::equal(rows[0].begin(), rows[0].end(), c.Row(4)));
}

double Magnitude(const Case& c, int x) {
    const auto [gx, gy] = Sobel(c, x);
    return std::sqrt(gx * gx + gy * gy);
}

void MarkPlainly(Case& c, bool fills) {
    Byte* row = c.Target();
    const auto isBlack = [](Byte value) { return value <= 1; };
    for (int x = 0; x < c.count; ++x) {
        const bool right = x + 1 == c.count && c.flag ? true : isBlack(row[x + 1]);
        const int around = isBlack(row[x - 1]) + right + isBlack(c.Before()[x]) + isBlack(c.After()[x]);
        if (row[x] == 0 || (row[x] == 255 && fills && around >= 3)) {
            row[x] = 1;
        } else if (row[x] == 255) {
            row[x] = 254;
        }
    }
}

const RowKernel kRowKernels[] = {
    {"PackAbove", 8, 0, 256,
     KERNEL(PixelKernels, packAbove, c.At(), c.count, static_cast<Byte>(c.number), c.Target()),
     [](Case& c) { c.WriteBits([&](int x) { return c.At()[x] > c.number; }); }},
    {"GrayRow", 24, 0, 1, KERNEL(PixelKernels, grayRow, c.At(), c.count, c.Target()),
     [](Case& c) {
         c.Write([&](int x) {
             const Byte* pixel = c.At() + 3 * x;
             return 0.299 * pixel[2] + 0.587 * pixel[1] + 0.114 * pixel[0] + 0.5;
         });
     }},
    {"GradientRows", 8, 0, 4, AtEveryLevel<GradientKernels>(RunGradientRows),
     [](Case& c) { c.Write([&](int x) { return MagnitudeInImage(c, x); }); }},
    {"EdgeLevelRows", 8, 0, 51, AtEveryLevel<GradientKernels>(RunEdgeLevelRows),
     [](Case& c) {
         const int y = c.flag ? 1 : 4;
         const Bytes above = MagnitudesOf(c, y - 1), at = MagnitudesOf(c, y), below = MagnitudesOf(c, y + 1);
         c.Write([&](int x) {
             const int sum = above[x + 1] + at[x] + at[x + 2] + below[x + 1];
             return c.Row(y)[x] != c.Row(y - 1)[x] && sum / 4 >= 1 && sum / 4 <= 99 ? 255 : 0;
         });
     }},
    {"EdgeRow", 8, 0, 1,
     KERNEL(NeighbourhoodKernels, edgeRow, c.Before(), c.At(), c.After(), c.count, c.Target()),
     [](Case& c) { c.Write([&](int x) { return Magnitude(c, x) >= 127 ? 0 : 255; }); }},
    {"SobelRow", 8, 0, 1,
     KERNEL(NeighbourhoodKernels, sobelRow, c.Before(), c.At(), c.After(), c.count, c.Target()),
     [](Case& c) { c.Write([&](int x) { return Limited(static_cast<int>(Magnitude(c, x))); }); }},
    {"MeanRow", 8, 0, 1,
     KERNEL(NeighbourhoodKernels, meanRow, c.Before(), c.At(), c.After(), c.count, c.Target()),
     [](Case& c) {
         c.Write(
             [&](int x) { return (SumOf3(c.Before(), x) + SumOf3(c.At(), x) + SumOf3(c.After(), x)) / 9; });
     }},
    {"SharpenRow", 8, 96, 102,
     KERNEL(NeighbourhoodKernels, sharpenRow, c.Before(), c.At(), c.After(), c.count,
            SharpeningFactor(static_cast<float>(c.number) / 10), c.Target()),
     [](Case& c) {
         c.Write([&](int x) {
             const int centre = c.At()[x];
             const float scaled = static_cast<float>(c.number) / 10 * static_cast<float>(centre);
             const int around = SumOf3(c.Before(), x) + SumOf3(c.At(), x) + SumOf3(c.After(), x) - centre;
             return Limited(static_cast<int>(scaled) - around);
         });
     }},
    {"CountFrom", 8, 0, 256, COUNTING_KERNEL(MaskKernels, countFrom, c.At(), c.count, c.number),
     [](Case& c) {
         c.dark = std::count_if(c.At(), c.At() + c.count, [&](int value) { return value >= c.number; });
     }},
    {"MaskUpTo", 8, -1, 256, KERNEL(MaskKernels, maskUpTo, c.At(), c.count, c.number, c.Target()),
     [](Case& c) { c.Write([&](int x) { return c.At()[x] <= c.number ? 255 : 0; }); }},
    {"MaskAbove", 8, -1, 256, KERNEL(MaskKernels, maskAbove, c.At(), c.count, c.number, c.Target()),
     [](Case& c) { c.Write([&](int x) { return c.At()[x] > c.number ? 255 : 0; }); }},
    {"MaskUpTo in place", 8, -1, 256,
     KERNEL(MaskKernels, maskUpTo, c.Target(), c.count, c.number, c.Target()),
     [](Case& c) { c.Write([&](int x) { return c.Target()[x] <= c.number ? 255 : 0; }); }},
    {"CountTips", 8, 0, 1, COUNTING_KERNEL(RegionKernels, countTips, c.At(), c.After(), c.count),
     [](Case& c) {
         c.dark = 0;
         for (int x = 0; x < c.count; ++x) {
             const Byte* after = c.After() + x;
             c.dark +=
                 c.At()[x] == 0 && c.At()[x + 1] != 0 && after[-1] != 0 && after[0] != 0 && after[1] != 0;
         }
     }},
    {"ThresholdRegionRow", 8, 0, 257,
     KERNEL(RegionKernels, thresholdRegionRow, c.At(), c.count, c.number, c.flag, c.Target(), &c.dark,
            &c.light),
     [](Case& c) {
         c.Write([&](int x) {
             if (c.At()[x] < c.number) return ++c.dark, 0;
             return c.flag || c.Target()[x] != 0 ? (++c.light, 255) : 0;
         });
     }},
    {"MergeRow", 8, 0, 1, KERNEL(RegionKernels, mergeRow, c.Target(), c.At(), c.count),
     [](Case& c) { c.Write([&](int x) { return c.Target()[x] == 0 && c.At()[x] == 0 ? 0 : 255; }); }},
    {"ApplyEdgesRow", 8, 0, 1, KERNEL(RegionKernels, applyEdgesRow, c.Target(), c.At(), c.count),
     [](Case& c) { c.Write([&](int x) { return c.Target()[x] == 1 || c.At()[x] == 0 ? 1 : 254; }); }},
    {"EvenZeroBits", 16, 0, 1, KERNEL(RegionKernels, evenZeroBits, c.At(), c.count, c.words.data()),
     [](Case& c) {
         std::fill(c.words.begin(), c.words.end() - 1, 0);
         for (int x = 0; x < c.count; ++x) c.words[x / 64] |= std::uint64_t{c.At()[2 * x] == 0} << x % 64;
     }},
    {"MarkRow", 8, 0, 1, KERNEL(RegionKernels, markRow, c.Target(), c.count),
     [](Case& c) { MarkPlainly(c, false); }},
    {"FillAndMarkRow", 8, 0, 1,
     KERNEL(RegionKernels, fillAndMarkRow, c.Before(), c.Target(), c.After(), c.count, c.flag),
     [](Case& c) { MarkPlainly(c, true); }},
    {"CopyBits", 1, 0, 1, KERNEL(TurnKernels, copyBits, c.At(), c.shift, c.count, c.Target()),
     [](Case& c) { c.WriteBits([&](int x) { return Case::Bit(c.At(), c.shift + x); }); }},
    {"ReverseBits", 1, 0, 1, KERNEL(TurnKernels, reverseBits, c.At(), c.shift, c.count, c.Target()),
     [](Case& c) { c.WriteBits([&](int x) { return Case::Bit(c.At(), c.shift + c.count - 1 - x); }); }},
};

// Noise; masks, whose special values meet; values around a threshold; faint noise.
Byte RandomByte(int content, int number, std::mt19937& random) {
    constexpr Byte kMaskValues[] = {0, 0, 0, 255, 255, 255, 1, 254};
    const auto noise = static_cast<int>(random() % 256);
    switch (content) {
        case 0: return static_cast<Byte>(noise);
        case 1: return kMaskValues[noise % 8];
        case 2: return static_cast<Byte>(Limited(number + noise % 3 - 1));
        default: return static_cast<Byte>(100 + noise % 25);
    }
}

class RowKernels : public testing::TestWithParam<RowKernel> {};

TEST_P(RowKernels, DoWhatAPlainLoopDoes) {
    const RowKernel& kernel = GetParam();
    std::mt19937 random(1);
    const auto below = [&](int bound) { return static_cast<int>(random() % static_cast<unsigned>(bound)); };
    std::vector<int> widths(std::begin(kLongWidths), std::end(kLongWidths));
    for (int width = 1; width <= kEveryWidth; ++width) widths.insert(widths.end(), 3, width);
    for (const int width : widths) {
        for (int content = 0; content < 4; ++content) {
            Case c{};
            c.count = width;
            c.shift = kernel.bitsPerPixel == 1 ? below(24) : 0;
            c.flag = below(2) == 0;
            const int choice = below(4);
            c.number = choice == 0   ? kernel.lowest
                       : choice == 1 ? kernel.above - 1
                                     : kernel.lowest + below(kernel.above - kernel.lowest);
            const auto fill = [&](Bytes& bytes, int size) {
                bytes.resize(static_cast<std::size_t>(size));
                for (Byte& byte : bytes) byte = RandomByte(content, c.number, random);
            };
            for (int i = 0; i < 5; ++i) {
                const int start = 1 + below(32), after = kernel.bitsPerPixel == 8 ? 1 : 0;
                c.starts[i] = static_cast<std::size_t>(start);
                fill(c.sources[i], start + (c.shift + kernel.bitsPerPixel * width + 7) / 8 + after);
            }
            c.targetStart = kAround + random() % 32;
            fill(c.out, static_cast<int>(c.targetStart + kAround) + width);
            c.words.assign(static_cast<std::size_t>(width) / 64 + 3, 0x5555);
            Case expected = c;
            kernel.plain(expected);
            for (const auto& run : kernel.levels) {
                Case found = c;
                run(found);
                ASSERT_EQ(found.Written(), expected.Written())
                    << "width " << width << ", level " << &run - kernel.levels.data() << ", content "
                    << content << ", number " << c.number << ", flag " << c.flag << ", shift " << c.shift;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, RowKernels, testing::ValuesIn(kRowKernels), [](const auto& test) {
    std::string name = test.param.name;
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
});

// The vector code has its own arithmetic, which must round as the sum in double does.
TEST(GrayRow, IsTheRoundedSumForEveryColour) {
    Bytes row(3 * 256), gray(256), expected(256);
    for (int blueGreen = 0; blueGreen < 256 * 256; ++blueGreen) {
        const int blue = blueGreen / 256, green = blueGreen % 256;
        for (int red = 0; red < 256; ++red) {
            row[3 * red] = static_cast<Byte>(blue);
            row[3 * red + 1] = static_cast<Byte>(green);
            row[3 * red + 2] = static_cast<Byte>(red);
            expected[red] = static_cast<Byte>(0.299 * red + 0.587 * green + 0.114 * blue + 0.5);
        }
        for (const PixelKernels* kernels : test::LevelsOf<PixelKernels>()) {
            kernels->grayRow(row.data(), 256, gray.data());
            ASSERT_EQ(gray, expected) << "blue " << blue << ", green " << green;
        }
    }
}

}  // namespace
}  // namespace tavrix
