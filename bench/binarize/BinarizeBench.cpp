// SPDX-License-Identifier: MIT
#include "Pages.h"
#include "binarize/Histogram.h"
#include "image/ImageTool.h"

#ifdef TAVRIX_HAVE_OPENCV
#include <opencv2/imgproc.hpp>
#endif

// The methods work in place: each run first copies the page, as the peers write to an image of their own.
namespace tavrix::bench {
namespace {

int WidthOf(const benchmark::State& state) {
    return static_cast<int>(state.range(0));
}
int HeightOf(const benchmark::State& state) {
    return static_cast<int>(state.range(1));
}

void Method(benchmark::State& state, std::uint32_t id) {
    const auto page = CardPage(WidthOf(state), HeightOf(state), 8);
    DibImage work;
    work.Create(page->Width(), page->Height(), 8);
    ImageTool tool(&work);
    for (auto _ : state) {
        work.CopyBitsFrom(*page);
        tool.BinarizeByMethod(id);
        benchmark::ClobberMemory();
    }
    CountPixels(state);
}

BENCHMARK_CAPTURE(Method, Otsu, 0u)->Name("Otsu")->Apply(PageSizes);
BENCHMARK_CAPTURE(Method, PeakFit, 1u)->Name("PeakFit")->Apply(PageSizes);
BENCHMARK_CAPTURE(Method, LocalContrast, 2u)->Name("LocalContrast")->Apply(PageSizes);
BENCHMARK_CAPTURE(Method, Bernsen, 3u)->Name("Bernsen")->Apply(PageSizes);
BENCHMARK_CAPTURE(Method, Gradient, 4u)->Name("Gradient")->Apply(PageSizes);
BENCHMARK_CAPTURE(Method, Isodata, 6u)->Name("Isodata")->Apply(PageSizes);

void Histogram(benchmark::State& state) {
    const auto page = CardPage(WidthOf(state), HeightOf(state), 8);
    for (auto _ : state) {
        std::uint32_t histogram[kGrayLevels] = {};
        tavrix::CountPixels(page->bits, page->RowBytes(), page->Width(), page->Height(), histogram);
        benchmark::DoNotOptimize(histogram);
    }
    CountPixels(state);
}
BENCHMARK(Histogram)->Apply(PageSizes);

#ifdef TAVRIX_HAVE_OPENCV
cv::Mat MatOf(DibImage& page) {
    return cv::Mat(page.Height(), page.Width(), CV_8UC1, page.bits, page.RowBytes());
}

void Histogram_OpenCV(benchmark::State& state) {
    const auto page = CardPage(WidthOf(state), HeightOf(state), 8);
    const cv::Mat source = MatOf(*page);
    const int channel = 0, bins = kGrayLevels;
    const float range[] = {0, kGrayLevels};
    const float* ranges = range;
    cv::Mat counts;
    for (auto _ : state) cv::calcHist(&source, 1, &channel, cv::Mat(), counts, 1, &bins, &ranges);
    CountPixels(state);
}
BENCHMARK(Histogram_OpenCV)->Apply(PageSizes);

void Otsu_OpenCV(benchmark::State& state) {
    const auto page = CardPage(WidthOf(state), HeightOf(state), 8);
    const cv::Mat source = MatOf(*page);
    cv::Mat result;
    for (auto _ : state) cv::threshold(source, result, 0, 255, cv::THRESH_BINARY | cv::THRESH_OTSU);
    CountPixels(state);
}
BENCHMARK(Otsu_OpenCV)->Apply(PageSizes);

// The window sums alone, without the rule over them.
void LocalContrast_OpenCV(benchmark::State& state) {
    const auto page = CardPage(WidthOf(state), HeightOf(state), 8);
    const cv::Mat source = MatOf(*page);
    cv::Mat sum, squares;
    for (auto _ : state) {
        cv::boxFilter(source, sum, CV_32F, {5, 5});
        cv::sqrBoxFilter(source, squares, CV_32F, {5, 5});
    }
    CountPixels(state);
}
BENCHMARK(LocalContrast_OpenCV)->Apply(PageSizes);

// The window extremes alone.
void Bernsen_OpenCV(benchmark::State& state) {
    const auto page = CardPage(WidthOf(state), HeightOf(state), 8);
    const cv::Mat source = MatOf(*page);
    const cv::Mat window = cv::getStructuringElement(cv::MORPH_RECT, {15, 15});
    cv::Mat low, high;
    for (auto _ : state) {
        cv::erode(source, low, window);
        cv::dilate(source, high, window);
    }
    CountPixels(state);
}
BENCHMARK(Bernsen_OpenCV)->Apply(PageSizes);

// The two Sobel images alone.
void Gradient_OpenCV(benchmark::State& state) {
    const auto page = CardPage(WidthOf(state), HeightOf(state), 8);
    const cv::Mat source = MatOf(*page);
    cv::Mat gx, gy;
    for (auto _ : state) cv::spatialGradient(source, gx, gy);
    CountPixels(state);
}
BENCHMARK(Gradient_OpenCV)->Apply(PageSizes);
#endif

}  // namespace
}  // namespace tavrix::bench
