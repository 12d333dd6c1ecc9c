// SPDX-License-Identifier: MIT
#include "binarize/Binarizer.h"

#include <algorithm>
#include <cmath>

#include "binarize/Histogram.h"
#include "binarize/MaskKernels.h"

namespace tavrix {
namespace {

constexpr std::int32_t kThresholdWithoutPixels = 120;
// A little below 1 / sqrt(3): the root of three equal squares comes out just below the level.
constexpr double kIntensityFactor = 0.5773149196287073;

}  // namespace

bool Binarizer::Attach(DibImage* imageToBinarize) {
    if (imageToBinarize == nullptr) return false;
    image = imageToBinarize;
    width = image->Width();
    height = image->Height();
    bitCount = image->header->biBitCount;
    rowBytes = image->RowBytes();
    palette = image->palette;
    for (int i = 0; i < kGrayLevels; ++i) {
        const RGBQUAD& colour = palette[i];
        intensity[i] = static_cast<std::uint8_t>(Intensity(colour.rgbRed, colour.rgbGreen, colour.rgbBlue));
    }
    return true;
}

void Binarizer::ComputeHistogram(int step) {
    std::fill(std::begin(histogram), std::end(histogram), 0u);
    if (step == 1) {
        const Plane plane = PlaneOfPixels(*image);
        CountPixels(plane, plane.Whole(), histogram);
        return;
    }
    for (int y = 0; y < height; y += step) {
        const std::uint8_t* row = image->Row(y);
        for (int x = 0; x < width; x += step) ++histogram[row[x]];
    }
}

std::int32_t Binarizer::ImageOtsuThreshold() {
    ComputeHistogram(1);
    const std::int32_t pixels = height * width;
    if (pixels == 0) return kThresholdWithoutPixels;
    const double share = 1.0 / pixels;
    double weights[kGrayLevels];  // of the levels up to and with k
    double moments[kGrayLevels];
    double weight = 0.0, moment = 0.0;
    for (int k = 0; k < kGrayLevels; ++k) {
        const double p = histogram[k] * share;
        weights[k] = weight += p;
        moments[k] = moment += k * p;
    }
    double best = 0.0;
    std::int32_t threshold = 0;
    for (int k = 0; k < kGrayLevels; ++k) {
        const double denominator = (1.0 - weights[k]) * weights[k];
        const double distance = moment * weights[k] - moments[k];
        const double variance = denominator != 0.0 ? distance * distance / denominator : 0.0;
        if (variance > best) {
            best = variance;
            threshold = k;
        }
    }
    return threshold;
}

// Sums are held in 64 bits: index sums pass 32 bits at some 8.4 million pixels.
std::int16_t Binarizer::IsodataThreshold(const std::uint32_t* histogram) {
    std::int64_t counts[kGrayLevels + 1] = {};  // of the levels below k
    std::int64_t sums[kGrayLevels + 1] = {};
    for (int i = 0; i < kGrayLevels; ++i) {
        counts[i + 1] = counts[i] + histogram[i];
        sums[i + 1] = sums[i] + std::int64_t{i} * histogram[i];
    }
    const std::int64_t count = counts[kGrayLevels], sum = sums[kGrayLevels];
    if (count == 0) return 0;
    for (std::int64_t threshold = sum / count;;) {
        const std::int64_t below = counts[threshold], above = count - below;
        const std::int64_t darkMean = below > 0 ? sums[threshold] / below : 0;
        const std::int64_t brightMean = above > 0 ? (sum - sums[threshold]) / above : 0;
        const std::int64_t next = (darkMean + brightMean) >> 1;
        if (next == threshold) return static_cast<std::int16_t>(threshold);
        threshold = next;
    }
}

std::int16_t Binarizer::OtsuThreshold(const std::uint32_t* histogram, int low, int high) {
    std::int64_t count = 0, sum = 0;
    for (int i = low; i < high; ++i) {
        count += histogram[i];
        sum += std::int64_t{i} * histogram[i];
    }
    std::int64_t below = 0, belowSum = 0;
    std::int32_t best = 0;  // the criterion is never negative and starts at 0 or 1 and more
    int threshold = low;
    for (int k = low; k < high; ++k) {
        below += histogram[k];
        belowSum += std::int64_t{k} * histogram[k];
        const std::int64_t above = count - below;
        std::int32_t criterion = 0;
        if (below != 0 && above != 0) {
            const auto n = static_cast<double>(count);
            const auto n0 = static_cast<double>(below), n1 = static_cast<double>(above);
            const double distance =
                static_cast<double>(sum - belowSum) / n1 - static_cast<double>(belowSum) / n0;
            criterion = static_cast<std::int32_t>(std::ceil(n0 / n * (n1 / n) * (distance * distance) + 0.5));
        }
        if (criterion >= best) {
            best = criterion;
            threshold = k;
        }
    }
    return static_cast<std::int16_t>(threshold);
}

int Binarizer::Intensity(int red, int green, int blue) {
    return static_cast<int>(std::sqrt(static_cast<double>(red * red + green * green + blue * blue)) *
                            kIntensityFactor);
}

void Binarizer::ApplyMarkerPalette() {
    constexpr RGBQUAD kWhite{255, 255, 255, 0}, kBlack{0, 0, 0, 0}, kRed{0, 0, 255, 0};
    std::fill_n(palette, kGrayLevels, kWhite);
    palette[1] = kBlack;
    palette[2] = kRed;
}

void Binarizer::BlackenBelow(std::int32_t threshold) {
    const int lastBlack = std::clamp(threshold, 0, kGrayLevels) - 1;
    const auto maskAbove = platform::KernelsOf<MaskKernels>().maskAbove;
    for (int y = 0; y < height; ++y) {
        std::uint8_t* row = image->Row(y);
        maskAbove(row, width, lastBlack, row);
    }
}

}  // namespace tavrix
