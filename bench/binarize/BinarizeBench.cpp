// SPDX-License-Identifier: MIT
#include "Pages.h"
#include "api/ImageTool.h"
#include "binarize/Histogram.h"
#include "binarize/LocalContrastBinarizer.h"

#ifdef TAVRIX_HAVE_OPENCV
#include <opencv2/imgproc.hpp>
#endif

// The methods work in place, so each run gets a fresh copy of the page, which is not timed.
namespace tavrix::bench {
namespace {

// As scanners deliver it that clip paper to white: its counts all fall on one level.
ImagePtr ClippedPage(int width, int height) {
    constexpr std::uint8_t kFirstPaper = 150;
    auto page = CardPage(width, height, 8);
    for (int y = 0; y < height; ++y) {
        std::uint8_t* row = page->Row(y);
        for (int x = 0; x < width; ++x) row[x] = row[x] >= kFirstPaper ? 255 : row[x];
    }
    return page;
}
ImagePtr NoisyPage(int width, int height) {
    return CardPage(width, height, 8);
}

using Page = ImagePtr (*)(int width, int height);

void Method(benchmark::State& state, std::uint32_t id, Page makePage = NoisyPage) {
    const auto page = makePage(WidthOf(state), HeightOf(state));
    const auto work = DibImage::New(page->Width(), page->Height(), 8);
    ImageTool tool(work.get());
    for (auto _ : state) {
        state.PauseTiming();
        work->CopyBitsFrom(*page);
        state.ResumeTiming();
        tool.BinarizeByMethod(id);
        benchmark::ClobberMemory();
    }
    CountPixels(state);
}

BENCHMARK_CAPTURE(Method, Otsu, 0u)->Name("Otsu")->Apply(PageSizes);
BENCHMARK_CAPTURE(Method, OtsuClipped, 0u, ClippedPage)->Name("OtsuClipped")->Apply(PageSizes);
BENCHMARK_CAPTURE(Method, PeakFit, 1u)->Name("PeakFit")->Apply(PageSizes);
BENCHMARK_CAPTURE(Method, LocalContrast, 2u)->Name("LocalContrast")->Apply(PageSizes);
BENCHMARK_CAPTURE(Method, Bernsen, 3u)->Name("Bernsen")->Apply(PageSizes);
BENCHMARK_CAPTURE(Method, Gradient, 4u)->Name("Gradient")->Apply(PageSizes);
BENCHMARK_CAPTURE(Method, Isodata, 6u)->Name("Isodata")->Apply(PageSizes);

// What the peer below does and the rule over it, without the threshold of the whole image.
void LocalContrastWindows(benchmark::State& state) {
    const auto page = CardPage(WidthOf(state), HeightOf(state), 8);
    const auto work = DibImage::New(page->Width(), page->Height(), 8);
    LocalContrastBinarizer binarizer(work.get());
    for (auto _ : state) {
        state.PauseTiming();
        work->CopyBitsFrom(*page);
        state.ResumeTiming();
        binarizer.CompareWithWindows(128);
        benchmark::ClobberMemory();
    }
    CountPixels(state);
}
BENCHMARK(LocalContrastWindows)->Apply(PageSizes);

void Histogram(benchmark::State& state) {
    const auto page = CardPage(WidthOf(state), HeightOf(state), 8);
    for (auto _ : state) {
        std::uint32_t histogram[kGrayLevels] = {};
        tavrix::CountPixels(PlaneOfPixels(*page), PlaneOfPixels(*page).Whole(), histogram);
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

void OtsuOfOpenCV(benchmark::State& state, Page makePage) {
    const auto page = makePage(WidthOf(state), HeightOf(state));
    const cv::Mat source = MatOf(*page);
    cv::Mat result;
    for (auto _ : state) cv::threshold(source, result, 0, 255, cv::THRESH_BINARY | cv::THRESH_OTSU);
    CountPixels(state);
}
BENCHMARK_CAPTURE(OtsuOfOpenCV, Noisy, NoisyPage)->Name("Otsu_OpenCV")->Apply(PageSizes);
BENCHMARK_CAPTURE(OtsuOfOpenCV, Clipped, ClippedPage)->Name("OtsuClipped_OpenCV")->Apply(PageSizes);

void LocalContrastWindows_OpenCV(benchmark::State& state) {
    const auto page = CardPage(WidthOf(state), HeightOf(state), 8);
    const cv::Mat source = MatOf(*page);
    cv::Mat sum, squares;
    for (auto _ : state) {
        cv::boxFilter(source, sum, CV_16U, {5, 5}, {-1, -1}, false);
        cv::sqrBoxFilter(source, squares, CV_32S, {5, 5}, {-1, -1}, false);
    }
    CountPixels(state);
}
BENCHMARK(LocalContrastWindows_OpenCV)->Apply(PageSizes);

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
