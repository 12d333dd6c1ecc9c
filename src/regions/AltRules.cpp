// SPDX-License-Identifier: MIT
#include "regions/AltRules.h"

namespace tavrix {
namespace {

using enum Earlier;

constexpr int kLargeWidth = 700, kLargeHeight = 500;  // pixels, exceeded by a large rectangle
constexpr double kLarge = 0.7;                        // of isodata, in a large rectangle
constexpr int kSmall = -20;                           // levels added to isodata in others
constexpr int kSmoothed = 10;                         // to isodata, of a smoothed half-dark region
constexpr double kTwoToned = 0.85;                    // of the base threshold, of two-toned histograms
constexpr double kSomeWhite = 0.2;                    // share of bright pixels in a gray region
constexpr int kWithoutWhite = 170;                    // gray level below which such a region's text lies
constexpr int kGrayRise = 10;                         // levels

// Where the rules of regions and of lines differ.
struct AltRule {
    const RuleFamily& family;
    HistogramClass (*classify)(const HistogramShares& shares, const PageFindings& page);
    int (*base)(const Region& region);  // the threshold that the others start from
    bool raisesGray;                    // gray text has a threshold of its own
};
constexpr AltRule kRegionAlt{kEdgeFamily,
                             [](const HistogramShares& shares, const PageFindings& page) {
                                 return ClassifyHistogram(shares, page.strokeEndCount);
                             },
                             [](const Region& region) { return region.Isodata(); }, true};
constexpr AltRule kLineAlt{
    kLineFamily,
    [](const HistogramShares& shares, const PageFindings&) { return LineClassifyHistogram(shares); },
    [](const Region& region) { return region.Otsu(); }, false};

// The threshold of text on the smoothed page, counted last.
int SmoothedTextThreshold(const AltRule& rule, const Region& region, const PageFindings& page) {
    const HistogramShares shares = region.Shares();
    const HistogramClass kind = rule.classify(shares, page);
    if (kind == HistogramClass::kScattered) return region.DarkMean();
    const int base = rule.base(region);
    if (IsTwoToned(kind)) return Scaled(base, kTwoToned);
    if (kind != HistogramClass::kGray || !rule.raisesGray) return region.Otsu(base);
    return region.Otsu(shares.high <= kSomeWhite ? kWithoutWhite : base) + kGrayRise;
}

// Text is filled and marked, however dark it came out.
Finish BinarizeText(const AltRule& rule, Region& region, const PageFindings& page) {
    if (page.secondPass) {
        region.SmoothInPlace();
        region.ThresholdResult(SmoothedTextThreshold(rule, region, page), kOverwritten);
    } else {
        const bool large = region.rect.Width() > kLargeWidth && region.rect.Height() > kLargeHeight;
        const int isodata = region.Isodata();
        region.ThresholdGray(large ? Scaled(isodata, kLarge) : isodata + kSmall, kBlackStays);
    }
    return Finish::kFillAndMark;
}

Finish BinarizeHalfDark(Region& region, const PageFindings& page) {
    const Verdict verdict = region.ThresholdGray(region.Isodata(), kBlackStays);
    if (verdict != Verdict::kMostlyDark && page.secondPass) {
        region.SmoothInPlace();
        region.ThresholdResult(region.Isodata() + kSmoothed, kOverwritten);
    }
    return region.FinishOf(verdict);
}

Finish BinarizeDark(const AltRule& rule, const Region& region, const PageFindings& page) {
    const HistogramClass kind = rule.classify(region.Shares(), page);
    int threshold = 0;
    if (kind == HistogramClass::kGray) {
        threshold = region.Otsu(region.DarkMean());
    } else if (kind == HistogramClass::kScattered) {
        threshold = region.DarkMean();
    } else {
        const int base = rule.base(region);
        threshold = IsTwoToned(kind) ? Scaled(base, kTwoToned) : base;
    }
    return region.FinishOf(region.ThresholdGray(threshold, kBlackStays));
}

Finish BinarizeAlt(const AltRule& rule, const PageFindings& page, const RulePlanes& planes,
                   const Rect& rect) {
    Region region(rule.family, planes, rect);
    switch (region.Classify(true)) {
        case ToneClass::kBlank: return BinarizeBlank(region);
        case ToneClass::kText: return BinarizeText(rule, region, page);
        case ToneClass::kHalfDark: return BinarizeHalfDark(region, page);
        case ToneClass::kDark: break;
    }
    return BinarizeDark(rule, region, page);
}

}  // namespace

Finish BinarizeRegionAlt(const PageFindings& page, const RulePlanes& planes, const Rect& rect) {
    return BinarizeAlt(kRegionAlt, page, planes, rect);
}

Finish LineRuleAlt(const PageFindings& page, const RulePlanes& planes, const Rect& rect) {
    return BinarizeAlt(kLineAlt, page, planes, rect);
}

}  // namespace tavrix
