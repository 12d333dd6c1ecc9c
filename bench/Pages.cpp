// SPDX-License-Identifier: MIT
#include "Pages.h"

#include <algorithm>
#include <random>

#ifdef TAVRIX_HAVE_OPENCV
#include <opencv2/core/utility.hpp>
#endif

namespace tavrix::bench {
namespace {

#ifdef TAVRIX_HAVE_OPENCV
// The peers are measured single-threaded, as the library is.
const int kOneThread = (cv::setNumThreads(1), 1);
#endif

int GrayAt(int x, int y, std::mt19937& random) {
    const int paper = 205 + x / 64 % 24 - y / 64 % 16;
    const bool line = y % 48 >= 16 && y % 48 < 40 && x % 512 > 40;
    const bool stroke = line && ((x + y / 3) % 23 < 5 || (y % 24 < 4 && x % 29 < 17));
    return std::clamp((stroke ? 55 : paper) + static_cast<int>(random() % 13) - 6, 0, 255);
}

}  // namespace

void PageSizes(benchmark::internal::Benchmark* bench) {
    bench->Args({1063, 650})->Args({2126, 1300})->Args({4252, 2600})->Unit(benchmark::kMicrosecond);
}

int WidthOf(const benchmark::State& state) {
    return static_cast<int>(state.range(0));
}
int HeightOf(const benchmark::State& state) {
    return static_cast<int>(state.range(1));
}

std::unique_ptr<DibImage> CardPage(int width, int height, int bitCount) {
    std::mt19937 random(7);
    auto page = DibImage::New(width, height, bitCount);
    const int bytes = bitCount / 8;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int gray = GrayAt(x, y, random);
            for (int k = 0; k < bytes; ++k) {
                page->Row(y)[x * bytes + k] = static_cast<std::uint8_t>(std::clamp(gray - 5 * k, 0, 255));
            }
        }
    }
    return page;
}

std::unique_ptr<DibImage> BlackWhitePage(int width, int height) {
    const auto gray = CardPage(width, height, 8);
    auto page = DibImage::New(width, height, 1);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) page->SetBit(x, y, gray->Row(y)[x] > 128);
    }
    return page;
}

std::unique_ptr<DibImage> NoisePage(int width, int height, double blackShare) {
    std::mt19937 random(7);
    std::bernoulli_distribution black(blackShare);
    auto page = DibImage::New(width, height, 1);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) page->SetBit(x, y, !black(random));
    }
    return page;
}

void CountPixels(benchmark::State& state) {
    const double pixels = static_cast<double>(state.range(0)) * static_cast<double>(state.range(1));
    state.counters["ns/pixel"] = benchmark::Counter(
        pixels * 1e-9, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

}  // namespace tavrix::bench
