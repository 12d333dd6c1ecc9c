// SPDX-License-Identifier: MIT
#include "regions/HistogramClass.h"

#include <cmath>

#include "regions/HistogramMeasures.h"

namespace tavrix {
namespace {

// Shares of the pixels.
constexpr double kBright = 0.5, kVeryBright = 0.7, kNearlyAllBright = 0.8;
constexpr double kHalfDark = 0.5;         // from which a page is dark
constexpr double kSomeDark = 0.2;         // up to which a page is print on paper
constexpr double kHardlyDark = 0.1;       // up to which hardly anything is printed
constexpr double kFullOfGrays = 0.3;      // of a bright page
constexpr double kDarkFullOfGrays = 0.4;  // of a dark page
constexpr double kGrayPage = 0.4, kRatherGray = 0.15;
constexpr double kFewGrays = 0.06;
constexpr double kLightTints = 0.1, kManyLightTints = 0.19;
constexpr double kHeap = 0.3;    // from which one of the tones is a heap of its own
constexpr double kApart = 0.02;  // dark and half-dark shares differ: the print stands out
constexpr double kDarkArea = 0.3, kDarkAreaOfQuietPage = 0.25;

// Stroke ends of a page.
constexpr int kManyEnds = 4500, kSomeEnds = 2800;

// Pages of which at most half is bright.
HistogramClass ClassifyDarkPage(const HistogramShares& shares) {
    using enum HistogramClass;
    const double high = shares.high, mid = shares.mid, midLow = shares.midLow, midHigh = shares.midHigh,
                 low = shares.low;
    if (low > kHalfDark) return mid <= kDarkFullOfGrays ? kBrightOnDark : kBlended;
    if (high > kHeap && midLow > kHeap && midHigh < kHeap) return kScattered;
    if (low > kHeap && midHigh > kHeap && midLow < kHeap) return kScattered;
    if (mid > kGrayPage) return kGray;
    if (low <= kSomeDark || high <= kSomeDark) return kScattered;
    return mid > kRatherGray ? kGray : kScattered;
}

// Bright pages with at most a fifth of dark.
HistogramClass ClassifyPrint(const HistogramShares& shares) {
    const bool apart = std::abs(shares.low - shares.midLow) >= kApart;
    return apart ? HistogramClass::kDarkOnBright : HistogramClass::kBlended;
}

}  // namespace

HistogramShares SharesOf(const std::uint32_t* histogram) {
    const auto all = static_cast<float>(SumBins(histogram, 0, 255));
    const auto share = [&](int first, int last) {
        return static_cast<float>(SumBins(histogram, first, last)) / all;
    };
    return {share(191, 255), share(63, 190), share(63, 126), share(127, 190), share(0, 62)};
}

HistogramClass ClassifyHistogram(const HistogramShares& shares, int strokeEndCount) {
    using enum HistogramClass;
    const double high = shares.high, mid = shares.mid, midHigh = shares.midHigh, low = shares.low;
    if (!(high > kBright)) return ClassifyDarkPage(shares);
    if (high > kVeryBright && midHigh > kLightTints) return kBrightTinted;
    if (mid > kFullOfGrays) return kBrightTinted;
    if (midHigh > kManyLightTints) return kBrightTinted;
    if (low < kHardlyDark && high > kNearlyAllBright) return kBrightTinted;
    if (low <= kSomeDark) return ClassifyPrint(shares);

    const bool fewGrays = mid <= kFewGrays;
    if (strokeEndCount > kManyEnds) return fewGrays ? kBrightWithDark : kBrightTinted;
    if (low > (strokeEndCount > kSomeEnds ? kDarkArea : kDarkAreaOfQuietPage)) return kBrightWithDark;
    return fewGrays ? kDarkOnBright : kBrightTinted;
}

HistogramClass LineClassifyHistogram(const HistogramShares& shares) {
    using enum HistogramClass;
    const double high = shares.high, mid = shares.mid, midHigh = shares.midHigh, low = shares.low;
    if (!(high > kBright)) return ClassifyDarkPage(shares);
    if (high > kVeryBright && midHigh > kLightTints) return kBrightTinted;
    if (mid > kFullOfGrays) return kBrightTinted;
    if (low <= kSomeDark) return ClassifyPrint(shares);
    return mid <= kFewGrays ? kBrightWithDark : kBrightTinted;
}

}  // namespace tavrix
