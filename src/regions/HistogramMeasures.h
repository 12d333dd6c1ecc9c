// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

// What the page-analysing methods read from a histogram of 256 counters.
namespace tavrix {

// Shares of the sum of all bins.
struct HistogramShares {
    float high;     // bins 191..255
    float mid;      // bins 63..190
    float midLow;   // bins 63..126
    float midHigh;  // bins 127..190
    float low;      // bins 0..62
};

// Counters of the bins first..last.
std::uint64_t SumBins(const std::uint32_t* histogram, int first, int last);

HistogramShares SharesOf(const std::uint32_t* histogram);
// The class 2 to 5 of a page of which at most half is bright (high <= 0.5).
int ClassifyDarkPage(const HistogramShares& shares);

// How the page's tones spread: 1 with half of the pixels outside 25..229, else 0 or 2 with few or many
// pixels in 192..254. The shares are of all `bytes` of the page, padding included.
int ContrastLevel(const std::uint32_t* histogram, std::size_t bytes);

// Mean of the bins 0..131, rounded down; ifNone when they are empty.
int DarkMean(const std::uint32_t* histogram, int ifNone);
// The same where the dark bins look like text: at least darkShare of the bins 0..254, the mean within
// 49..127, an eighth of them more than 20 levels below it. Otherwise, or when they are empty, -1.
int CheckedDarkMean(const std::uint32_t* histogram, double darkShare);

}  // namespace tavrix
