// SPDX-License-Identifier: MIT
#include "regions/Region.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "binarize/Binarizer.h"
#include "binarize/Histogram.h"
#include "image/RowRing.h"
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
    : family(ruleFamily),
      gray(planes.gray),
      result(planes.result),
      sharpened(planes.sharpened),
      rect(rectangle),
      inside(Intersection(rectangle, planes.gray.Reach())) {
    RegionHistogram(gray, rect, histogram.data());
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

Verdict Region::VerdictAt(int threshold) const {
    const int limit = std::clamp(threshold, 0, kGrayLevels);
    const auto dark = static_cast<std::int64_t>(SumBins(histogram.data(), 0, limit - 1));
    return VerdictOf(rect.Area() - dark, dark, family.lightFactor);
}

Verdict Region::ThresholdGray(int threshold, Earlier earlier) const {
    return ThresholdRegion(gray, result, rect, threshold, earlier, family.lightFactor);
}

Verdict Region::ThresholdResult(int threshold, Earlier earlier) const {
    return ThresholdRegion(result, result, rect, threshold, earlier, family.lightFactor);
}

template <class Filter>
void Region::Derive(const ConstPlane& source, const Filter& filter, const Plane& target) {
    histogram.fill(0);
    histogram[0] = static_cast<std::uint32_t>(AreaOutside(rect, inside));
    if (inside.IsEmpty()) return;
    std::vector<std::uint8_t> buffer(inside.Width());
    PixelCounter counter(inside.Area());
    for (int y = inside.y0; y <= inside.y1; ++y) {
        std::uint8_t* row = target.pixels != nullptr ? target.Row(y) + inside.x0 : buffer.data();
        filter(y, RowsAround(source, y), row);
        counter.Add(row, inside.Width());
    }
    counter.AddTo(histogram.data());
}

void Region::Sharpen(float factor) {
    Derive(gray, Sharpening(gray, inside, factor), sharpened);
}

Verdict Region::ThresholdSharpened(float factor, int threshold, Earlier earlier) const {
    Thresholding thresholding(threshold, earlier);
    thresholding.AddOutside(AreaOutside(rect, inside));
    const Sharpening sharpening(gray, inside, factor);
    std::vector<std::uint8_t> row(inside.IsEmpty() ? 0 : inside.Width());
    for (int y = inside.y0; y <= inside.y1 && !row.empty(); ++y) {
        sharpening(y, RowsAround(gray, y), row.data());
        thresholding.Add(row.data(), inside.Width(), result.Row(y) + inside.x0);
    }
    return thresholding.Result(family.lightFactor);
}

void Region::MergeSmoothed(int above) {
    const Smoothing smoothing(gray, inside);
    Derive(gray, smoothing, {});
    Thresholding thresholding(Isodata() + above, Earlier::kOverwritten);
    const auto mergeRow = platform::KernelsOf<RegionKernels>().mergeRow;
    std::vector<std::uint8_t> row(inside.IsEmpty() ? 0 : inside.Width());
    for (int y = inside.y0; y <= inside.y1 && !row.empty(); ++y) {
        smoothing(y, RowsAround(gray, y), row.data());
        thresholding.Add(row.data(), inside.Width(), row.data());
        mergeRow(result.Row(y) + inside.x0, row.data(), inside.Width());
    }
}

void Region::SmoothInPlace() {
    Derive(gray, Smoothing(gray, inside), result);
}

void Region::SharpenInPlace(float factor) {
    Derive(gray, Sharpening(gray, inside, factor), result);
}

void Region::SmoothSharpenedInPlace(float factor) {
    Sharpen(factor);
    Derive(sharpened, Smoothing(sharpened, inside), result);
}

void Region::SharpenResult(float factor) {
    const Sharpening sharpening(gray, inside, factor);
    // Rows are overwritten while the next one needs them.
    RowRing copies(3, static_cast<std::size_t>(result.rowBytes));
    const auto copy = [&](int y) { std::memcpy(copies.Row(y), result.Row(y), result.rowBytes); };
    PixelCounter counter(inside.Area());
    copy(0);
    for (int y = 0; y < result.height; ++y) {
        if (y + 1 < result.height) copy(y + 1);
        sharpening(y, {copies.Row(y - 1), copies.Row(y), copies.Row(y + 1)}, result.Row(y));
        counter.Add(result.Row(y), inside.Width());
    }
    histogram.fill(0);
    counter.AddTo(histogram.data());
}

Finish BinarizeBlank(const Region& region) {
    return region.FinishOf(region.ThresholdGray(region.Otsu(), Earlier::kBlackStays), Finish::kMark);
}

}  // namespace tavrix
