// SPDX-License-Identifier: MIT
#include <benchmark/benchmark.h>

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

template <class Grouper>
void Group(benchmark::State& state, const std::vector<Rect>& boxes) {
    BITMAPINFOHEADER header = PageHeader();
    RGBQUAD palette[2]{};
    std::uint8_t bits[4]{};
    DibImage page(&header, palette, bits);
    for (auto _ : state) {
        state.PauseTiming();
        std::optional<PrivateStore> store(std::in_place);
        Fill(*store, boxes);
        state.ResumeTiming();
        Grouper(&page).Run(*store);
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

}  // namespace
}  // namespace tavrix::bench
