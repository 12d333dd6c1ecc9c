// SPDX-License-Identifier: MIT
#include <cstring>
#include <memory>

#include "Pages.h"
#include "geometry/RotationTool.h"
#include "geometry/TurnKernels.h"

#ifdef TAVRIX_HAVE_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif
#ifdef TAVRIX_HAVE_LEPTONICA
#include <leptonica/allheaders.h>
#endif

namespace tavrix::bench {
namespace {

// From rows into rows that are there already, as the peer beside it.
void GrayQuarterTurn(benchmark::State& state) {
    const int width = WidthOf(state), height = HeightOf(state);
    const auto page = CardPage(width, height, 8);
    const auto turned = DibImage::New(height, width, 8);
    const std::ptrdiff_t stride = turned->RowBytes();
    for (auto _ : state) {
        platform::KernelsOf<TurnKernels>().transposeBytes(page->bits, page->RowBytes(), width, height,
                                                          turned->Row(width - 1), -stride);
        benchmark::ClobberMemory();
    }
    CountPixels(state);
}
BENCHMARK(GrayQuarterTurn)->Apply(PageSizes);

// Whole operations, the new image included.
template <std::uint16_t kCode>
void TurnOneBit(benchmark::State& state) {
    const auto page = BlackWhitePage(WidthOf(state), HeightOf(state));
    const auto right = static_cast<std::int16_t>(page->Width() - 1);
    const auto top = static_cast<std::int16_t>(page->Height() - 1);
    for (auto _ : state) {
        RotationTool tool(page.get());
        const auto turned = tool.RotateBlock({0, top, right, 0, 0}, kCode);
        benchmark::DoNotOptimize(turned->bits);
    }
    CountPixels(state);
}
BENCHMARK(TurnOneBit<1>)->Name("TurnOneBit90")->Apply(PageSizes);
BENCHMARK(TurnOneBit<2>)->Name("TurnOneBit180")->Apply(PageSizes);
BENCHMARK(TurnOneBit<4>)->Name("FlipOneBit")->Apply(PageSizes);

void MirrorOneBit(benchmark::State& state) {
    const auto page = BlackWhitePage(WidthOf(state), HeightOf(state));
    const auto reverseBits = platform::KernelsOf<TurnKernels>().reverseBits;
    for (auto _ : state) {
        const auto mirrored = DibImage::New(page->Width(), page->Height(), 1);
        for (int y = 0; y < page->Height(); ++y) {
            reverseBits(page->Row(y), 0, page->Width(), mirrored->Row(y));
        }
        benchmark::DoNotOptimize(mirrored->bits);
    }
    CountPixels(state);
}
BENCHMARK(MirrorOneBit)->Apply(PageSizes);

template <int kBits>
void RotateFree30(benchmark::State& state) {
    const auto page = CardPage(WidthOf(state), HeightOf(state), kBits);
    for (auto _ : state) {
        RotationTool tool(page.get());
        const auto turned = kBits == 8 ? tool.RotateFreeGray(30, 0) : tool.RotateFreeColor(30, 0);
        benchmark::DoNotOptimize(turned->bits);
    }
    CountPixels(state);
}
BENCHMARK(RotateFree30<8>)->Name("RotateFreeGray30")->Apply(PageSizes);
BENCHMARK(RotateFree30<24>)->Name("RotateFreeColor30")->Apply(PageSizes);

#ifdef TAVRIX_HAVE_OPENCV
cv::Mat MatOf(DibImage& page) {
    return {page.Height(), page.Width(), page.Is24Bit() ? CV_8UC3 : CV_8UC1, page.bits, page.RowBytes()};
}

void GrayQuarterTurn_OpenCV(benchmark::State& state) {
    const auto page = CardPage(WidthOf(state), HeightOf(state), 8);
    const cv::Mat source = MatOf(*page);
    cv::Mat turned;
    for (auto _ : state) {
        cv::rotate(source, turned, cv::ROTATE_90_COUNTERCLOCKWISE);
        benchmark::ClobberMemory();
    }
    CountPixels(state);
}
BENCHMARK(GrayQuarterTurn_OpenCV)->Apply(PageSizes);

template <int kBits>
void RotateFree30_OpenCV(benchmark::State& state) {
    const auto page = CardPage(WidthOf(state), HeightOf(state), kBits);
    const cv::Mat source = MatOf(*page);
    const cv::Point2f centre(static_cast<float>(source.cols / 2), static_cast<float>(source.rows / 2));
    cv::Mat map = cv::getRotationMatrix2D(centre, 30, 1);
    const double c = std::abs(map.at<double>(0, 0)), s = std::abs(map.at<double>(0, 1));
    const cv::Size size(static_cast<int>(source.cols * c + source.rows * s),
                        static_cast<int>(source.rows * c + source.cols * s));
    map.at<double>(0, 2) += size.width / 2 - source.cols / 2;
    map.at<double>(1, 2) += size.height / 2 - source.rows / 2;
    for (auto _ : state) {
        cv::Mat turned;
        cv::warpAffine(source, turned, map, size, cv::INTER_LINEAR, cv::BORDER_CONSTANT,
                       cv::Scalar::all(255));
        benchmark::DoNotOptimize(turned.data);
    }
    CountPixels(state);
}
BENCHMARK(RotateFree30_OpenCV<8>)->Name("RotateFreeGray30_OpenCV")->Apply(PageSizes);
BENCHMARK(RotateFree30_OpenCV<24>)->Name("RotateFreeColor30_OpenCV")->Apply(PageSizes);
#endif

#ifdef TAVRIX_HAVE_LEPTONICA
using Turn = PIX*(PIX*);

template <Turn kTurn>
void TurnOneBit_Leptonica(benchmark::State& state) {
    const auto page = BlackWhitePage(WidthOf(state), HeightOf(state));
    PIX* pix = pixCreate(page->Width(), page->Height(), 1);
    for (int y = 0; y < page->Height(); ++y) {
        for (int x = 0; x < page->Width(); ++x) pixSetPixel(pix, x, y, page->GetPixel(x, y) == 0);
    }
    for (auto _ : state) {
        PIX* turned = kTurn(pix);
        benchmark::DoNotOptimize(turned);
        pixDestroy(&turned);
    }
    pixDestroy(&pix);
    CountPixels(state);
}
PIX* Quarter(PIX* pix) {
    return pixRotate90(pix, 1);
}
PIX* Half(PIX* pix) {
    return pixRotate180(nullptr, pix);
}
PIX* Mirror(PIX* pix) {
    return pixFlipLR(nullptr, pix);
}
PIX* Flip(PIX* pix) {
    return pixFlipTB(nullptr, pix);
}
BENCHMARK(TurnOneBit_Leptonica<Quarter>)->Name("TurnOneBit90_Leptonica")->Apply(PageSizes);
BENCHMARK(TurnOneBit_Leptonica<Half>)->Name("TurnOneBit180_Leptonica")->Apply(PageSizes);
BENCHMARK(TurnOneBit_Leptonica<Flip>)->Name("FlipOneBit_Leptonica")->Apply(PageSizes);
BENCHMARK(TurnOneBit_Leptonica<Mirror>)->Name("MirrorOneBit_Leptonica")->Apply(PageSizes);
#endif

}  // namespace
}  // namespace tavrix::bench
