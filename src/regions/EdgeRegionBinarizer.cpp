// SPDX-License-Identifier: MIT
#include "regions/EdgeRegionBinarizer.h"

#include <new>

#include "platform/OutputFile.h"
#include "regions/EdgeMeasures.h"
#include "regions/RegionPasses.h"
#include "regions/SideBorders.h"

namespace tavrix {
namespace {

constexpr std::uint8_t kMarginGray = 200;
constexpr int kEndRows = 8;              // painted at each end of the page
constexpr int kPlainMargin = 15;         // columns painted where no border was found
constexpr int kBeyondBorder = 13;        // columns painted beyond a border
constexpr int kStandardEdge = 127;       // edge strength of a smoothed page
constexpr double kTextDarkShare = 0.47;  // of the counted pixels, for text on a bright page

// Counts of stroke ends.
constexpr int kBusyPage = 4500, kVeryBusyPage = 9500, kMediumPage = 2900, kFullMediumPage = 3700;
constexpr int kFewEnds = 1800;  // at which an edge mask is clean enough

}  // namespace

EdgeRegionBinarizer::EdgeRegionBinarizer(DibImage* page) {
    Attach(page);
}

bool EdgeRegionBinarizer::Binarize() {
    if (!HasPixels()) return false;
    src = image->bits;
    bool smoothed = false;
    const auto result = std::make_unique_for_overwrite<std::uint8_t[]>(Page().Bytes());
    const auto scratch = std::make_unique<std::uint8_t[]>(Page().Bytes());
    BuildPreMask(result.get(), scratch.get(), &smoothed);
    return RefineByRegions(result.get(), scratch.get(), smoothed) && image->PackToOneBit(result.get());
}

bool EdgeRegionBinarizer::BinarizeBlock() {
    return BinarizeWhole(false, [this](PageRect rect, std::uint8_t* scratch, std::uint8_t* result) {
        return BinarizeRegion(rect, scratch, result, false);
    });
}

bool EdgeRegionBinarizer::BinarizeSharp() {
    return BinarizeWhole(true, [this](PageRect rect, std::uint8_t* scratch, std::uint8_t* result) {
        return BinarizeRegionSharp(rect, scratch, result);
    });
}

template <class Rule>
bool EdgeRegionBinarizer::BinarizeWhole(bool withEdges, const Rule& rule) {
    if (!HasPixels()) return false;
    src = image->bits;
    const PageShape page = Page();
    const std::uint8_t scratchFill = withEdges ? 255 : 0;
    std::vector<std::uint8_t> scratch(page.Bytes(), scratchFill), result(page.Bytes(), 255);
    const int code = rule(page.Whole(), scratch.data(), result.data());
    FinishRegions(result.data(), withEdges ? scratch.data() : nullptr,
                  {{0, width - 1, height - 1, 0, static_cast<std::uint8_t>(code)}});
    return image->PackToOneBit(result.data());
}

void EdgeRegionBinarizer::BuildPreMask(std::uint8_t* preMask, std::uint8_t* edges, bool* smoothed) {
    const PageShape page = Page();
    ComputeHistogram(1);
    const int level = ContrastLevel(histogram, page.Bytes());
    const EdgeCounts counts = MeasureEdges(page, src, edges);
    EdgeMask(page, edges, SettleEdgeThreshold(counts, page.Bytes(), level), preMask);
    strokeEndCount = CountStrokeEnds(page, preMask);
    PaintPageMargins();

    *smoothed = false;
    if (strokeEndCount > kBusyPage) {
        ChooseBusyMask(preMask, edges, smoothed);
    } else if (strokeEndCount > kMediumPage) {
        ChooseMediumMask(preMask, edges, smoothed);
    } else {
        ChooseQuietMask(preMask);
    }
}

void EdgeRegionBinarizer::ThresholdGlobally(std::uint8_t* preMask, int threshold) {
    GrayMask(Page(), src, threshold, preMask);
    globalThresholdUsed = true;
}

// The mask's padding keeps its background, which the edges then see.
void EdgeRegionBinarizer::SmoothForEdges(std::uint8_t* preMask, std::uint8_t* edges) {
    const PageShape page = Page();
    SmoothRegion(page, page.Whole(), src, preMask);
    SobelMagnitude(page, preMask, edges, page.Whole());
}

void EdgeRegionBinarizer::ChooseBusyMask(std::uint8_t* preMask, std::uint8_t* edges, bool* smoothed) {
    constexpr double kBrightPage = 0.7;
    const PageShape page = Page();
    useAltRegionRule = true;
    HistogramShares shares;
    const int pageClass = ClassifyHistogram(histogram, &shares);
    const int isodata = IsodataThreshold(histogram);
    const int threshold = isodata * (strokeEndCount > kVeryBusyPage ? 6 : 9) / 10;
    if (pageClass == 5 || pageClass == 7) {
        EdgeMask(page, edges, threshold, preMask);
        if (CountStrokeEnds(page, preMask) <= kFewEnds) {
            return;
        }
    } else if (pageClass % 2 != 0) {
    } else {
        if (shares.low < 0.1) {
            useAltRegionRule = false;
        }
        SmoothForEdges(preMask, edges);
        *smoothed = true;
        EdgeMask(page, edges, threshold, preMask);
        if (CountStrokeEnds(page, preMask) <= kFewEnds) {
            EdgeMask(page, edges, kStandardEdge, preMask);
            return;
        }
    }
    ThresholdGlobally(preMask, threshold);
    if (shares.high > kBrightPage) {
        useAltRegionRule = false;
        sharpenAllowed = false;
    }
}

void EdgeRegionBinarizer::ChooseMediumMask(std::uint8_t* preMask, std::uint8_t* edges, bool* smoothed) {
    constexpr double kTonedPage = 0.12;
    constexpr int kAboveIsodata = 10;
    ComputeHistogram(1);  // of the painted page
    HistogramShares shares;
    const int pageClass = ClassifyHistogram(histogram, &shares);
    if (DarkMeanCheck(histogram, true) > 0) {
        if (pageClass == 1) {
            sharpenAllowed = false;
            darkTextHint = true;
        } else {
        }
    } else if (pageClass == 1) {
        ThresholdGlobally(preMask, IsodataThreshold(histogram));
    } else if (pageClass != 0) {
        *smoothed = true;
    } else if (strokeEndCount > kFullMediumPage) {
        SmoothForEdges(preMask, edges);
        *smoothed = true;
        EdgeMask(Page(), edges, kStandardEdge, preMask);
    } else if (shares.mid > kTonedPage) {
        ThresholdGlobally(preMask, IsodataThreshold(histogram) + kAboveIsodata);
    } else {
    }
}

void EdgeRegionBinarizer::ChooseQuietMask(std::uint8_t* preMask) {
    HistogramShares shares;
    const int pageClass = ClassifyHistogram(histogram, &shares);
    const bool darkBand = pageClass == 1 && shares.low > 0.14 && shares.low < 0.15;
    const bool mixed = pageClass == 0 && shares.low > 0.1 && shares.mid > 0.1;
    if (darkBand || mixed) {
        ThresholdGlobally(preMask, IsodataThreshold(histogram));
    } else {
    }
}

void EdgeRegionBinarizer::PaintPageMargins() {
    const PageShape page = Page();
    const auto margin = [](int border) { return border != 0 ? border + kBeyondBorder : kPlainMargin; };
    const SideBorders borders = FindSideBorders(page, src);
    const int rightColumns = margin(borders.right) - 1;
    PaintColumns(page, src, 0, margin(borders.left), kMarginGray);
    PaintColumns(page, src, width - rightColumns, rightColumns, kMarginGray);
    PaintRows(page, src, 0, kEndRows, kMarginGray);
    PaintRows(page, src, height - kEndRows, kEndRows, kMarginGray);
    image->WriteBmp(platform::kDebugDumpPath);
}

int EdgeRegionBinarizer::ClassifyHistogram(const std::uint32_t* bins, HistogramShares* shares) const {
    *shares = SharesOf(bins);
    const double high = shares->high, mid = shares->mid, midHigh = shares->midHigh, low = shares->low;
    if (!(high > 0.5)) return ClassifyDarkPage(*shares);
    if (high > 0.7 && midHigh > 0.1) return 0;
    if (mid > 0.3) return 0;
    if (midHigh > 0.19) return 0;
    if (low < 0.1 && high > 0.8) return 0;
    if (low <= 0.2) {
        const float difference = shares->low - shares->midLow;
        return (difference < 0 ? -difference : difference) >= 0.02 ? 1 : 2;
    }
    const int fewTones = mid <= 0.06 ? 1 : 0;
    if (strokeEndCount > 4500) return fewTones != 0 ? 7 : 0;
    return low > (strokeEndCount > 2800 ? 0.3 : 0.25) ? 7 : fewTones;
}

int EdgeRegionBinarizer::DarkMeanCheck(const std::uint32_t* bins, bool check) {
    return check ? CheckedDarkMean(bins, kTextDarkShare) : DarkMean(bins, 0);
}

int EdgeRegionBinarizer::CountStrokeEndsOf(const std::uint8_t* buffer) try {
    ComputeHistogram(1);
    return CountStrokeEndsOfEdges(Page(), buffer, ContrastLevel(histogram, Page().Bytes()));
} catch (const std::bad_alloc&) {
    return -1;
}

}  // namespace tavrix
