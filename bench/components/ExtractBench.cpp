// SPDX-License-Identifier: MIT
#include <benchmark/benchmark.h>

#include <optional>

#include "Pages.h"
#include "components/ComponentExtractor.h"
#include "components/PrivateStore.h"

#ifdef TAVRIX_HAVE_OPENCV
#include <opencv2/imgproc.hpp>
#endif
#ifdef TAVRIX_HAVE_LEPTONICA
#include <leptonica/allheaders.h>
#endif

// Components with boxes and pixel counts of a 1-bit page.
namespace tavrix::bench {
namespace {

constexpr double kBlackShare = 0.1;

std::unique_ptr<DibImage> Card(int width, int height) {
    return BlackWhitePage(width, height);
}
std::unique_ptr<DibImage> Noise(int width, int height) {
    return NoisePage(width, height, kBlackShare);
}

using Page = std::unique_ptr<DibImage> (*)(int width, int height);

void Extract(benchmark::State& state, Page makePage) {
    const auto page = makePage(WidthOf(state), HeightOf(state));
    ComponentExtractor extractor(page.get());
    for (auto _ : state) {
        state.PauseTiming();
        std::optional<PrivateStore> store(std::in_place);
        state.ResumeTiming();
        extractor.Run(*store);
        state.PauseTiming();
        state.counters["components"] = store->componentCount;
        store.reset();
        state.ResumeTiming();
    }
    CountPixels(state);
}
BENCHMARK_CAPTURE(Extract, Card, Card)->Name("Extract_Card")->Apply(PageSizes);
BENCHMARK_CAPTURE(Extract, Noise, Noise)->Name("Extract_Noise")->Apply(PageSizes);

#ifdef TAVRIX_HAVE_OPENCV
void ExtractOpenCV(benchmark::State& state, Page makePage) {
    const auto page = makePage(WidthOf(state), HeightOf(state));
    cv::Mat black(page->Height(), page->Width(), CV_8UC1);
    for (int y = 0; y < black.rows; ++y) {
        for (int x = 0; x < black.cols; ++x)
            black.at<std::uint8_t>(y, x) = page->GetPixel(x, y) != 0 ? 0 : 255;
    }
    cv::Mat labels, statistics, centroids;
    for (auto _ : state) {
        state.counters["components"] =
            cv::connectedComponentsWithStats(black, labels, statistics, centroids, 8) - 1;
    }
    CountPixels(state);
}
BENCHMARK_CAPTURE(ExtractOpenCV, Card, Card)->Name("Extract_Card_OpenCV")->Apply(PageSizes);
BENCHMARK_CAPTURE(ExtractOpenCV, Noise, Noise)->Name("Extract_Noise_OpenCV")->Apply(PageSizes);
#endif

#ifdef TAVRIX_HAVE_LEPTONICA
// Boxes alone: pixel counts would need an image of each component.
void ExtractLeptonica(benchmark::State& state, Page makePage) {
    const auto page = makePage(WidthOf(state), HeightOf(state));
    Pix* pix = pixCreate(page->Width(), page->Height(), 1);
    for (int y = 0; y < page->Height(); ++y) {
        for (int x = 0; x < page->Width(); ++x) pixSetPixel(pix, x, y, page->GetPixel(x, y) == 0);
    }
    for (auto _ : state) {
        Boxa* boxes = pixConnCompBB(pix, 8);
        state.counters["components"] = boxaGetCount(boxes);
        boxaDestroy(&boxes);
    }
    pixDestroy(&pix);
    CountPixels(state);
}
BENCHMARK_CAPTURE(ExtractLeptonica, Card, Card)->Name("Extract_Card_Leptonica")->Apply(PageSizes);
BENCHMARK_CAPTURE(ExtractLeptonica, Noise, Noise)->Name("Extract_Noise_Leptonica")->Apply(PageSizes);
#endif

}  // namespace
}  // namespace tavrix::bench
