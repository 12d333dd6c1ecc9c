// SPDX-License-Identifier: MIT
#include "regions/SharpRule.h"

#include <algorithm>

#include "regions/EdgeMeasures.h"
#include "regions/HistogramMeasures.h"
#include "regions/StandardRules.h"

namespace tavrix {
namespace {

using enum Earlier;

// Shares of the pixels up to 127.
constexpr int kLastBeforeBright = 127;
constexpr double kLight = 0.15, kMixed = 0.8;  // at most
constexpr double kNearlyBlank = 0.06;
// Shares of bright pixels from which the smoothed page does.
constexpr double kBrightLight = 0.8, kBrightMixed = 0.6;

// Stroke ends of the page.
constexpr int kTextEnds = 1950, kSomeEnds = 3000, kManyEnds = 6000;  // in a light region, exceeded
constexpr int kFewEnds = 2400;                                       // in a mixed one, below

// Weights of the centre in sharpening.
constexpr float kSharpenSome = 9.6f, kSharpenMore = 9.8f, kSharpenMost = 9.9f;
constexpr float kSharpenMixedFew = 10.1f, kSharpenMixedMany = 9.8f;

// Levels added to isodata.
constexpr int kDarkRise = 10, kNearlyBlankRise = 40;

// The smoothed region, in place of the result and counted, is light enough at its isodata threshold. Gives
// the threshold of what is then in place of the result.
int RefineLight(Region& region, double notBright) {
    if (region.Shares().high >= kBrightLight) return region.Isodata();
    const int ends = CountStrokeEndsOf(region.gray);
    if (ends <= kTextEnds) return region.Isodata();
    const float factor = ends > kManyEnds ? kSharpenMost : ends > kSomeEnds ? kSharpenMore : kSharpenSome;
    region.SharpenResult(factor);
    const int rise = notBright < kNearlyBlank ? kNearlyBlankRise : 0;
    return region.Isodata() + rise;
}

// Likewise.
int RefineMixed(Region& region) {
    if (region.Shares().high >= kBrightMixed) return region.Isodata();
    const int ends = CountStrokeEndsOf(region.gray);
    if (ends >= kFewEnds && ends <= kManyEnds) return std::min(region.Isodata(), kHighestThreshold);
    region.SharpenResult(ends < kFewEnds ? kSharpenMixedFew : kSharpenMixedMany);
    return region.Isodata();
}

}  // namespace

Finishing BinarizeRegionSharp(const RulePlanes& planes, const Rect& rect) {
    Region region(kEdgeFamily, planes, rect);
    const double notBright = static_cast<double>(SumBins(region.Histogram(), 0, kLastBeforeBright)) /
                             static_cast<double>(rect.Area());
    if (notBright > kMixed) return BinarizeDarkText(region);

    region.SmoothInPlace();
    if (region.VerdictAt(region.Isodata()) == Verdict::kMostlyDark) {
        region.ThresholdResult(region.Isodata() + kDarkRise, kOverwritten);
        return {Finish::kLeave, true};
    }
    if (notBright > kLight) {
        return {region.FinishOf(region.ThresholdResult(RefineMixed(region), kOverwritten))};
    }
    region.ThresholdResult(RefineLight(region, notBright), kOverwritten);
    return {Finish::kFillAndMark};
}

}  // namespace tavrix
