// SPDX-License-Identifier: MIT
#include "binarize/PeakFitBinarizer.h"

#include <cmath>
#include <limits>

#include "binarize/Histogram.h"

namespace tavrix {
namespace {

constexpr int kFirstBrightBin = 120;
constexpr int kDarkStep = 3;     // bins
constexpr int kBrightStep = 10;  // bins
constexpr double kShareBack = 0.1;
constexpr double kThird = 0.3333333333333333;

std::int32_t FullestBin(const std::int32_t* counts, int first, int end) {
    int fullest = first;
    for (int i = first + 1; i < end; ++i) {
        if (counts[i] > counts[fullest]) fullest = i;
    }
    return fullest;
}

}  // namespace

bool PeakFitBinarizer::Binarize() {
    const std::int32_t threshold = PeakThreshold();
    ApplyMarkerPalette();
    BlackenBelow(threshold);
    return true;
}

std::int32_t PeakFitBinarizer::PeakThreshold() {
    ComputeHistogram(1);
    std::int32_t counts[kGrayLevels] = {};
    for (int i = 0; i < kGrayLevels; ++i) counts[intensity[i]] += static_cast<std::int32_t>(histogram[i]);
    const std::int32_t bright = BrightPeak(counts);
    const std::int32_t dark = DarkPeak(counts);
    std::int64_t left = PeakFoot(counts, +1, dark, kDarkStep);
    if (left == kNoFoot) left = dark;
    std::int64_t right = PeakFoot(counts, -1, bright, kBrightStep);
    if (right == kNoFoot) right = bright;
    const auto back = static_cast<std::int64_t>(static_cast<double>(right - left) * kShareBack);
    return static_cast<std::int32_t>(right - back);
}

std::int32_t PeakFitBinarizer::DarkPeak(const std::int32_t* counts) {
    return FullestBin(counts, 0, kFirstBrightBin);
}

std::int32_t PeakFitBinarizer::BrightPeak(const std::int32_t* counts) {
    return FullestBin(counts, kFirstBrightBin, kGrayLevels);
}

std::int32_t PeakFitBinarizer::PeakFoot(const std::int32_t* counts, int direction, int peak, int step) {
    const int stride = direction * step;
    int middle = peak + stride, end = middle + stride;  // middle halves the way from peak to end
    for (;; middle += stride, end += 2 * stride) {
        if (end < 0 || end >= kGrayLevels) return kNoFoot;
        if (counts[middle] < (counts[peak] + counts[end]) / 2) break;
    }

    // The parabola y = a x^2 + b x + c through the three samples; it opens upwards.
    const double h0 = counts[peak], h1 = counts[middle], h2 = counts[end];
    const double slope = (h1 - h0) / (middle - peak);
    const double a = ((h2 - h0) / (end - peak) - slope) / (end - middle);
    const double b = slope - (middle + peak) * a;
    const double c = h0 - peak * b - peak * peak * a;
    const double vertex = -b / (2.0 * a);
    const double w = std::fabs(vertex - peak);
    const double e = (4.0 * a * c - b * b) / (4.0 * a);
    const double limit = -a * (vertex * vertex) * kThird;
    const double root = (3.0 * (a * a) * (w * w) + 12.0 * a * e) * (w * w) + 9.0 * (e * e);
    const double base = e < limit ? limit : e;
    if (w == 0.0 || root < 0.0) return kNoFoot;
    const double foot = peak + direction * ((3.0 * (a * (w * w) + base) - std::sqrt(root)) / (2.0 * a * w));
    constexpr double kBeyond = -static_cast<double>(std::numeric_limits<std::int32_t>::min());
    if (!(foot > -kBeyond - 1.0 && foot < kBeyond)) return kNoFoot;
    return static_cast<std::int32_t>(foot);
}

}  // namespace tavrix
