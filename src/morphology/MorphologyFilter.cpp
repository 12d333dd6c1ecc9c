// SPDX-License-Identifier: MIT
#include "morphology/MorphologyFilter.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "image/DibImage.h"
#include "image/NeighbourhoodKernels.h"
#include "image/RowRing.h"
#include "morphology/MorphologyKernels.h"
#include "platform/OutputFile.h"

namespace tavrix {
namespace {

constexpr int kElementSize = 15;
constexpr int kElementRadius = kElementSize / 2;
constexpr int kOpeningRadius = 1;
constexpr std::uint8_t kNoEdge = 255;

BitRows RowsOf(const DibImage& source, DibImage& target) {
    return {source.bits, target.bits, source.RowBytes(), source.Width(), source.Height()};
}

// Calls pass(before, row, after, target) for every inner row of an image, bottom up, with the rows as they
// were before the passes; beyond `columns` bytes they read 0.
template <class Pass>
void ForEachInnerRow(DibImage& image, int columns, Pass pass) {
    RowRing copies(3, static_cast<std::size_t>(columns) + 2);
    const auto copyOf = [&](int y) { return copies.Row(y) + 1; };
    const auto copyRow = [&](int y) {
        std::memcpy(copyOf(y), image.Row(y), static_cast<std::size_t>(columns));
    };
    if (image.Height() < 3) return;
    copyRow(0);
    copyRow(1);
    for (int y = 1; y + 1 < image.Height(); ++y) {
        copyRow(y + 1);
        pass(copyOf(y - 1), copyOf(y), copyOf(y + 1), image.Row(y));
    }
}

}  // namespace

MorphologyFilter::MorphologyFilter(DibImage* imageToFilter)
    : image(imageToFilter),
      width(imageToFilter->Width()),
      rowBytes(imageToFilter->RowBytes()),
      height(imageToFilter->Height()),
      bitCount(imageToFilter->header->biBitCount),
      elementSize(kElementSize) {}

void MorphologyFilter::EdgeMap() {
    if (width == 0) return;
    const int columns = static_cast<int>(rowBytes);
    const int last = std::min(width - 1, columns - 2);
    const auto edgeRow = platform::KernelsOf<NeighbourhoodKernels>().edgeRow;
    ForEachInnerRow(*image, columns, [&](auto* before, auto* row, auto* after, std::uint8_t* target) {
        edgeRow(before + 1, row + 1, after + 1, last, target + 1);
        target[0] = kNoEdge;
        std::fill(target + last + 1, target + width, kNoEdge);
    });
    if (height > 0) std::memset(image->Row(0), kNoEdge, static_cast<std::size_t>(width));
    if (height > 1) std::memset(image->Row(height - 1), kNoEdge, static_cast<std::size_t>(width));
}

void MorphologyFilter::Opening() {
    std::vector<std::uint64_t> scratch(SpreadScratchWords(width));
    platform::KernelsOf<MorphologyKernels>().spreadWhite(RowsOf(*image, *image), kOpeningRadius,
                                                         scratch.data());
    platform::KernelsOf<MorphologyKernels>().spreadBlack(RowsOf(*image, *image), kOpeningRadius,
                                                         scratch.data());
}

void MorphologyFilter::Closing() {
    DibImage dilated(image);
    if (dilated.bits == nullptr) return;
    std::vector<std::uint64_t> scratch(SpreadScratchWords(width));
    platform::KernelsOf<MorphologyKernels>().spreadBlack(RowsOf(*image, dilated), kElementRadius,
                                                         scratch.data());
    dilated.WriteBmp(platform::kDebugDumpPath);
    platform::KernelsOf<MorphologyKernels>().spreadWhite(RowsOf(dilated, *image), kElementRadius,
                                                         scratch.data());
    image->WriteBmp(platform::kDebugDumpPath);
}

void MorphologyFilter::Smooth3x3() {
    const int last = std::min(width - 1, static_cast<int>(rowBytes) - 2);
    const auto meanRow = platform::KernelsOf<NeighbourhoodKernels>().meanRow;
    ForEachInnerRow(*image, width, [&](auto* before, auto* row, auto* after, std::uint8_t* target) {
        meanRow(before + 1, row + 1, after + 1, last, target + 1);
    });
}

void MorphologyFilter::Sharpen(float factor) {
    const SharpeningFactor weight(factor);
    const auto sharpenRow = platform::KernelsOf<NeighbourhoodKernels>().sharpenRow;
    ForEachInnerRow(*image, width, [&](auto* before, auto* row, auto* after, std::uint8_t* target) {
        sharpenRow(before + 1, row + 1, after + 1, width - 2, weight, target + 1);
    });
}

void MorphologyFilter::Dilate() {
    std::vector<std::uint64_t> scratch(SpreadScratchWords(width));
    platform::KernelsOf<MorphologyKernels>().spreadBlack(RowsOf(*image, *image), kElementRadius,
                                                         scratch.data());
}

}  // namespace tavrix
