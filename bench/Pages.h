// SPDX-License-Identifier: MIT
#pragma once

#include <benchmark/benchmark.h>

#include <memory>

#include "image/DibImage.h"

// Pages to measure on, in the three sizes of a card at 300, 600 and 1200 dots per inch.
namespace tavrix::bench {

// Registers all page sizes: range(0) is the width, range(1) the height.
void PageSizes(benchmark::internal::Benchmark* bench);
int WidthOf(const benchmark::State& state);
int HeightOf(const benchmark::State& state);

// Dark text-like strokes on uneven light paper with noise, 8 or 24 bits.
std::unique_ptr<DibImage> CardPage(int width, int height, int bitCount);
// The same page thresholded to 1 bit.
std::unique_ptr<DibImage> BlackWhitePage(int width, int height);
// 1-bit noise with the given share of black.
std::unique_ptr<DibImage> NoisePage(int width, int height, double blackShare);

// Reports nanoseconds a pixel as the counter "ns/pixel".
void CountPixels(benchmark::State& state);

}  // namespace tavrix::bench
