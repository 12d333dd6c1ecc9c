// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

// What the page-analysing methods read from a histogram of 256 counters.
namespace tavrix {

// Counters of the bins first..last.
std::uint64_t SumBins(const std::uint32_t* histogram, int first, int last);

// How a page's tones spread, as the level at which to start looking for its edges: 1 with half of the
// pixels outside 25..229, else 0 or 2 with few or many pixels in 192..254. The shares are of all `bytes` of
// the page, padding included.
int ContrastLevel(const std::uint32_t* histogram, std::size_t bytes);

// Mean of the bins 0..131, rounded down; ifNone when they are empty.
int DarkMean(const std::uint32_t* histogram, int ifNone);
// The same where the dark bins look like text: at least darkShare of the bins 0..254, the mean within
// 49..127, an eighth of them more than 20 levels below it.
std::optional<int> DarkTextMean(const std::uint32_t* histogram, double darkShare);

}  // namespace tavrix
