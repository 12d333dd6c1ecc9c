// SPDX-License-Identifier: MIT
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>
#include <random>

#include "Pages.h"
#include "api/ImageTool.h"
#include "components/PrivateStore.h"
#include "lines/TextLineGrouper.h"

namespace tavrix::bench {
namespace {

constexpr GroupingOptions kOneLine{0, 0, 1};

// A white page of n cells in a square, each with a dot that draw(page, x, y) puts at its lower left.
template <class Draw>
std::unique_ptr<DibImage> Cells(int n, int pitch, Draw&& draw) {
    const int perRow = static_cast<int>(std::ceil(std::sqrt(n)));
    auto page = DibImage::New(perRow * pitch, perRow * pitch, 1);
    std::fill_n(page->bits, page->RowBytes() * static_cast<unsigned>(page->Height()), std::uint8_t{0xFF});
    for (int i = 0; i < n; ++i) draw(*page, i % perRow * pitch, i / perRow * pitch);
    return page;
}

void Dot(DibImage& page, int left, int bottom, int width, int height) {
    for (int y = bottom; y < bottom + height; ++y) {
        for (int x = left; x < left + width; ++x) page.SetBit(x, y, 0);
    }
}

// A regular screen of dots, and specks of 2 to 9 pixels scattered over a page.
std::unique_ptr<DibImage> HalfTone(int n) {
    return Cells(n, 6, [](DibImage& page, int x, int y) { Dot(page, x, y, 3, 3); });
}
std::unique_ptr<DibImage> Specks(int n) {
    std::mt19937 random(7);
    std::uniform_int_distribution<> side(2, 9);
    std::uniform_int_distribution<> shift(0, 4);
    return Cells(n, 14, [&](DibImage& page, int x, int y) {
        Dot(page, x + shift(random), y + shift(random), side(random), side(random));
    });
}

// Times mode 3 of Grouping on a store of the page's components.
void Group(benchmark::State& state, DibImage& page) {
    ImageTool tool(&page);
    tool.groupingOptions = &kOneLine;
    std::uint32_t components = 0;
    for (auto _ : state) {
        PrivateStore store;
        tool.ExtractComponents(&store, 1, 0, 0);
        components = store.componentCount;
        const auto start = std::chrono::steady_clock::now();
        benchmark::DoNotOptimize(tool.GroupComponents(&store, 3));
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    state.counters["components"] = components;
}

void TextLines_Card(benchmark::State& state) {
    const auto page = BlackWhitePage(WidthOf(state), HeightOf(state));
    Group(state, *page);
}
void TextLines_HalfTone(benchmark::State& state) {
    Group(state, *HalfTone(static_cast<int>(state.range(0))));
}
void TextLines_Specks(benchmark::State& state) {
    Group(state, *Specks(static_cast<int>(state.range(0))));
}
void TextLines_Noise(benchmark::State& state) {
    Group(state, *NoisePage(static_cast<int>(state.range(0)), static_cast<int>(state.range(0)), 0.1));
}

void Counts(benchmark::internal::Benchmark* bench) {
    bench->Arg(1000)->Arg(4000)->Arg(16000)->Arg(65533)->Unit(benchmark::kMillisecond)->UseManualTime();
}

BENCHMARK(TextLines_Card)->Apply(PageSizes)->UseManualTime();
BENCHMARK(TextLines_HalfTone)->Apply(Counts);
BENCHMARK(TextLines_Specks)->Apply(Counts);
BENCHMARK(TextLines_Noise)
    ->Arg(200)
    ->Arg(400)
    ->Arg(800)
    ->Arg(1600)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime();

}  // namespace
}  // namespace tavrix::bench
