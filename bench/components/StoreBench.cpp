// SPDX-License-Identifier: MIT
#include <benchmark/benchmark.h>

#include <cmath>
#include <optional>

#include "Pages.h"
#include "components/AlignedBlockGrouper.h"
#include "components/ComponentExtractor.h"
#include "components/ComponentNoiseFilter.h"
#include "components/NodeMoves.h"
#include "components/OrientedBlockGrouper.h"
#include "components/PrivateStore.h"

// Operations on the components of noise pages, from 1,000 to a full store: cost must grow about linearly.
namespace tavrix::bench {
namespace {

constexpr double kBlackShare = 0.1;
constexpr double kPixelsPerComponent = 15.4;  // at this share of black
constexpr double kSidesRatio = 1.6;

void Counts(benchmark::internal::Benchmark* bench) {
    bench->Arg(1000)->Arg(4000)->Arg(16000)->Arg(66000)->Unit(benchmark::kMicrosecond);
}

template <class Operation>
void OnNoise(benchmark::State& state, Operation operation) {
    const double pixels = static_cast<double>(state.range(0)) * kPixelsPerComponent;
    const int height = static_cast<int>(std::sqrt(pixels / kSidesRatio));
    const auto page = NoisePage(static_cast<int>(height * kSidesRatio), height, kBlackShare);
    for (auto _ : state) {
        state.PauseTiming();
        std::optional<PrivateStore> store(std::in_place);
        ComponentExtractor(page.get()).Run(*store);
        const double count = store->componentCount;
        state.ResumeTiming();
        operation(page.get(), *store);
        state.PauseTiming();
        store.reset();
        state.counters["components"] = count;
        state.counters["s/component"] = benchmark::Counter(
            count, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
        state.ResumeTiming();
    }
}

void GroupOriented(benchmark::State& state) {
    OnNoise(state, [](DibImage* page, ComponentStore& store) { OrientedBlockGrouper(page).Run(store); });
}
BENCHMARK(GroupOriented)->Apply(Counts);

void GroupAligned(benchmark::State& state) {
    OnNoise(state, [](DibImage* page, ComponentStore& store) { AlignedBlockGrouper(page).Run(store); });
}
BENCHMARK(GroupAligned)->Apply(Counts);

void FilterBySize(benchmark::State& state) {
    OnNoise(state,
            [](DibImage* page, ComponentStore& store) { ComponentNoiseFilter(page).Run(store, 2, 2); });
}
BENCHMARK(FilterBySize)->Apply(Counts);

void FilterLineNoise(benchmark::State& state) {
    OnNoise(state,
            [](DibImage* page, ComponentStore& store) { ComponentNoiseFilter(page).FilterLineNoise(store); });
}
BENCHMARK(FilterLineNoise)->Apply(Counts);

void SortChildren(benchmark::State& state) {
    OnNoise(state,
            [](DibImage*, ComponentStore& store) { store::SortChildren(store.firstBlock->firstChild); });
}
BENCHMARK(SortChildren)->Apply(Counts);

}  // namespace
}  // namespace tavrix::bench
