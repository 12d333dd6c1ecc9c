// SPDX-License-Identifier: MIT
#include "regions/HistogramMeasures.h"

namespace tavrix {
namespace {

constexpr int kLastDarkBin = 131;
constexpr int kLastCountedBin = 254;

struct DarkSums {
    std::uint64_t count = 0, moment = 0;

    explicit DarkSums(const std::uint32_t* histogram) {
        for (unsigned i = 0; i <= kLastDarkBin; ++i) {
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

HistogramShares SharesOf(const std::uint32_t* histogram) {
    const auto all = static_cast<float>(SumBins(histogram, 0, 255));
    const auto share = [&](int first, int last) {
        return static_cast<float>(SumBins(histogram, first, last)) / all;
    };
    return {share(191, 255), share(63, 190), share(63, 126), share(127, 190), share(0, 62)};
}

int ClassifyDarkPage(const HistogramShares& shares) {
    const double high = shares.high, mid = shares.mid, midLow = shares.midLow, midHigh = shares.midHigh,
                 low = shares.low;
    if (low > 0.5) return mid <= 0.4 ? 3 : 2;
    if (high > 0.3 && midLow > 0.3 && midHigh < 0.3) return 5;
    if (low > 0.3 && midHigh > 0.3 && midLow < 0.3) return 5;
    if (mid > 0.4) return 4;
    if (low <= 0.2) return 5;
    if (high <= 0.2) return 5;
    return mid > 0.15 ? 4 : 5;
}

int ContrastLevel(const std::uint32_t* histogram, std::size_t bytes) {
    const auto all = static_cast<double>(bytes);
    if (static_cast<double>(SumBins(histogram, 25, 229)) / all < 0.5) return 1;
    return static_cast<double>(SumBins(histogram, 192, 254)) / all < 0.1 ? 0 : 2;
}

int DarkMean(const std::uint32_t* histogram, int ifNone) {
    const DarkSums dark(histogram);
    return dark.count == 0 ? ifNone : dark.Mean();
}

int CheckedDarkMean(const std::uint32_t* histogram, double darkShare) {
    constexpr int kLowestMean = 49, kHighestMean = 127, kFarBelow = 21;
    const DarkSums dark(histogram);
    const std::uint64_t counted = dark.count + SumBins(histogram, kLastDarkBin + 1, kLastCountedBin);
    if (dark.count == 0 || darkShare * static_cast<double>(counted) > static_cast<double>(dark.count)) {
        return -1;
    }
    const int mean = dark.Mean();
    if (mean < kLowestMean || mean > kHighestMean) return -1;
    return 8 * SumBins(histogram, 0, mean - kFarBelow) >= dark.count ? mean : -1;
}

}  // namespace tavrix
