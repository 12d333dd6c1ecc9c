// SPDX-License-Identifier: MIT
#include <cstring>
#include <vector>

#include "Pages.h"
#include "regions/EdgeMeasures.h"
#include "regions/EdgeRegionBinarizer.h"
#include "regions/RegionPasses.h"
#include "regions/TextComponents.h"

#ifdef TAVRIX_HAVE_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace tavrix::bench {
namespace {

// A page, and a buffer of its size for the result of a pass.
struct Bench {
    explicit Bench(const benchmark::State& state)
        : page(CardPage(WidthOf(state), HeightOf(state), 8)),
          gray(PlaneOfRows(*page)),
          memory(gray.Bytes()),
          target(gray.Over(memory.data())) {}

    template <class Pass>
    void Run(benchmark::State& state, const Pass& pass) {
        for (auto _ : state) {
            pass();
            benchmark::ClobberMemory();
        }
        CountPixels(state);
    }

    std::unique_ptr<DibImage> page;
    Plane gray;
    std::vector<std::uint8_t> memory;
    Plane target;
};

void EdgeRegions(benchmark::State& state, bool (EdgeRegionBinarizer::*entry)()) {
    Bench bench(state);
    DibImage work(bench.page.get());
    bench.Run(state, [&] {
        *work.header = *bench.page->header;
        work.CopyBitsFrom(*bench.page);
        EdgeRegionBinarizer method(&work);
        (method.*entry)();
    });
}
BENCHMARK_CAPTURE(EdgeRegions, Page, &EdgeRegionBinarizer::Binarize)->Name("EdgeRegions")->Apply(PageSizes);
BENCHMARK_CAPTURE(EdgeRegions, Block, &EdgeRegionBinarizer::BinarizeBlock)
    ->Name("EdgeRegionsBlock")
    ->Apply(PageSizes);
BENCHMARK_CAPTURE(EdgeRegions, Sharp, &EdgeRegionBinarizer::BinarizeSharp)
    ->Name("EdgeRegionsSharp")
    ->Apply(PageSizes);

void SobelPass(benchmark::State& state) {
    Bench bench(state);
    bench.Run(state, [&] { MeasureEdges(bench.gray, bench.target); });
}
BENCHMARK(SobelPass)->Name("SobelMagnitude")->Apply(PageSizes);

// A page worked out of another one, row by row.
template <class Filter>
void Derive(benchmark::State& state, Bench& bench, const Filter& filter) {
    bench.Run(state, [&] {
        for (int y = 0; y < bench.gray.height; ++y) {
            filter(y, RowsAround(bench.gray, y), bench.target.Row(y));
        }
    });
}

void Smooth(benchmark::State& state) {
    Bench bench(state);
    Derive(state, bench, Smoothing(bench.gray, bench.gray.Whole()));
}
BENCHMARK(Smooth)->Name("SmoothRegion")->Apply(PageSizes);

void Sharpen(benchmark::State& state) {
    Bench bench(state);
    Derive(state, bench, Sharpening(bench.gray, bench.gray.Whole(), 10.0f));
}
BENCHMARK(Sharpen)->Name("SharpenRegion")->Apply(PageSizes);

void Threshold(benchmark::State& state) {
    Bench bench(state);
    bench.Run(state, [&] {
        ThresholdRegion(bench.gray, bench.target, bench.gray.Whole(), 128, Earlier::kOverwritten, 1.1);
    });
}
BENCHMARK(Threshold)->Name("ThresholdRegion")->Apply(PageSizes);

void FillAndMark(benchmark::State& state) {
    Bench bench(state);
    std::vector<std::uint8_t> mask(bench.gray.Bytes());
    ThresholdRegion(bench.gray, bench.gray.Over(mask.data()), bench.gray.Reach(), 128, Earlier::kOverwritten,
                    1.1);
    bench.Run(state, [&] {
        std::memcpy(bench.target.pixels, mask.data(), mask.size());
        FillAndMarkRegion(bench.target, bench.gray.Whole());
    });
}
BENCHMARK(FillAndMark)->Name("FillAndMarkRegion")->Apply(PageSizes);

void StrokeEnds(benchmark::State& state) {
    Bench bench(state);
    const Mask mask = Mask::UpTo(bench.gray, 128);
    bench.Run(state, [&] { benchmark::DoNotOptimize(CountStrokeEnds(mask)); });
}
BENCHMARK(StrokeEnds)->Name("CountStrokeEnds")->Apply(PageSizes);

void Components(benchmark::State& state) {
    Bench bench(state);
    const Mask mask = Mask::UpTo(bench.gray, 128);
    bench.Run(state, [&] { benchmark::DoNotOptimize(FindTextComponents(mask, bench.gray, false).size()); });
}
BENCHMARK(Components)->Name("FindTextComponents")->Apply(PageSizes);

#ifdef TAVRIX_HAVE_OPENCV
cv::Mat MatOf(DibImage& page) {
    return cv::Mat(page.Height(), page.Width(), CV_8UC1, page.bits, page.RowBytes());
}

// What the whole method is measured against, too.
void Sobel_OpenCV(benchmark::State& state) {
    Bench bench(state);
    const cv::Mat source = MatOf(*bench.page);
    cv::Mat dx, dy, magnitude, edges;
    bench.Run(state, [&] {
        cv::Sobel(source, dx, CV_32F, 1, 0);
        cv::Sobel(source, dy, CV_32F, 0, 1);
        cv::magnitude(dx, dy, magnitude);
        magnitude.convertTo(edges, CV_8U);
    });
}
BENCHMARK(Sobel_OpenCV)->Name("SobelMagnitude_OpenCV")->Apply(PageSizes);

void Smooth_OpenCV(benchmark::State& state) {
    Bench bench(state);
    const cv::Mat source = MatOf(*bench.page);
    cv::Mat target;
    bench.Run(state, [&] { cv::blur(source, target, {3, 3}); });
}
BENCHMARK(Smooth_OpenCV)->Name("SmoothRegion_OpenCV")->Apply(PageSizes);

void Sharpen_OpenCV(benchmark::State& state) {
    Bench bench(state);
    const cv::Mat source = MatOf(*bench.page);
    const cv::Mat kernel = (cv::Mat_<float>(3, 3) << -1, -1, -1, -1, 10, -1, -1, -1, -1);
    cv::Mat target;
    bench.Run(state, [&] { cv::filter2D(source, target, -1, kernel); });
}
BENCHMARK(Sharpen_OpenCV)->Name("SharpenRegion_OpenCV")->Apply(PageSizes);
#endif

}  // namespace
}  // namespace tavrix::bench
