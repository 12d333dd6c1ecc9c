// SPDX-License-Identifier: MIT
#include "regions/Region.h"

#include "binarize/Binarizer.h"
#include "regions/HistogramMeasures.h"

namespace tavrix {
namespace {

constexpr int kLastDarkBin = 99, kLastBeforeBright = 127;

// Classes of tones, by shares of the region.
constexpr double kBlankDark = 0.02, kTextDark = 0.48, kHalfDark = 0.8;  // dark, at most
constexpr double kTextNotBright = 0.6, kHalfNotBright = 0.8;            // not bright, at most
constexpr double kGrayGround = 2.0;  // times as much not bright as dark, exceeded on gray ground

}  // namespace

Region::Region(const RuleFamily& ruleFamily, const RulePlanes& planes, const Rect& rectangle)
    : family(ruleFamily), gray(planes.gray), scratch(planes.scratch), result(planes.result), rect(rectangle) {
    Count(gray);
    const auto share = [&](int lastBin) {
        return static_cast<float>(SumBins(histogram.data(), 0, lastBin)) / static_cast<float>(rect.Area());
    };
    tones = {share(kLastDarkBin), share(kLastBeforeBright)};
}

ToneClass Region::Classify(bool grayIsDark) const {
    const double dark = tones.dark, notBright = tones.notBright;
    if (dark <= kBlankDark) return ToneClass::kBlank;
    if (dark <= kTextDark) {
        const bool isText = notBright <= kTextNotBright && !(grayIsDark && notBright / dark > kGrayGround);
        return isText ? ToneClass::kText : ToneClass::kDark;
    }
    return dark <= kHalfDark && notBright <= kHalfNotBright ? ToneClass::kHalfDark : ToneClass::kDark;
}

int Region::Isodata() const {
    return Binarizer::IsodataThreshold(histogram.data());
}

int Region::Otsu(int end) const {
    return Binarizer::OtsuThreshold(histogram.data(), 0, end);
}

int Region::DarkMean() const {
    return tavrix::DarkMean(histogram.data(), family.noDarkMean);
}

std::optional<int> Region::DarkTextOtsu() const {
    const std::optional<int> mean = DarkTextMean(histogram.data(), family.darkTextShare);
    return mean ? std::optional(Otsu(*mean)) : std::nullopt;
}

Verdict Region::Threshold(const ConstPlane& source, const Plane& target, int threshold,
                          Earlier earlier) const {
    return ThresholdRegion(source, target, rect, threshold, earlier, family.lightFactor);
}

void Region::Smooth(const ConstPlane& source, const Plane& target) {
    SmoothRegion(source, target, rect);
    Count(target);
}

void Region::Sharpen(const ConstPlane& source, const Plane& target, float factor) {
    SharpenRegion(source, target, rect, factor);
    Count(target);
}

void Region::MergeSmoothed(int above) {
    Smooth(gray, scratch);
    Threshold(scratch, scratch, Isodata() + above, Earlier::kOverwritten);
    MergeRegionMasks(result, scratch, rect);
}

Finish BinarizeBlank(const Region& region) {
    return region.FinishOf(region.ThresholdGray(region.Otsu(), Earlier::kBlackStays), Finish::kMark);
}

}  // namespace tavrix
