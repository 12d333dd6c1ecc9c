// SPDX-License-Identifier: MIT
#include "regions/StandardRules.h"

#include <algorithm>

namespace tavrix {
namespace {

using enum Earlier;

// Shares of dark pixels in a region.
constexpr double kFullText = 0.1, kFaintText = 0.038;
constexpr double kHalfDarkToSharpen = 0.6;

// Weights of the centre in sharpening: the more text, the stronger it may stand out.
constexpr float kSharpenFull = 10.0f, kSharpenText = 9.8f, kSharpenFaint = 9.6f;

// Levels added to a threshold.
constexpr int kSharpenedFull = 30, kSharpenedThin = 40;  // to isodata, of sharpened text
constexpr int kSharpenedDarkText = -30;                  // the same where the text is the dark of the page
constexpr int kSharpenedHalfDark = 20, kSharpenedLine = 10;  // of a sharpened half-dark region, line
constexpr int kSmoothedText = 15, kSmoothedHalfDark = 10;
constexpr int kLinePlain = -20;       // to isodata, of a line that may not be sharpened
constexpr int kLowDarkText = 50;      // a threshold below which dark text gets
constexpr int kLowDarkTextRise = 20;  // so much more
// Factors of a threshold.
constexpr double kRegionPlain = 0.8;  // of isodata, in a region that may not be sharpened
constexpr double kGrayLine = 0.8;     // of Otsu's, in a smoothed gray line

float SharpeningOf(const Tones& tones) {
    if (tones.dark > kFullText) return kSharpenFull;
    return tones.dark >= kFaintText ? kSharpenText : kSharpenFaint;
}

int RaisedIsodata(const Region& region, int above) {
    return std::min(region.Isodata() + above, kHighestThreshold);
}

// ---- what both methods do

// Text that may be sharpened.
Verdict ThresholdSharpened(Region& region, bool secondPass) {
    region.Sharpen(region.gray, region.scratch, SharpeningOf(region.tones));
    const int above = region.tones.dark > kFullText ? kSharpenedFull : kSharpenedThin;
    const Verdict verdict =
        region.Threshold(region.scratch, region.result, RaisedIsodata(region, above), kBlackStays);
    if (secondPass && region.tones.dark >= kFaintText) region.MergeSmoothed(kSmoothedText);
    return verdict;
}

Verdict ThresholdAtIsodata(const Region& region) {
    return region.Threshold(region.gray, region.result, region.Isodata(), kBlackStays);
}

int DarkTextOrOtsu(const Region& region) {
    return region.DarkTextOtsu().value_or(region.Otsu());
}

// ---- text

Verdict ThresholdRegionText(Region& region, const PageFindings& page) {
    if (!page.darkTextHint) {
        if (page.sharpenAllowed) return ThresholdSharpened(region, page.secondPass);
        return region.Threshold(region.gray, region.result, Scaled(region.Isodata(), kRegionPlain),
                                kBlackStays);
    }
    if (page.sharpenAllowed) {
        region.Sharpen(region.gray, region.scratch, SharpeningOf(region.tones));
        return region.Threshold(region.scratch, region.result, region.Isodata() + kSharpenedDarkText,
                                kOverwritten);
    }
    const int threshold = DarkTextOrOtsu(region);
    const int rise = threshold < kLowDarkText ? kLowDarkTextRise : 0;
    return region.Threshold(region.gray, region.result, threshold + rise, kOverwritten);
}

Verdict ThresholdLineText(Region& region, const PageFindings& page) {
    if (page.darkTextHint) {
        return region.Threshold(region.gray, region.result, DarkTextOrOtsu(region), kOverwritten);
    }
    if (page.sharpenAllowed) return ThresholdSharpened(region, page.secondPass);
    return region.Threshold(region.gray, region.result, region.Isodata() + kLinePlain, kBlackStays);
}

// ---- half dark, and not mostly dark at the isodata threshold

void RefineHalfDarkRegion(Region& region, const PageFindings& page) {
    if (region.tones.dark < kHalfDarkToSharpen) {
        region.Sharpen(region.gray, region.result, kSharpenText);
        region.Threshold(region.result, region.result, RaisedIsodata(region, kSharpenedHalfDark),
                         kBlackStays);
    }
    if (page.secondPass) {
        region.MergeSmoothed(kSmoothedHalfDark);
    } else if (page.darkTextHint) {
        region.CountGray();
        region.Threshold(region.gray, region.scratch, DarkTextOrOtsu(region), kBlackStays);
        MergeRegionMasks(region.result, region.scratch, region.rect);
    }
}

void RefineHalfDarkLine(Region& region, const PageFindings& page) {
    if (page.darkTextHint) {
        region.Threshold(region.gray, region.result, DarkTextOrOtsu(region), kOverwritten);
        return;
    }
    if (!page.sharpenAllowed) return;
    if (region.tones.dark < kHalfDarkToSharpen) {
        region.Sharpen(region.gray, region.scratch, kSharpenText);
        region.Threshold(region.scratch, region.result, RaisedIsodata(region, kSharpenedLine), kBlackStays);
    }
    if (page.secondPass) region.MergeSmoothed(kSmoothedHalfDark);
}

// ---- dark

Finishing BinarizeDarkRegion(const Region& region) {
    if (ThresholdAtIsodata(region) == Verdict::kMostlyDark) return {Finish::kLeave};
    return BinarizeDarkText(region);
}

Verdict ThresholdDarkLine(Region& region, const PageFindings& page) {
    if (page.midToneHint && LineClassifyHistogram(region.Shares()) == HistogramClass::kGray) {
        region.Sharpen(region.gray, region.scratch, kSharpenFull);
        region.Smooth(region.scratch, region.result);
        return region.Threshold(region.result, region.result, Scaled(region.Otsu(), kGrayLine), kBlackStays);
    }
    return region.Threshold(region.gray, region.result, region.DarkTextOtsu().value_or(region.Isodata()),
                            kBlackStays);
}

}  // namespace

Finishing BinarizeRegion(const PageFindings& page, const RulePlanes& planes, const Rect& rect) {
    Region region(kEdgeFamily, planes, rect);
    switch (region.Classify(false)) {
        case ToneClass::kBlank: return {BinarizeBlank(region)};
        case ToneClass::kText: return {region.FinishOf(ThresholdRegionText(region, page))};
        case ToneClass::kHalfDark: {
            const Verdict verdict = ThresholdAtIsodata(region);
            if (verdict != Verdict::kMostlyDark) RefineHalfDarkRegion(region, page);
            return {region.FinishOf(verdict)};
        }
        case ToneClass::kDark: break;
    }
    return BinarizeDarkRegion(region);
}

Finish LineRule(const PageFindings& page, const RulePlanes& planes, const Rect& rect) {
    Region region(kLineFamily, planes, rect);
    switch (region.Classify(true)) {
        case ToneClass::kBlank: return BinarizeBlank(region);
        case ToneClass::kText: return region.FinishOf(ThresholdLineText(region, page));
        case ToneClass::kHalfDark: {
            const Verdict verdict = ThresholdAtIsodata(region);
            if (verdict != Verdict::kMostlyDark) RefineHalfDarkLine(region, page);
            return region.FinishOf(verdict);
        }
        case ToneClass::kDark: break;
    }
    return region.FinishOf(ThresholdDarkLine(region, page));
}

Finishing BinarizeDarkText(const Region& region) {
    const std::optional<int> ofText = region.DarkTextOtsu();
    const Verdict verdict =
        region.Threshold(region.gray, region.result, ofText.value_or(region.Isodata()), kBlackStays);
    return {region.FinishOf(verdict), ofText.has_value()};
}

}  // namespace tavrix
