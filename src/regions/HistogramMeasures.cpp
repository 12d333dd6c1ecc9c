// SPDX-License-Identifier: MIT
#include "regions/HistogramMeasures.h"

namespace tavrix {
namespace {

// Gray levels.
constexpr int kLastDark = 131, kLastCounted = 254;
constexpr int kFirstMiddle = 25, kLastMiddle = 229;   // neither black nor white
constexpr int kFirstBright = 192, kLastBright = 254;  // paper that is not blown out
constexpr int kLowestTextMean = 49, kHighestTextMean = 127;
constexpr int kFarBelow = 21;  // levels below the mean

// Shares of a page.
constexpr double kMiddlePage = 0.5, kBrightPage = 0.1;
constexpr int kEighth = 8;  // one in so many dark pixels is far below the mean

struct DarkSums {
    std::uint64_t count = 0, moment = 0;

    explicit DarkSums(const std::uint32_t* histogram) {
        for (unsigned i = 0; i <= kLastDark; ++i) {
            count += histogram[i];
            moment += std::uint64_t{i} * histogram[i];
        }
    }
    int Mean() const { return static_cast<int>(moment / count); }
};

}  // namespace

std::uint64_t SumBins(const std::uint32_t* histogram, int first, int last) {
    std::uint64_t sum = 0;
    for (int i = first; i <= last; ++i) sum += histogram[i];
    return sum;
}

int ContrastLevel(const std::uint32_t* histogram, std::size_t bytes) {
    const auto share = [&](int first, int last) {
        return static_cast<double>(SumBins(histogram, first, last)) / static_cast<double>(bytes);
    };
    if (share(kFirstMiddle, kLastMiddle) < kMiddlePage) return 1;
    return share(kFirstBright, kLastBright) < kBrightPage ? 0 : 2;
}

int DarkMean(const std::uint32_t* histogram, int ifNone) {
    const DarkSums dark(histogram);
    return dark.count == 0 ? ifNone : dark.Mean();
}

std::optional<int> DarkTextMean(const std::uint32_t* histogram, double darkShare) {
    const DarkSums dark(histogram);
    const std::uint64_t counted = dark.count + SumBins(histogram, kLastDark + 1, kLastCounted);
    if (dark.count == 0 || darkShare * static_cast<double>(counted) > static_cast<double>(dark.count)) {
        return std::nullopt;
    }
    const int mean = dark.Mean();
    if (mean < kLowestTextMean || mean > kHighestTextMean) return std::nullopt;
    if (kEighth * SumBins(histogram, 0, mean - kFarBelow) < dark.count) return std::nullopt;
    return mean;
}

}  // namespace tavrix
