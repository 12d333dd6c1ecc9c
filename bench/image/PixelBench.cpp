// SPDX-License-Identifier: MIT
#include <cstring>
#include <vector>

#include "Pages.h"

#ifdef TAVRIX_HAVE_OPENCV
#include <opencv2/imgproc.hpp>
#endif
#ifdef TAVRIX_HAVE_LEPTONICA
#include <allheaders.h>
#endif

namespace tavrix::bench {
namespace {

// What moving the bytes of a picture alone takes, into rows that are there already.
template <int kBits>
void Copy(benchmark::State& state) {
    const auto page = DibImage::New(WidthOf(state), HeightOf(state), kBits);
    std::memset(page->bits, 1, page->header->biSizeImage);
    const auto copy = DibImage::New(page->Width(), page->Height(), kBits);
    for (auto _ : state) {
        std::memcpy(copy->bits, page->bits, page->header->biSizeImage);
        benchmark::ClobberMemory();
    }
    CountPixels(state);
}
BENCHMARK(Copy<1>)->Name("CopyOneBit")->Apply(PageSizes);
BENCHMARK(Copy<8>)->Name("CopyGray")->Apply(PageSizes);
BENCHMARK(Copy<24>)->Name("CopyColor")->Apply(PageSizes);

void Gray(benchmark::State& state) {
    const auto page = CardPage(WidthOf(state), HeightOf(state), 24);
    const auto gray = DibImage::New(page->Width(), page->Height(), 8);
    for (auto _ : state) {
        page->ConvertToGray(*gray);
        benchmark::ClobberMemory();
    }
    CountPixels(state);
}
BENCHMARK(Gray)->Apply(PageSizes);

// The header of the packed image is put back for each run.
void Pack(benchmark::State& state) {
    const auto page = CardPage(WidthOf(state), HeightOf(state), 8);
    const std::vector<std::uint8_t> source(page->bits, page->bits + page->header->biSizeImage);
    const BITMAPINFOHEADER header = *page->header;
    for (auto _ : state) {
        *page->header = header;
        page->PackToOneBit(source.data());
        benchmark::ClobberMemory();
    }
    CountPixels(state);
}
BENCHMARK(Pack)->Apply(PageSizes);

#ifdef TAVRIX_HAVE_OPENCV
void Gray_OpenCV(benchmark::State& state) {
    const auto page = CardPage(WidthOf(state), HeightOf(state), 24);
    const cv::Mat source(page->Height(), page->Width(), CV_8UC3, page->bits, page->RowBytes());
    cv::Mat gray;
    for (auto _ : state) cv::cvtColor(source, gray, cv::COLOR_BGR2GRAY);
    CountPixels(state);
}
BENCHMARK(Gray_OpenCV)->Apply(PageSizes);
#endif

#ifdef TAVRIX_HAVE_LEPTONICA
void Pack_Leptonica(benchmark::State& state) {
    const auto page = CardPage(WidthOf(state), HeightOf(state), 8);
    PIX* source = pixCreate(page->Width(), page->Height(), 8);
    for (int y = 0; y < page->Height(); ++y) {
        l_uint32* line = pixGetData(source) + pixGetWpl(source) * y;
        for (int x = 0; x < page->Width(); ++x) SET_DATA_BYTE(line, x, page->Row(y)[x]);
    }
    for (auto _ : state) {
        PIX* packed = pixThresholdToBinary(source, 128);
        benchmark::DoNotOptimize(packed);
        pixDestroy(&packed);
    }
    pixDestroy(&source);
    CountPixels(state);
}
BENCHMARK(Pack_Leptonica)->Apply(PageSizes);
#endif

}  // namespace
}  // namespace tavrix::bench
