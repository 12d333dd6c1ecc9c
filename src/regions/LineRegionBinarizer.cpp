// SPDX-License-Identifier: MIT
#include "regions/LineRegionBinarizer.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "components/ComponentExtractor.h"
#include "components/ComponentNoiseFilter.h"
#include "components/ComponentStore.h"
#include "components/OrientedBlockGrouper.h"
#include "image/PixelKernels.h"
#include "regions/EdgeMeasures.h"
#include "regions/RegionPasses.h"
#include "regions/SideBorders.h"

namespace tavrix {
namespace {

constexpr std::uint8_t kWhite = 255;

// Margins painted white, in pixels.
constexpr int kMarginRows = 8;
constexpr int kBorderMargin = 7;  // beyond a dark side border

// Stroke ends of a page.
constexpr int kBusyEnds = 4500, kVeryBusyEnds = 9500, kMediumEnds = 2900;
constexpr int kPlainEdge = 127;  // Sobel magnitude

constexpr double kDarkShare = 0.55;    // of the pixels that are not white, for a dark mean
constexpr double kLightFactor = 1.08;  // light pixels count a little more than dark ones
constexpr int kHighestThreshold = 250;
constexpr int kNoDarkMean = -1;

constexpr int kLineMargin = 10;     // pixels around a line's components
constexpr double kPageShare = 0.8;  // of both sides, from which a line counts as the page

// How FinishLine treats a line.
enum FinishCode { kFillAndMark = 0, kMark = 1, kInvert = kMostlyDark };

struct PrivateStore {
    ComponentStore store{};
    ~PrivateStore() { store::Release(store); }
};

void FillPixels(const PageShape& page, std::uint8_t* plane, std::uint8_t value) {
    PaintRows(page, plane, 0, page.height, value);
}

int Scaled(int threshold, double factor) {
    return static_cast<int>(threshold * factor);
}

// Dark pixels turn white; light ones turn black but for a frame of kLineMargin pixels, which the margin
// around the components has put there.
void InvertLine(const PageShape& page, PageRect rect, std::uint8_t* plane) {
    const int x1 = std::min<int>(rect.x1, page.width - 1), y1 = std::min<int>(rect.y1, page.height - 1);
    const int coreX0 = rect.x0 + kLineMargin + 1, coreX1 = std::min(rect.x1 - kLineMargin - 1, x1);
    const int coreY0 = rect.y0 + kLineMargin + 1, coreY1 = rect.y1 - kLineMargin - 1;
    for (int y = rect.y0; y <= y1; ++y) {
        std::uint8_t* row = plane + page.Offset(y);
        for (int x = rect.x0; x <= x1; ++x) row[x] = row[x] == 0 ? 254 : row[x];
        if (y < coreY0 || y > coreY1) continue;
        for (int x = coreX0; x <= coreX1; ++x) row[x] = row[x] == kWhite ? 1 : row[x];
    }
}

}  // namespace

LineRegionBinarizer::LineRegionBinarizer(DibImage* gray) {
    Attach(gray);
}

void LineRegionBinarizer::PaintMargins() {
    const PageShape page = Page();
    const SideBorders borders = FindSideBorders(page, image->bits);
    if (borders.left != 0) PaintColumns(page, image->bits, 0, borders.left + kBorderMargin, kWhite);
    if (borders.right != 0) {
        const int columns = borders.right + kBorderMargin - 1;
        PaintColumns(page, image->bits, width - columns, columns, kWhite);
    }
    PaintRows(page, image->bits, 0, kMarginRows, kWhite);
    PaintRows(page, image->bits, height - kMarginRows, kMarginRows, kWhite);
}

void LineRegionBinarizer::BuildLinePreMask(std::uint8_t* mask, std::uint8_t* edges, bool& secondPass) {
    const PageShape page = Page();
    ComputeHistogram(1);
    const int level = ContrastLevel(histogram, page.Bytes());
    const EdgeCounts counts = MeasureEdges(page, image->bits, edges);
    EdgeMask(page, edges, SettleEdgeThreshold(counts, page.Bytes(), level), mask);
    ChoosePreMask(CountStrokeEnds(page, mask), edges, mask, secondPass);
}

void LineRegionBinarizer::ChoosePreMask(int strokeEnds, std::uint8_t* edges, std::uint8_t* mask,
                                        bool& secondPass) {
    const PageShape page = Page();
    const std::uint8_t* gray = image->bits;
    HistogramShares shares;
    const int histogramClass = LineClassifyHistogram(histogram, shares);
    secondPass = false;

    if (strokeEnds > kBusyEnds) {
        useAltRegionRule = true;
        if (histogramClass % 2 == 0) {
            secondPass = true;
            SmoothRegion(page, page.Whole(), gray, mask);
            SobelMagnitude(page, mask, edges, page.Whole());
            EdgeMask(page, edges, kPlainEdge, mask);
            return;
        }
        const int threshold = Iso() * (strokeEnds > kVeryBusyEnds ? 7 : 9) / 10;
        if (histogramClass >= 5) {
            EdgeMask(page, edges, threshold, mask);
        } else {
            GrayMask(page, gray, threshold, mask);
        }
        if (shares.high > 0.7) {
            useAltRegionRule = false;
            sharpenAllowed = false;
        }
        return;
    }

    int globalThreshold = -1;
    if (strokeEnds > kMediumEnds) {
        const bool hasDarkMean = CheckedDarkMean(histogram, kDarkShare) > 0;
        darkTextHint = hasDarkMean && histogramClass == 1;
        midToneHint = hasDarkMean && histogramClass == 4;
        secondPass = !hasDarkMean && histogramClass != 1;
        if (midToneHint || (!hasDarkMean && histogramClass == 1)) globalThreshold = Iso();
    } else if (histogramClass == 1) {
        globalThreshold = Otsu();
    }
    if (globalThreshold >= 0) {
        GrayMask(page, gray, globalThreshold, mask);
    } else {
        EdgeMask(page, edges, kPlainEdge, mask);
    }
}

bool LineRegionBinarizer::Binarize() {
    if (!HasPixels()) return false;
    PaintMargins();
    const DibImage result(image), scratch(image);
    if (result.bits == nullptr || scratch.bits == nullptr) return false;
    bool secondPass = false;
    BuildLinePreMask(result.bits, scratch.bits, secondPass);
    if (!RefineByLines(scratch.bits, result.bits, secondPass)) return false;
    return image->PackToOneBit(result);
}

bool LineRegionBinarizer::BinarizeBlock() {
    if (!HasPixels()) return false;
    const PageShape page = Page();
    const DibImage scratch(image), result(image);
    if (scratch.bits == nullptr || result.bits == nullptr) return false;
    FillPixels(page, result.bits, kWhite);
    FinishLine(result.bits, page.Whole(), LineRule(page.Whole(), scratch.bits, result.bits, false));
    return image->PackToOneBit(result);
}

// Turns the pre-mask into the result.
bool LineRegionBinarizer::RefineByLines(std::uint8_t* scratch, std::uint8_t* result, bool secondPass) {
    const PageShape page = Page();
    PrivateStore components;
    {
        DibImage mask;
        if (!mask.Create(width, height, 1) || !store::Create(components.store)) return false;
        const auto packAbove = platform::KernelsOf<PixelKernels>().packAbove;
        for (int y = 0; y < height; ++y) {
            packAbove(result + page.Offset(y), width, 1, mask.Row(y));
        }
        ComponentExtractor(&mask).Run(components.store);
        ComponentNoiseFilter filter(&mask);
        filter.Run(components.store, 2, 2);
        OrientedBlockGrouper(&mask).Run(components.store);
        filter.FilterForBinarization(components.store);
    }
    FillPixels(page, result, kWhite);
    BinarizeLines(scratch, result, components.store, secondPass);
    return true;
}

void LineRegionBinarizer::BinarizeLines(std::uint8_t* scratch, std::uint8_t* result,
                                        const ComponentStore& components, bool secondPass) {
    const PageShape page = Page();
    // Only the rule for mid tones reads scratch beyond the rectangle that it has just filled.
    if (midToneHint) FillPixels(page, scratch, kWhite);
    bool anyLine = false;
    for (const ComponentNode* block = components.firstBlock; block != nullptr; block = block->next) {
        for (const ComponentNode* line = block->firstChild; line != nullptr; line = line->next) {
            anyLine = true;
            // One past the last column and row is allowed; it reads 0 there.
            const PageRect rect{static_cast<std::int16_t>(std::max(line->left - kLineMargin, 0)),
                                static_cast<std::int16_t>(std::max(line->bottom - kLineMargin, 0)),
                                static_cast<std::int16_t>(std::min(line->right + kLineMargin, width)),
                                static_cast<std::int16_t>(std::min(line->top + kLineMargin, height))};
            if (rect.y1 - rect.y0 + 1 >= Scaled(height, kPageShare) &&
                rect.x1 - rect.x0 + 1 >= Scaled(width, kPageShare)) {
                darkTextHint = true;
                secondPass = false;
            }
            const int code = useAltRegionRule ? LineRuleAlt(rect, result, secondPass)
                                              : LineRule(rect, scratch, result, secondPass);
            FinishLine(result, rect, code);
        }
    }
    if (anyLine) return;
    CountTones(page.Whole(), image->bits);
    ThresholdLine(page.Whole(), DarkMean(histogram, kNoDarkMean) + 10, image->bits, result, true);
}

int LineRegionBinarizer::LineClassifyHistogram(const std::uint32_t* histogram, HistogramShares& shares) {
    shares = SharesOf(histogram);
    const double high = shares.high, mid = shares.mid, midHigh = shares.midHigh, low = shares.low;
    if (high <= 0.5) return ClassifyDarkPage(shares);
    if (high > 0.7 && midHigh > 0.1) return 0;
    if (mid > 0.3) return 0;
    if (low <= 0.2) return std::abs(shares.low - shares.midLow) >= 0.02 ? 1 : 2;
    return mid <= 0.06 ? 7 : 0;
}

int LineRegionBinarizer::Classify() const {
    HistogramShares shares;
    return LineClassifyHistogram(histogram, shares);
}

int LineRegionBinarizer::OtsuBelowDarkMean(int otherwise) const {
    const int mean = CheckedDarkMean(histogram, kDarkShare);
    return mean > 0 ? Otsu(mean) : otherwise;
}

void LineRegionBinarizer::CountTones(PageRect rect, const std::uint8_t* plane) {
    RegionHistogram(Page(), rect, plane, histogram);
}

LineRegionBinarizer::Tones LineRegionBinarizer::MeasureLine(PageRect rect) {
    CountTones(rect, image->bits);
    const auto area = static_cast<float>(rect.Area());
    const float dark = static_cast<float>(SumBins(histogram, 0, 99)) / area;
    const float notBright = static_cast<float>(SumBins(histogram, 0, 127)) / area;
    int kind = 3;
    if (dark <= 0.02) {
        kind = 0;
    } else if (dark <= 0.48) {
        if (notBright <= 0.6 && notBright / dark <= 2.0f) kind = 1;
    } else if (dark <= 0.8 && notBright <= 0.8) {
        kind = 2;
    }
    return {dark, notBright, kind};
}

int LineRegionBinarizer::ThresholdLine(PageRect rect, int threshold, const std::uint8_t* source,
                                       std::uint8_t* target, bool force) const {
    return ThresholdRegion(Page(), rect, threshold, source, target, force, kLightFactor);
}

// Keeps of the result's black what is also dark in the smoothed page.
void LineRegionBinarizer::MergeSmoothed(PageRect rect, int above, std::uint8_t* scratch,
                                        std::uint8_t* result) {
    SmoothRegion(Page(), rect, image->bits, scratch);
    CountTones(rect, scratch);
    ThresholdLine(rect, Iso() + above, scratch, scratch, true);
    MergeRegionMasks(Page(), rect, result, scratch);
}

int LineRegionBinarizer::LineRule(PageRect rect, std::uint8_t* scratch, std::uint8_t* result,
                                  bool secondPass) {
    const std::uint8_t* gray = image->bits;
    const Tones tones = MeasureLine(rect);
    const auto sharpened = [&](float factor) {
        SharpenRegion(Page(), rect, gray, scratch, factor);
        CountTones(rect, scratch);
    };

    switch (tones.kind) {
        case 0: {
            const int verdict = ThresholdLine(rect, Otsu(), gray, result, false);
            return verdict == kMostlyDark ? kInvert : kMark;
        }
        case 1: {
            if (darkTextHint) return ThresholdLine(rect, OtsuBelowDarkMean(Otsu()), gray, result, true);
            if (!sharpenAllowed) return ThresholdLine(rect, Iso() - 20, gray, result, false);
            const bool faint = tones.dark < 0.038;
            sharpened(tones.dark > 0.1 ? 10.0f : faint ? 9.6f : 9.8f);
            const int threshold = Iso() + (tones.dark <= 0.1 ? 40 : 30);
            const int verdict =
                ThresholdLine(rect, std::min(threshold, kHighestThreshold), scratch, result, false);
            if (secondPass && !faint) MergeSmoothed(rect, 15, scratch, result);
            return verdict;
        }
        case 2: {
            if (ThresholdLine(rect, Iso(), gray, result, false) == kMostlyDark) return kInvert;
            if (darkTextHint) {
                ThresholdLine(rect, OtsuBelowDarkMean(Otsu()), gray, result, true);
                return kFillAndMark;
            }
            if (!sharpenAllowed) return kFillAndMark;
            if (tones.dark < 0.6) {
                sharpened(9.8f);
                ThresholdLine(rect, std::min(Iso() + 10, kHighestThreshold), scratch, result, false);
            }
            if (secondPass) MergeSmoothed(rect, 10, scratch, result);
            return kFillAndMark;
        }
        default: {
            if (!midToneHint || Classify() != 4) {
                return ThresholdLine(rect, OtsuBelowDarkMean(Iso()), gray, result, false);
            }
            SharpenRegion(Page(), rect, gray, scratch, 10.0f);
            SmoothRegion(Page(), rect, scratch, result);
            CountTones(rect, result);
            return ThresholdLine(rect, Scaled(Otsu(), 0.8), result, result, false);
        }
    }
}

int LineRegionBinarizer::LineRuleAlt(PageRect rect, std::uint8_t* result, bool secondPass) {
    const std::uint8_t* gray = image->bits;
    const Tones tones = MeasureLine(rect);
    // Pages with hardly any tone but white (1) or black (3).
    const auto isPlain = [](int histogramClass) { return histogramClass == 1 || histogramClass == 3; };

    switch (tones.kind) {
        case 0: {
            const int verdict = ThresholdLine(rect, Otsu(), gray, result, false);
            return verdict == kMostlyDark ? kInvert : kMark;
        }
        case 1: {
            if (!secondPass) {
                const bool large = rect.x1 - rect.x0 + 1 > 700 && rect.y1 - rect.y0 + 1 > 500;
                ThresholdLine(rect, large ? Scaled(Iso(), 0.7) : Iso() - 20, gray, result, false);
                return kFillAndMark;
            }
            SmoothRegion(Page(), rect, gray, result);
            CountTones(rect, result);
            const int histogramClass = Classify();
            int threshold = Otsu();
            if (histogramClass == 5) {
                threshold = DarkMean(histogram, kNoDarkMean);
            } else {
                threshold = isPlain(histogramClass) ? Scaled(threshold, 0.85) : Otsu(threshold);
            }
            ThresholdLine(rect, threshold, result, result, true);
            return kFillAndMark;
        }
        case 2: {
            if (ThresholdLine(rect, Iso(), gray, result, false) == kMostlyDark) return kInvert;
            if (secondPass) {
                SmoothRegion(Page(), rect, gray, result);
                CountTones(rect, result);
                ThresholdLine(rect, Iso() + 10, result, result, true);
            }
            return kFillAndMark;
        }
        default: {
            const int histogramClass = Classify();
            int threshold = 0;
            if (histogramClass == 4) {
                threshold = Otsu(DarkMean(histogram, kNoDarkMean));
            } else if (histogramClass == 5) {
                threshold = DarkMean(histogram, kNoDarkMean);
            } else {
                threshold = isPlain(histogramClass) ? Scaled(Otsu(), 0.85) : Otsu();
            }
            return ThresholdLine(rect, threshold, gray, result, false);
        }
    }
}

void LineRegionBinarizer::FinishLine(std::uint8_t* result, PageRect rect, int code) const {
    switch (code) {
        case kFillAndMark: FillAndMarkRegion(Page(), rect, result); break;
        case kMark: MarkRegion(Page(), rect, result); break;
        case kInvert: InvertLine(Page(), rect, result); break;
        default: break;
    }
}

}  // namespace tavrix
