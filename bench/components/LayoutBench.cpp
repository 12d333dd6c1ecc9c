// SPDX-License-Identifier: MIT
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <random>
#include <vector>

#include "components/AlignedBlockGrouper.h"
#include "components/ComponentStore.h"
#include "components/OrientedBlockGrouper.h"
#include "components/PrivateStore.h"
#include "image/DibImage.h"
#include "image/Rect.h"
#include "lines/TextLineGrouper.h"

// Groupings of layouts that lead to many comparisons: none may take much longer than a noise page of as many
// components.
namespace tavrix::bench {
namespace {

constexpr int kPageSide = 32'767;  // pixels, the largest

// An image of that size without pixels, which grouping into blocks does not read.
BITMAPINFOHEADER PageHeader() {
    BITMAPINFOHEADER header{};
    header.biSize = sizeof(header);
    header.biWidth = header.biHeight = kPageSide;
    header.biPlanes = 1;
    header.biBitCount = 1;
    return header;
}

// A store as extraction leaves it: one block with one line of all components.
void Fill(ComponentStore& store, const std::vector<Rect>& boxes) {
    ComponentNode* const block = store::InsertBlock(store, nullptr, nullptr, {});
    ComponentNode* const line = store::InsertLine(store, block, nullptr, nullptr, {});
    SetRect(*line, Rect{0, 0, kPageSide - 1, kPageSide - 1});
    for (const Rect& box : boxes) store::InsertComponent(store, line, nullptr, line->firstChild, box);
}

// options: what the grouper takes beside the page.
template <class Grouper, class... Options>
void Group(benchmark::State& state, const std::vector<Rect>& boxes, Options... options) {
    BITMAPINFOHEADER header = PageHeader();
    RGBQUAD palette[2]{};
    std::uint8_t bits[4]{};
    DibImage page(&header, palette, bits);
    for (auto _ : state) {
        state.PauseTiming();
        std::optional<PrivateStore> store(std::in_place);
        Fill(*store, boxes);
        state.ResumeTiming();
        Grouper(&page, options...).Run(*store);
        state.PauseTiming();
        store.reset();
        state.ResumeTiming();
    }
    page.Detach();
}

Rect BoxAt(int x, int y, int width, int height) {
    return {ClampedSide(x), ClampedSide(y), ClampedSide(x + width - 1), ClampedSide(y + height - 1)};
}

// Dots beyond the column and row from which blocks reach back to one corner, so that all overlap.
void GroupAlignedFarDots(benchmark::State& state) {
    constexpr int kFirst = 10'010, kStep = 160, kDots = 142, kSide = 4;
    std::vector<Rect> boxes;
    for (int i = 0; i < kDots * kDots; ++i) {
        boxes.push_back(BoxAt(kFirst + i % kDots * kStep, kFirst + i / kDots * kStep, kSide, kSide));
    }
    Group<AlignedBlockGrouper>(state, boxes);
}
BENCHMARK(GroupAlignedFarDots)->Unit(benchmark::kMicrosecond);

// A host's boxes in no order of their places.
void GroupOrientedRandomOrder(benchmark::State& state) {
    constexpr int kBoxes = 65'000, kMaxSide = 12;
    std::minstd_rand random(1);
    const auto below = [&](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
    std::vector<Rect> boxes;
    for (int i = 0; i < kBoxes; ++i) {
        const int x = below(kPageSide - kMaxSide), y = below(kPageSide / 2);
        boxes.push_back(BoxAt(x, y, 1 + below(kMaxSide), 1 + below(kMaxSide)));
    }
    Group<OrientedBlockGrouper>(state, boxes);
}
BENCHMARK(GroupOrientedRandomOrder)->Unit(benchmark::kMicrosecond);

// Dots grown until nearly all overlap, as extraction grows them: sides beyond 16 bits come out negative.
void GroupOrientedGrownDots(benchmark::State& state) {
    constexpr int kDots = 30'000, kGrowX = 16'000, kGrowY = 8'000;
    std::minstd_rand random(1);
    const auto grown = [&](int growth, std::int16_t& low, std::int16_t& high) {
        const int at = static_cast<int>(random() % unsigned{kPageSide});
        low = static_cast<std::int16_t>(std::max(at - growth, 0));
        high = std::min(static_cast<std::int16_t>(at + growth), std::int16_t{kPageSide - 1});
    };
    std::vector<Rect> boxes(kDots);
    for (Rect& box : boxes) {
        grown(kGrowX, box.x0, box.x1);
        grown(kGrowY, box.y0, box.y1);
    }
    Group<OrientedBlockGrouper>(state, boxes);
}
BENCHMARK(GroupOrientedGrownDots)->Unit(benchmark::kMicrosecond);

// Slanting columns of strokes that become few lines, one stroke after another.
void GroupLinesSlantingStrokes(benchmark::State& state) {
    constexpr int kColumns = 40, kStrokes = 887, kSlant = 3, kPitch = 36, kSide = 15'777;
    const GroupingOptions options{};
    std::vector<Rect> boxes;
    for (int column = 0; column < kColumns; ++column) {
        const int left = column * (kSide - kStrokes * kSlant) / kColumns;
        for (int i = 0; i < kStrokes; ++i) {
            boxes.push_back(BoxAt(left + i * kSlant, i * kPitch, 2, 11 + (column + i) % 3));
        }
    }
    Group<TextLineGrouper>(state, boxes, &options, 0u);
}
BENCHMARK(GroupLinesSlantingStrokes)->Unit(benchmark::kMicrosecond);

// Strokes along a zigzag up the page, so steep that each begins as a line of its own, and all end in one.
void GroupLinesIntoOne(benchmark::State& state) {
    constexpr int kStrokes = 15'000, kStrands = 2, kSpan = 5'000, kPitch = 2, kRise = 3;
    constexpr int kHeight = 60, kOffset = 345;  // from strand to strand
    const GroupingOptions options{};
    std::vector<Rect> boxes;
    for (int i = 0; i < kStrokes; ++i) {
        const int step = i / kStrands, turn = step % (2 * kSpan);
        const int column = std::min(turn, 2 * kSpan - 1 - turn);
        boxes.push_back(BoxAt(column * kPitch, step * kRise + i % kStrands * kOffset, 2, kHeight));
    }
    Group<TextLineGrouper>(state, boxes, &options, 0u);
}
BENCHMARK(GroupLinesIntoOne)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace tavrix::bench
