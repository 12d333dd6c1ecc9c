// SPDX-License-Identifier: MIT
#include "regions/StandardRules.h"

#include <algorithm>

namespace tavrix {
namespace {

using enum Earlier;

// Shares of dark pixels in a region.
constexpr double kFullText = 0.1, kFaintText = 0.038;
constexpr double kHalfDarkToSharpen = 0.6;  // below

// Weights of the centre in sharpening: the more text, the more it may stand out.
constexpr float kSharpenFull = 10.0f, kSharpenText = 9.8f, kSharpenFaint = 9.6f;

// Levels added to the isodata threshold.
constexpr int kSharpenedFull = 30, kSharpenedThin = 40;              // of sharpened text
constexpr int kSharpenedDarkText = -30;                              // of sharpened dark text
constexpr int kSharpenedHalfDark = 20, kSharpenedHalfDarkLine = 10;  // of sharpened half-dark regions, lines
constexpr int kSmoothedText = 15, kSmoothedHalfDark = 10;            // of the smoothed page
constexpr int kPlainLine = -20;                          // of text lines that may not be sharpened
constexpr int kLowDarkText = 50, kLowDarkTextRise = 20;  // a threshold of dark text below 50 gets 20 more

// Factors of a threshold.
constexpr double kPlainRegion = 0.8;  // isodata's, of text that may not be sharpened
constexpr double kGrayLine = 0.8;     // Otsu's, of smoothed gray lines

float SharpeningOf(const Tones& tones) {
    if (tones.dark > kFullText) return kSharpenFull;
    return tones.dark >= kFaintText ? kSharpenText : kSharpenFaint;
}

int RaisedIsodata(const Region& region, int above) {
    return std::min(region.Isodata() + above, kHighestThreshold);
}

int DarkTextOrOtsu(const Region& region) {
    return region.DarkTextOtsu().value_or(region.Otsu());
}

// Text that may be sharpened, on the page and in lines.
Verdict ThresholdSharpened(Region& region, bool secondPass) {
    const float factor = SharpeningOf(region.tones);
    region.Sharpen(factor);
    const int above = region.tones.dark > kFullText ? kSharpenedFull : kSharpenedThin;
    const Verdict verdict = region.ThresholdSharpened(factor, RaisedIsodata(region, above), kBlackStays);
    if (secondPass && region.tones.dark >= kFaintText) region.MergeSmoothed(kSmoothedText);
    return verdict;
}

// ---- text: dark strokes on a brighter ground

Verdict ThresholdTextRegion(Region& region, const PageFindings& page) {
    if (!page.darkTextHint) {
        if (page.sharpenAllowed) return ThresholdSharpened(region, page.secondPass);
        return region.ThresholdGray(Scaled(region.Isodata(), kPlainRegion), kBlackStays);
    }
    if (page.sharpenAllowed) {
        region.SharpenInPlace(SharpeningOf(region.tones));
        return region.ThresholdResult(region.Isodata() + kSharpenedDarkText, kOverwritten);
    }
    const int threshold = DarkTextOrOtsu(region);
    return region.ThresholdGray(threshold < kLowDarkText ? threshold + kLowDarkTextRise : threshold,
                                kOverwritten);
}

Verdict ThresholdTextLine(Region& region, const PageFindings& page) {
    if (page.darkTextHint) return region.ThresholdGray(DarkTextOrOtsu(region), kOverwritten);
    if (page.sharpenAllowed) return ThresholdSharpened(region, page.secondPass);
    return region.ThresholdGray(region.Isodata() + kPlainLine, kBlackStays);
}

// ---- half dark: refined unless it came out mostly dark at first

Verdict ThresholdHalfDarkRegion(Region& region, const PageFindings& page) {
    const Verdict verdict = region.ThresholdGray(region.Isodata(), kBlackStays);
    if (verdict == Verdict::kMostlyDark) return verdict;
    if (region.tones.dark < kHalfDarkToSharpen) {
        region.SharpenInPlace(kSharpenText);
        region.ThresholdResult(RaisedIsodata(region, kSharpenedHalfDark), kBlackStays);
    }
    // With darkTextHint the rule merges a threshold that may not brighten a page that is black all over: that
    // changes nothing.
    if (page.secondPass) region.MergeSmoothed(kSmoothedHalfDark);
    return verdict;
}

Verdict ThresholdHalfDarkLine(Region& region, const PageFindings& page) {
    const Verdict verdict = region.ThresholdGray(region.Isodata(), kBlackStays);
    if (verdict == Verdict::kMostlyDark) return verdict;
    if (page.darkTextHint) {
        region.ThresholdGray(DarkTextOrOtsu(region), kOverwritten);
    } else if (page.sharpenAllowed) {
        if (region.tones.dark < kHalfDarkToSharpen) {
            region.Sharpen(kSharpenText);
            region.ThresholdSharpened(kSharpenText, RaisedIsodata(region, kSharpenedHalfDarkLine),
                                      kBlackStays);
        }
        if (page.secondPass) region.MergeSmoothed(kSmoothedHalfDark);
    }
    return verdict;
}

// ---- dark: mostly dark, or in between all over

Finishing BinarizeDarkRegion(const Region& region) {
    const Verdict verdict = region.ThresholdGray(region.Isodata(), kBlackStays);
    if (verdict == Verdict::kMostlyDark) return {region.FinishOf(verdict)};
    return BinarizeDarkText(region);
}

Verdict ThresholdDarkLine(Region& region, const PageFindings& page) {
    if (page.midToneHint && LineClassifyHistogram(region.Shares()) == HistogramClass::kGray) {
        region.SmoothSharpenedInPlace(kSharpenFull);
        return region.ThresholdResult(Scaled(region.Otsu(), kGrayLine), kBlackStays);
    }
    return region.ThresholdGray(region.DarkTextOtsu().value_or(region.Isodata()), kBlackStays);
}

}  // namespace

Finishing BinarizeRegion(const PageFindings& page, const RulePlanes& planes, const Rect& rect) {
    Region region(kEdgeFamily, planes, rect);
    switch (region.Classify(false)) {
        case ToneClass::kBlank: return {BinarizeBlank(region)};
        case ToneClass::kText: return {region.FinishOf(ThresholdTextRegion(region, page))};
        case ToneClass::kHalfDark: return {region.FinishOf(ThresholdHalfDarkRegion(region, page))};
        case ToneClass::kDark: break;
    }
    return BinarizeDarkRegion(region);
}

Finish LineRule(const PageFindings& page, const RulePlanes& planes, const Rect& rect) {
    Region region(kLineFamily, planes, rect);
    switch (region.Classify(true)) {
        case ToneClass::kBlank: return BinarizeBlank(region);
        case ToneClass::kText: return region.FinishOf(ThresholdTextLine(region, page));
        case ToneClass::kHalfDark: return region.FinishOf(ThresholdHalfDarkLine(region, page));
        case ToneClass::kDark: break;
    }
    return region.FinishOf(ThresholdDarkLine(region, page));
}

Finishing BinarizeDarkText(const Region& region) {
    const std::optional<int> ofText = region.DarkTextOtsu();
    const Verdict verdict = region.ThresholdGray(ofText.value_or(region.Isodata()), kBlackStays);
    return {region.FinishOf(verdict), ofText.has_value()};
}

}  // namespace tavrix
