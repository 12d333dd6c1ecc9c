// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "binarize/EdgeRegionReference.h"
#include "regions/EdgeMeasures.h"
#include "regions/EdgeRegionBinarizer.h"
#include "regions/HistogramMeasures.h"
#include "regions/PageKernels.h"
#include "regions/RegionPasses.h"
#include "regions/SideBorders.h"
#include "regions/TextComponents.h"

namespace tavrix {
namespace {

using test::EdgeRegionReference;
using test::HostImage;
using Bytes = EdgeRegionReference::Bytes;

// Mostly extreme values, as in masks, so that their special cases meet.
Bytes MaskBytes(std::size_t count, std::mt19937& random) {
    constexpr std::uint8_t kValues[] = {0, 0, 0, 255, 255, 255, 1, 254};
    Bytes bytes(count);
    for (auto& byte : bytes) byte = kValues[random() % std::size(kValues)];
    return bytes;
}

PageRect RandomRect(int columns, int rows, std::mt19937& random) {
    const auto pair = [&](int size) {
        const int a = static_cast<int>(random() % size), b = static_cast<int>(random() % size);
        return std::pair(static_cast<std::int16_t>(std::min(a, b)),
                         static_cast<std::int16_t>(std::max(a, b)));
    };
    const auto [x0, x1] = pair(columns);
    const auto [y0, y1] = pair(rows);
    return {x0, y0, x1, y1};
}

// Every pass over a rectangle that may reach into the padding, against the plain version.
TEST(PagePasses, TakeThePaddingAsItLies) {
    std::mt19937 random(5);
    for (int turn = 0; turn < 600; ++turn) {
        const int width = 1 + static_cast<int>(random() % 200), height = 1 + static_cast<int>(random() % 12);
        const HostImage image = HostImage::Random(width, height, 8, random);
        const auto shift = random() % 6;  // noise of every strength
        for (std::uint32_t i = 0; i < image.Header().biSizeImage; ++i) {
            std::uint8_t& byte = image.Record().bits[i];
            byte = static_cast<std::uint8_t>(byte >> shift);
        }
        EdgeRegionReference plain(image);
        const PageShape page{width, plain.rowBytes, height, plain.rowBytes};
        const PageRect rect = RandomRect(plain.rowBytes, height, random);
        const EdgeRegionReference::Rect plainRect{rect.x0, rect.y0, rect.x1, rect.y1};
        const Bytes before = MaskBytes(page.Bytes(), random);
        const std::uint8_t* gray = plain.src.data();
        const auto expect = [&](const char* what, auto&& pass, auto&& plainPass) {
            Bytes fast = before, slow = before;
            pass(fast.data());
            plainPass(slow);
            EXPECT_EQ(fast, slow) << what << ' ' << width << 'x' << height << " rows " << rect.y0 << '-'
                                  << rect.y1 << " columns " << rect.x0 << '-' << rect.x1;
        };
        expect(
            "edges", [&](auto* to) { SobelMagnitude(page, gray, to, rect); },
            [&](Bytes& to) { plain.SobelMagnitude(plain.src, to, plainRect, false); });
        expect(
            "edge mask", [&](auto* to) { SobelMagnitude(page, gray, to, rect, 250); },
            [&](Bytes& to) { plain.SobelMagnitude(plain.src, to, plainRect, true); });
        expect(
            "smooth", [&](auto* to) { SmoothRegion(page, rect, gray, to); },
            [&](Bytes& to) { plain.SmoothRegion(plainRect, plain.src, to); });
        for (const float factor : {9.6f, 9.8f, 9.9f, 10.0f, 10.1f}) {
            expect(
                "sharpen", [&](auto* to) { SharpenRegion(page, rect, gray, to, factor); },
                [&](Bytes& to) { plain.SharpenRegion(plainRect, plain.src, to, factor); });
        }
        const int threshold = static_cast<int>(random() % 300) - 20;
        int code = -1, plainCode = -1;
        for (const bool force : {false, true}) {
            expect(
                "threshold",
                [&](auto* to) { code = ThresholdRegion(page, rect, threshold, gray, to, force, 1.1); },
                [&](Bytes& to) {
                    plainCode = plain.ThresholdRegion(plainRect, threshold, plain.src, to, force);
                });
            EXPECT_EQ(code, plainCode);
            expect(
                "threshold in place",
                [&](auto* to) { ThresholdRegion(page, rect, threshold, to, to, force, 1.1); },
                [&](Bytes& to) { plain.ThresholdRegion(plainRect, threshold, to, to, force); });
        }
        expect(
            "merge", [&](auto* to) { MergeRegionMasks(page, rect, to, gray); },
            [&](Bytes& to) { plain.Merge(plainRect, to, plain.src); });
        for (const int mode : {0, 1}) {
            auto cleaned = plainRect;
            expect(
                "clean",
                [&](auto* to) {
                    mode == 0 ? static_cast<void>(FillAndMarkRegion(page, rect, to))
                              : MarkRegion(page, rect, to);
                },
                [&](Bytes& to) { plain.CleanRegion(cleaned, mode, to); });
        }
        EXPECT_EQ(CountStrokeEnds(page, before.data()), plain.CountStrokeEnds(before));
        EdgeRegionBinarizer method(nullptr);
        DibImage attached(image.Handle());
        method.Attach(&attached);
        EXPECT_EQ(method.CountStrokeEndsOf(gray), plain.CountStrokeEndsOf(plain.src));

        int left, right;
        plain.FindSideBorders(&left, &right);
        const SideBorders borders = FindSideBorders(page, gray);
        EXPECT_EQ(borders.left, left);
        EXPECT_EQ(borders.right, right);
    }
}

// Where the padding is outside the page, it reads 0 and keeps its bytes.
TEST(PagePasses, LeaveThePaddingOutside) {
    std::mt19937 random(6);
    for (int turn = 0; turn < 300; ++turn) {
        const int width = 1 + static_cast<int>(random() % 70), height = 1 + static_cast<int>(random() % 8);
        const HostImage image = HostImage::Random(width, height, 8, random);
        const DibImage gray(image.Handle());
        const PageShape page = PageShape::PixelsOnly(gray);
        // Reaches one past the last column and row, as the lines of text do.
        PageRect rect = RandomRect(width + 1, height + 1, random);
        const Bytes before = MaskBytes(page.Bytes(), random);
        const auto at = [&](const Bytes& bytes, int x, int y) {
            return x < 0 || x >= width || y < 0 || y >= height ? 0 : int{bytes[page.Offset(y) + x]};
        };
        const auto apply = [&](Bytes& bytes, auto&& valueAt) {
            for (int y = rect.y0; y <= rect.y1; ++y) {
                for (int x = rect.x0; x <= rect.x1; ++x) {
                    const auto value = static_cast<std::uint8_t>(valueAt(x, y));
                    if (x < width && y < height) bytes[page.Offset(y) + x] = value;
                }
            }
        };
        std::uint32_t counted[256];
        std::array<std::uint32_t, 256> histogram{};
        Bytes fast = before, slow = before;
        RegionHistogram(page, rect, gray.bits, counted);
        SmoothRegion(page, rect, gray.bits, fast.data());
        apply(slow, [&](int x, int y) {
            ++histogram[static_cast<std::size_t>(gray.GetPixel(x, y))];
            if (x == 0 || x == page.rowBytes - 1 || y == 0 || y == height - 1) return gray.GetPixel(x, y);
            int sum = 0;
            for (int i = 0; i < 9; ++i) sum += gray.GetPixel(x - 1 + i % 3, y - 1 + i / 3);
            return sum / 9;
        });
        EXPECT_EQ(fast, slow);
        EXPECT_TRUE(std::equal(histogram.begin(), histogram.end(), counted));

        for (const int threshold : {-5, 0, 1, 128, 256}) {
            for (const bool force : {false, true}) {
                fast = slow = before;
                int dark = 0, light = 0;
                apply(slow, [&](int x, int y) {
                    const int old = at(slow, x, y);
                    if (gray.GetPixel(x, y) < threshold) return ++dark, 0;
                    return old != 0 || force ? (++light, 255) : old;
                });
                const int code = light * 1.08 < dark ? kMostlyDark : 0;
                EXPECT_EQ(ThresholdRegion(page, rect, threshold, gray.bits, fast.data(), force, 1.08), code);
                EXPECT_EQ(fast, slow);
            }
        }

        fast = slow = before;
        FillAndMarkRegion(page, rect, fast.data());
        rect.x0 = std::max<std::int16_t>(rect.x0, 1);
        rect.y0 = std::max<std::int16_t>(rect.y0, 1);
        rect.x1 = static_cast<std::int16_t>(std::min<int>(rect.x1, page.rowBytes - 2));
        rect.y1 = static_cast<std::int16_t>(std::min<int>(rect.y1, height - 2));
        apply(slow, [&](int x, int y) {
            const int value = at(slow, x, y);
            const int around = (at(slow, x - 1, y) <= 1) + (at(slow, x + 1, y) <= 1) +
                               (at(slow, x, y - 1) <= 1) + (at(slow, x, y + 1) <= 1);
            return value == 0 ? 1 : value == 255 ? (around >= 3 ? 1 : 254) : value;
        });
        EXPECT_EQ(fast, slow);
    }
}

#ifdef TAVRIX_WITH_AVX2
TEST(PageKernels, AreTheSameAtEveryLevel) {
    if (!platform::HasAvx2()) GTEST_SKIP();
    std::mt19937 random(8);
    for (int turn = 0; turn < 2000; ++turn) {
        const int count = static_cast<int>(random() % 210);
        const std::size_t room = static_cast<std::size_t>(count) + 2;
        Bytes rows[3];
        for (Bytes& row : rows) {
            row = MaskBytes(room, random);
            if (turn % 2 == 0)
                std::generate(row.begin(), row.end(), [&] { return static_cast<std::uint8_t>(random()); });
        }
        const std::uint8_t *before = &rows[0][1], *row = &rows[1][1], *after = &rows[2][1];
        const int threshold = static_cast<int>(random() % 257);
        const float factor = 9.6f + static_cast<float>(random() % 6) / 10;
        const auto both = [&](const char* what, auto&& kernel, auto&& other) {
            Bytes a = rows[turn % 3], b = a;
            EXPECT_EQ(kernel(&a[1]), other(&b[1])) << what;
            EXPECT_EQ(a, b) << what << ' ' << count;
        };
#define BOTH(name, ...)                                                            \
    both(                                                                          \
        #name, [&](std::uint8_t* to) { return (baseline::name(__VA_ARGS__), 0); }, \
        [&](std::uint8_t* to) { return (avx2::name(__VA_ARGS__), 0); })
        BOTH(SobelRow, before, row, after, count, to);
        BOTH(MeanRow, before, row, after, count, to);
        BOTH(SharpenRow, before, row, after, count, factor, to);
        BOTH(MaskUpTo, row, count, threshold - 1, to);
        BOTH(MaskAbove, row, count, threshold - 1, to);
        BOTH(MergeRow, to, row, count);
        BOTH(ApplyEdgesRow, to, row, count);
        BOTH(MarkRow, to, count);
        BOTH(FillAndMarkRow, before, to, after, count, turn % 2 == 0);
#undef BOTH
        std::int64_t dark[2] = {}, light[2] = {};
        both(
            "ThresholdRegionRow",
            [&](auto* to) {
                baseline::ThresholdRegionRow(row, count, threshold, turn % 2 == 0, to, dark, light);
                return std::pair(dark[0], light[0]);
            },
            [&](auto* to) {
                avx2::ThresholdRegionRow(row, count, threshold, turn % 2 == 0, to, dark + 1, light + 1);
                return std::pair(dark[1], light[1]);
            });
        EXPECT_EQ(baseline::CountFrom(row, count, threshold % 256),
                  avx2::CountFrom(row, count, threshold % 256));
        EXPECT_EQ(baseline::CountTips(row, after, count), avx2::CountTips(row, after, count));
    }
}
#endif

// Runs that part and meet again, in every density: labels, order of components and order of their runs.
TEST(TextComponents, LabelsAreThoseOfTheRowsAboveThem) {
    std::mt19937 random(9);
    for (int turn = 0; turn < 400; ++turn) {
        const int width = 1 + static_cast<int>(random() % 300), height = 1 + static_cast<int>(random() % 30);
        const int rowBytes = (width + 3) / 4 * 4;
        const PageShape page{width, rowBytes, height, rowBytes};
        Bytes mask(page.Bytes()), decimated;
        const auto share = random() % 100;
        for (auto& byte : mask) byte = random() % 100 < share ? 0 : 255;
        for (std::size_t i = 0; i < mask.size(); i += 2) decimated.push_back(mask[i]);
        const auto expected = EdgeRegionReference::LabelRuns(decimated.data(), rowBytes / 2, height);

        const LabelledRuns labelled = LabelRuns(page, mask.data());
        std::vector<EdgeRegionReference::Component> components;
        for (const LabelledComponent& component : labelled.components) {
            components.push_back({component.area, component.runEnds, {}});
            for (int i = component.firstRun; i >= 0; i = labelled.runs[i].next) {
                components.back().runs.push_back(
                    {labelled.runs[i].x0, labelled.runs[i].x1, labelled.runs[i].y});
            }
        }
        ASSERT_EQ(components, expected) << width << 'x' << height << " share " << share;
    }
}

// Histograms from the counts of five ranges: 0..62, 63..126, 127..190, 191..254 and 255.
std::array<std::uint32_t, 256> Ranges(std::array<std::uint32_t, 5> counts) {
    std::array<std::uint32_t, 256> histogram{};
    constexpr std::size_t kBins[] = {60, 100, 150, 200, 255};
    for (std::size_t i = 0; i < counts.size(); ++i) histogram[kBins[i]] = counts[i];
    return histogram;
}

// A share of 20 % in single precision lies above the bound 0.2, one of 40 % above 0.4, 15 % above 0.15.
TEST(ClassifyHistogram, FollowsItsRulesUpToTheirBounds) {
    const struct {
        std::array<std::uint32_t, 5> counts;  // of 100
        int strokeEnds, expected;
    } kCases[] = {
        {{0, 18, 11, 71, 0}, 0, 0},   {{0, 0, 10, 0, 90}, 0, 0},    {{5, 31, 0, 64, 0}, 0, 0},
        {{10, 5, 20, 65, 0}, 0, 0},   {{9, 0, 9, 82, 0}, 0, 0},     {{15, 10, 10, 65, 0}, 0, 1},
        {{15, 14, 5, 66, 0}, 0, 2},   {{20, 10, 10, 60, 0}, 0, 0},  {{25, 3, 3, 69, 0}, 2800, 1},
        {{26, 3, 3, 68, 0}, 2800, 7}, {{26, 3, 3, 68, 0}, 2801, 1}, {{31, 3, 3, 63, 0}, 4500, 7},
        {{26, 3, 3, 68, 0}, 4501, 7}, {{26, 4, 3, 67, 0}, 4501, 0}, {{24, 10, 5, 61, 0}, 0, 0},
        {{51, 20, 20, 9, 0}, 0, 2},   {{51, 19, 20, 10, 0}, 0, 3},  {{10, 40, 10, 40, 0}, 0, 5},
        {{40, 10, 40, 10, 0}, 0, 5},  {{30, 20, 25, 25, 0}, 0, 4},  {{19, 20, 19, 42, 0}, 0, 5},
        {{46, 20, 15, 19, 0}, 0, 5},  {{40, 8, 8, 44, 0}, 0, 4},    {{45, 7, 8, 40, 0}, 0, 4},
        {{50, 0, 0, 0, 50}, 0, 5},
    };
    EdgeRegionBinarizer method(nullptr);
    for (const auto& [counts, strokeEnds, expected] : kCases) {
        method.strokeEndCount = strokeEnds;
        HistogramShares shares;
        EXPECT_EQ(method.ClassifyHistogram(Ranges(counts).data(), &shares), expected)
            << testing::PrintToString(counts) << ' ' << strokeEnds;
        EXPECT_EQ(shares.low, static_cast<float>(counts[0]) / 100.0f);
    }
}

TEST(EdgeLevels, SettleWithinAFewSteps) {
    using Counts = EdgeCounts;
    // Counts of 1000 bytes from 82, 145, 217 and 255 on.
    EXPECT_EQ(SettleEdgeThreshold(Counts{100, 90, 10, 0}, 1000, 0), 82);
    EXPECT_EQ(SettleEdgeThreshold(Counts{100, 90, 10, 0}, 1000, 2), 145);
    EXPECT_EQ(SettleEdgeThreshold(Counts{0, 0, 0, 0}, 1000, 1), 82);
    EXPECT_EQ(SettleEdgeThreshold(Counts{900, 900, 900, 900}, 1000, 0), 255);
    EXPECT_EQ(SettleEdgeThreshold(Counts{139, 0, 0, 0}, 1000, 0), 82);
    EXPECT_EQ(SettleEdgeThreshold(Counts{70, 69, 0, 0}, 1000, 1), 82);
    // Up by two, down by one, and there it stops, whatever the count.
    EXPECT_EQ(SettleEdgeThreshold(Counts{140, 140, 60, 0}, 1000, 0), 145);
}

}  // namespace
}  // namespace tavrix
