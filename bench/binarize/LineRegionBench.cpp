// SPDX-License-Identifier: MIT
#include "Pages.h"
#include "regions/LineRegionBinarizer.h"

namespace tavrix::bench {
namespace {

// Beside EdgeRegions: the same page by the other page-analysing method.
void LineRegions(benchmark::State& state, bool (LineRegionBinarizer::*entry)()) {
    const auto page = CardPage(WidthOf(state), HeightOf(state), 8);
    DibImage work(page.get());
    for (auto _ : state) {
        *work.header = *page->header;
        work.CopyBitsFrom(*page);
        LineRegionBinarizer method(&work);
        (method.*entry)();
        benchmark::ClobberMemory();
    }
    CountPixels(state);
}
BENCHMARK_CAPTURE(LineRegions, Page, &LineRegionBinarizer::Binarize)->Name("LineRegions")->Apply(PageSizes);
BENCHMARK_CAPTURE(LineRegions, Block, &LineRegionBinarizer::BinarizeBlock)
    ->Name("LineRegionsBlock")
    ->Apply(PageSizes);

}  // namespace
}  // namespace tavrix::bench
