// SPDX-License-Identifier: MIT
#include "regions/PreMask.h"

#include <array>

#include "binarize/Binarizer.h"
#include "regions/EdgeMeasures.h"
#include "regions/HistogramClass.h"
#include "regions/HistogramMeasures.h"
#include "regions/Region.h"
#include "regions/RegionPasses.h"

namespace tavrix {
namespace {

// Stroke ends of a page, exceeded.
constexpr int kBusyEnds = 4500, kVeryBusyEnds = 9500, kMediumEnds = 2900, kManyMediumEnds = 3700;
constexpr int kCleanEnds = 1800;  // of an edge mask that is clean enough, at most

constexpr int kPlainEdge = 127;  // Sobel magnitude

// Tenths of the isodata threshold that a busy page gets.
constexpr int kBusyTenths = 9, kVeryBusyTenths = 6, kVeryBusyLineTenths = 7;
constexpr int kAboveIsodata = 10;  // levels, of a medium page with grays

// Shares of the pixels.
constexpr double kVeryBright = 0.7;                      // from which a busy page is not sharpened
constexpr double kHardlyDark = 0.1;                      // below which a busy page has the standard rule
constexpr double kMediumGrays = 0.12;                    // from which a medium page has a gray threshold
constexpr double kQuietDark = 0.1, kQuietGrays = 0.1;    // and a quiet one
constexpr double kDarkBand = 0.14, kDarkBandEnd = 0.15;  // of dark in a quiet page, likewise

int TenthsOf(int threshold, int tenths) {
    return threshold * tenths / 10;
}

void ThresholdGlobally(const PreMaskPlanes& planes, int threshold, PageFindings& page) {
    GrayMask(planes.gray, threshold, planes.mask);
    page.globalThresholdUsed = true;
}

// Measures the edges of the smoothed page. The padding of the mask keeps what it was, which the edges see.
void SmoothForEdges(const PreMaskPlanes& planes, PageFindings& page) {
    SmoothRegion(planes.gray, planes.mask, planes.gray.Whole());
    SobelMagnitude(planes.mask, planes.edges, planes.gray.Whole());
    page.secondPass = true;
}

// A global threshold on a very bright busy page finds its text: no need for the alternative rule.
void CheckBrightPage(const HistogramShares& shares, PageFindings& page) {
    if (!(shares.high > kVeryBright)) return;
    page.useAltRegionRule = false;
    page.sharpenAllowed = false;
}

// ---- the edge-guided method

void ChooseBusyMask(const PreMaskPlanes& planes, const std::uint32_t* histogram, PageFindings& page) {
    const HistogramShares shares = SharesOf(histogram);
    const HistogramClass kind = ClassifyHistogram(shares, page.strokeEndCount);
    const bool veryBusy = page.strokeEndCount > kVeryBusyEnds;
    const int threshold =
        TenthsOf(Binarizer::IsodataThreshold(histogram), veryBusy ? kVeryBusyTenths : kBusyTenths);
    page.useAltRegionRule = true;
    if (HasManyGrays(kind)) {
        if (shares.low < kHardlyDark) page.useAltRegionRule = false;
        SmoothForEdges(planes, page);
        EdgeMask(planes.edges, threshold, planes.mask);
        if (CountStrokeEnds(planes.mask) <= kCleanEnds) {
            EdgeMask(planes.edges, kPlainEdge, planes.mask);
            return;
        }
    } else if (!IsTwoToned(kind)) {
        EdgeMask(planes.edges, threshold, planes.mask);
        if (CountStrokeEnds(planes.mask) <= kCleanEnds) return;
    }
    ThresholdGlobally(planes, threshold, page);
    CheckBrightPage(shares, page);
}

void ChooseMediumMask(const PreMaskPlanes& planes, PageFindings& page) {
    std::array<std::uint32_t, 256> histogram;  // of the painted page
    RegionHistogram(planes.gray, planes.gray.Whole(), histogram.data());
    const HistogramShares shares = SharesOf(histogram.data());
    const HistogramClass kind = ClassifyHistogram(shares, page.strokeEndCount);
    const bool hasDarkText = DarkTextMean(histogram.data(), kEdgeFamily.darkTextShare).has_value();
    if (hasDarkText && kind == HistogramClass::kDarkOnBright) {
        page.sharpenAllowed = false;
        page.darkTextHint = true;
    }
    if (hasDarkText) return;

    const int isodata = Binarizer::IsodataThreshold(histogram.data());
    if (kind == HistogramClass::kDarkOnBright) {
        ThresholdGlobally(planes, isodata, page);
    } else if (kind != HistogramClass::kBrightTinted) {
        page.secondPass = true;
    } else if (page.strokeEndCount > kManyMediumEnds) {
        SmoothForEdges(planes, page);
        EdgeMask(planes.edges, kPlainEdge, planes.mask);
    } else if (shares.mid > kMediumGrays) {
        ThresholdGlobally(planes, isodata + kAboveIsodata, page);
    }
}

void ChooseQuietMask(const PreMaskPlanes& planes, const std::uint32_t* histogram, PageFindings& page) {
    const HistogramShares shares = SharesOf(histogram);
    const HistogramClass kind = ClassifyHistogram(shares, page.strokeEndCount);
    const bool darkBand =
        kind == HistogramClass::kDarkOnBright && shares.low > kDarkBand && shares.low < kDarkBandEnd;
    const bool mixed =
        kind == HistogramClass::kBrightTinted && shares.low > kQuietDark && shares.mid > kQuietGrays;
    if (darkBand || mixed) ThresholdGlobally(planes, Binarizer::IsodataThreshold(histogram), page);
}

// ---- the line method

void ChooseBusyLineMask(const PreMaskPlanes& planes, const std::uint32_t* histogram, PageFindings& page) {
    const HistogramShares shares = SharesOf(histogram);
    const HistogramClass kind = LineClassifyHistogram(shares);
    page.useAltRegionRule = true;
    if (HasManyGrays(kind)) {
        SmoothForEdges(planes, page);
        EdgeMask(planes.edges, kPlainEdge, planes.mask);
        return;
    }
    const bool veryBusy = page.strokeEndCount > kVeryBusyEnds;
    const int threshold =
        TenthsOf(Binarizer::IsodataThreshold(histogram), veryBusy ? kVeryBusyLineTenths : kBusyTenths);
    if (IsTwoToned(kind)) {
        GrayMask(planes.gray, threshold, planes.mask);
    } else {
        EdgeMask(planes.edges, threshold, planes.mask);
    }
    CheckBrightPage(shares, page);
}

void ChooseMediumLineMask(const PreMaskPlanes& planes, const std::uint32_t* histogram, PageFindings& page) {
    const HistogramClass kind = LineClassifyHistogram(SharesOf(histogram));
    const bool hasDarkText = DarkTextMean(histogram, kLineFamily.darkTextShare).has_value();
    const bool isPrint = kind == HistogramClass::kDarkOnBright;
    page.darkTextHint = hasDarkText && isPrint;
    page.midToneHint = hasDarkText && kind == HistogramClass::kGray;
    page.secondPass = !hasDarkText && !isPrint;
    if (page.midToneHint || (!hasDarkText && isPrint)) {
        GrayMask(planes.gray, Binarizer::IsodataThreshold(histogram), planes.mask);
    } else {
        EdgeMask(planes.edges, kPlainEdge, planes.mask);
    }
}

void ChooseQuietLineMask(const PreMaskPlanes& planes, const std::uint32_t* histogram) {
    if (LineClassifyHistogram(SharesOf(histogram)) == HistogramClass::kDarkOnBright) {
        GrayMask(planes.gray, Binarizer::OtsuThreshold(histogram, 0, 256), planes.mask);
    } else {
        EdgeMask(planes.edges, kPlainEdge, planes.mask);
    }
}

}  // namespace

PageFindings ChoosePreMask(const PreMaskPlanes& planes, const std::uint32_t* histogram, int strokeEndCount) {
    PageFindings page{.strokeEndCount = strokeEndCount};
    if (strokeEndCount > kBusyEnds) {
        ChooseBusyMask(planes, histogram, page);
    } else if (strokeEndCount > kMediumEnds) {
        ChooseMediumMask(planes, page);
    } else {
        ChooseQuietMask(planes, histogram, page);
    }
    return page;
}

PageFindings ChooseLinePreMask(const PreMaskPlanes& planes, const std::uint32_t* histogram,
                               int strokeEndCount) {
    PageFindings page{.strokeEndCount = strokeEndCount};
    if (strokeEndCount > kBusyEnds) {
        ChooseBusyLineMask(planes, histogram, page);
    } else if (strokeEndCount > kMediumEnds) {
        ChooseMediumLineMask(planes, histogram, page);
    } else {
        ChooseQuietLineMask(planes, histogram);
    }
    return page;
}

}  // namespace tavrix
