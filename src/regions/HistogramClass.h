// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace tavrix {

// Shares of the sum of all bins.
struct HistogramShares {
    float high;     // bins 191..255
    float mid;      // bins 63..190
    float midLow;   // bins 63..126
    float midHigh;  // bins 127..190
    float low;      // bins 0..62
};

HistogramShares SharesOf(const std::uint32_t* histogram);

// What a page or a region with such a histogram looks like.
enum class HistogramClass {
    kBrightTinted = 0,    // bright paper with tints of gray, or hardly anything but paper
    kDarkOnBright = 1,    // dark print on bright paper, few grays
    kBlended = 2,         // bright paper whose print fades evenly into gray, or a dark page full of grays
    kBrightOnDark = 3,    // a dark page, bright print, few grays
    kGray = 4,            // gray all over
    kScattered = 5,       // no tone that rules: two of bright, gray and dark apart, or a bit of everything
    kBrightWithDark = 7,  // bright paper with large dark areas, few grays
};

// Grays between print and ground blur the edges.
constexpr bool HasManyGrays(HistogramClass kind) {
    return kind == HistogramClass::kBrightTinted || kind == HistogramClass::kBlended ||
           kind == HistogramClass::kGray;
}
// Print and ground, and little else.
constexpr bool IsTwoToned(HistogramClass kind) {
    return kind == HistogramClass::kDarkOnBright || kind == HistogramClass::kBrightOnDark;
}

// The class as the edge-guided method sees it: on bright pages with much dark the count of stroke ends tells
// text from dark areas.
HistogramClass ClassifyHistogram(const HistogramShares& shares, int strokeEndCount);
// The class as the line method sees it.
HistogramClass LineClassifyHistogram(const HistogramShares& shares);

}  // namespace tavrix
