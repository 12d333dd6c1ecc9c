// SPDX-License-Identifier: MIT
#include <memory>
#include <vector>

#include "Pages.h"
#include "morphology/MorphologyFilter.h"
#include "morphology/MorphologyKernels.h"

#ifdef TAVRIX_HAVE_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif
#ifdef TAVRIX_HAVE_LEPTONICA
#include <leptonica/allheaders.h>
#endif

namespace tavrix::bench {
namespace {

// One pass from one image into another, as the peers beside it do.
template <auto kSpread>
void Spread(benchmark::State& state) {
    const auto page = BlackWhitePage(WidthOf(state), HeightOf(state));
    DibImage result(page.get());
    const BitRows rows{page->bits, result.bits, page->RowBytes(), page->Width(), page->Height()};
    for (auto _ : state) {
        std::vector<std::uint64_t> scratch(SpreadScratchWords(page->Width()));
        kSpread(rows, 7, scratch.data());
        benchmark::ClobberMemory();
    }
    CountPixels(state);
}
void Dilate15(const BitRows& rows, int radius, std::uint64_t* scratch) {
    platform::KernelsOf<MorphologyKernels>().spreadBlack(rows, radius, scratch);
}
void Erode15(const BitRows& rows, int radius, std::uint64_t* scratch) {
    platform::KernelsOf<MorphologyKernels>().spreadWhite(rows, radius, scratch);
}
BENCHMARK(Spread<Dilate15>)->Name("Dilate15")->Apply(PageSizes);
BENCHMARK(Spread<Erode15>)->Name("Erode15")->Apply(PageSizes);

// In place; what the picture becomes does not change the time.
template <class Operation>
void Filter(benchmark::State& state, int bits, Operation operation) {
    const auto page = bits == 1 ? BlackWhitePage(WidthOf(state), HeightOf(state))
                                : CardPage(WidthOf(state), HeightOf(state), bits);
    MorphologyFilter filter(page.get());
    for (auto _ : state) {
        operation(filter);
        benchmark::ClobberMemory();
    }
    CountPixels(state);
}
void Closing(benchmark::State& state) {
    Filter(state, 1, [](MorphologyFilter& filter) { filter.Closing(); });
}
void Opening(benchmark::State& state) {
    Filter(state, 1, [](MorphologyFilter& filter) { filter.Opening(); });
}
void EdgeMap(benchmark::State& state) {
    Filter(state, 8, [](MorphologyFilter& filter) { filter.EdgeMap(); });
}
void Smooth3x3(benchmark::State& state) {
    Filter(state, 8, [](MorphologyFilter& filter) { filter.Smooth3x3(); });
}
void Sharpen(benchmark::State& state) {
    Filter(state, 8, [](MorphologyFilter& filter) { filter.Sharpen(10.0f); });
}
BENCHMARK(Closing)->Apply(PageSizes);
BENCHMARK(Opening)->Apply(PageSizes);
BENCHMARK(EdgeMap)->Apply(PageSizes);
BENCHMARK(Smooth3x3)->Apply(PageSizes);
BENCHMARK(Sharpen)->Apply(PageSizes);

#ifdef TAVRIX_HAVE_OPENCV
template <class Operation>
void Filter_OpenCV(benchmark::State& state, Operation operation) {
    const auto page = CardPage(WidthOf(state), HeightOf(state), 8);
    const cv::Mat source(page->Height(), page->Width(), CV_8UC1, page->bits, page->RowBytes());
    cv::Mat result;
    for (auto _ : state) {
        operation(source, result);
        benchmark::ClobberMemory();
    }
    CountPixels(state);
}
void Smooth3x3_OpenCV(benchmark::State& state) {
    Filter_OpenCV(state, [](const cv::Mat& from, cv::Mat& to) { cv::blur(from, to, cv::Size(3, 3)); });
}
void Sharpen_OpenCV(benchmark::State& state) {
    const cv::Mat kernel = (cv::Mat_<float>(3, 3) << -1, -1, -1, -1, 10, -1, -1, -1, -1);
    Filter_OpenCV(state, [&](const cv::Mat& from, cv::Mat& to) { cv::filter2D(from, to, -1, kernel); });
}
BENCHMARK(Smooth3x3_OpenCV)->Apply(PageSizes);
BENCHMARK(Sharpen_OpenCV)->Apply(PageSizes);
#endif

#ifdef TAVRIX_HAVE_LEPTONICA
using Brick = PIX*(PIX*, PIX*, l_int32, l_int32);

template <Brick kBrick>
void Brick15_Leptonica(benchmark::State& state) {
    const auto page = BlackWhitePage(WidthOf(state), HeightOf(state));
    PIX* pix = pixCreate(page->Width(), page->Height(), 1);
    for (int y = 0; y < page->Height(); ++y) {
        for (int x = 0; x < page->Width(); ++x) pixSetPixel(pix, x, y, page->GetPixel(x, y) == 0);
    }
    for (auto _ : state) {
        PIX* result = kBrick(nullptr, pix, 15, 15);
        benchmark::DoNotOptimize(result);
        pixDestroy(&result);
    }
    pixDestroy(&pix);
    CountPixels(state);
}
BENCHMARK(Brick15_Leptonica<pixDilateBrickDwa>)->Name("Dilate15_Leptonica")->Apply(PageSizes);
BENCHMARK(Brick15_Leptonica<pixErodeBrickDwa>)->Name("Erode15_Leptonica")->Apply(PageSizes);
BENCHMARK(Brick15_Leptonica<pixCloseBrickDwa>)->Name("Closing_Leptonica")->Apply(PageSizes);
#endif

}  // namespace
}  // namespace tavrix::bench
