// SPDX-License-Identifier: MIT
#include "regions/PreMask.h"

#include <array>

#include "binarize/Binarizer.h"
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

void ThresholdGlobally(const MeasuredPage& measured, int threshold, PreMask& mask) {
    mask.foreground = Mask::UpTo(measured.gray, threshold);
    mask.page.globalThresholdUsed = true;
}

void SmoothForEdges(const MeasuredPage& measured, PreMask& mask) {
    MeasureSmoothedEdges(measured.gray, measured.edges);
    mask.page.secondPass = true;
}

// A global threshold on a very bright busy page finds its text: no need for the alternative rule.
void CheckBrightPage(const HistogramShares& shares, PageFindings& page) {
    if (!(shares.high > kVeryBright)) return;
    page.useAltRegionRule = false;
    page.sharpenAllowed = false;
}

// ---- the edge-guided method

void ChooseBusyMask(const MeasuredPage& measured, PreMask& mask) {
    const HistogramShares shares = SharesOf(measured.histogram);
    const HistogramClass kind = ClassifyHistogram(shares, measured.strokes.ends);
    const bool veryBusy = measured.strokes.ends > kVeryBusyEnds;
    const int threshold =
        TenthsOf(Binarizer::IsodataThreshold(measured.histogram), veryBusy ? kVeryBusyTenths : kBusyTenths);
    const Mask edges = Mask::From(measured.edges, threshold);
    mask.page.useAltRegionRule = true;
    if (HasManyGrays(kind)) {
        if (shares.low < kHardlyDark) mask.page.useAltRegionRule = false;
        SmoothForEdges(measured, mask);
        if (CountStrokeEnds(edges) <= kCleanEnds) {
            mask.foreground = Mask::From(measured.edges, kPlainEdge);
            return;
        }
    } else if (!IsTwoToned(kind) && CountStrokeEnds(edges) <= kCleanEnds) {
        mask.foreground = edges;
        return;
    }
    ThresholdGlobally(measured, threshold, mask);
    CheckBrightPage(shares, mask.page);
}

void ChooseMediumMask(const MeasuredPage& measured, PreMask& mask) {
    PageFindings& page = mask.page;
    std::array<std::uint32_t, 256> histogram;  // of the painted page
    RegionHistogram(measured.gray, measured.gray.Whole(), histogram.data());
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
        ThresholdGlobally(measured, isodata, mask);
    } else if (kind != HistogramClass::kBrightTinted) {
        page.secondPass = true;
    } else if (page.strokeEndCount > kManyMediumEnds) {
        SmoothForEdges(measured, mask);
        mask.foreground = Mask::From(measured.edges, kPlainEdge);
    } else if (shares.mid > kMediumGrays) {
        ThresholdGlobally(measured, isodata + kAboveIsodata, mask);
    }
}

void ChooseQuietMask(const MeasuredPage& measured, PreMask& mask) {
    const HistogramShares shares = SharesOf(measured.histogram);
    const HistogramClass kind = ClassifyHistogram(shares, measured.strokes.ends);
    const bool darkBand =
        kind == HistogramClass::kDarkOnBright && shares.low > kDarkBand && shares.low < kDarkBandEnd;
    const bool mixed =
        kind == HistogramClass::kBrightTinted && shares.low > kQuietDark && shares.mid > kQuietGrays;
    if (darkBand || mixed) {
        ThresholdGlobally(measured, Binarizer::IsodataThreshold(measured.histogram), mask);
    }
}

// ---- the line method

// The gray page up to a threshold for print, else its edges from another one on.
Mask PrintOrEdges(const MeasuredPage& measured, bool isPrint, int threshold, int edge) {
    return isPrint ? Mask::UpTo(measured.gray, threshold) : Mask::From(measured.edges, edge);
}

void ChooseBusyLineMask(const MeasuredPage& measured, PreMask& mask) {
    const HistogramShares shares = SharesOf(measured.histogram);
    const HistogramClass kind = LineClassifyHistogram(shares);
    mask.page.useAltRegionRule = true;
    if (HasManyGrays(kind)) {
        SmoothForEdges(measured, mask);
        mask.foreground = Mask::From(measured.edges, kPlainEdge);
        return;
    }
    const bool veryBusy = measured.strokes.ends > kVeryBusyEnds;
    const int threshold = TenthsOf(Binarizer::IsodataThreshold(measured.histogram),
                                   veryBusy ? kVeryBusyLineTenths : kBusyTenths);
    mask.foreground = PrintOrEdges(measured, IsTwoToned(kind), threshold, threshold);
    CheckBrightPage(shares, mask.page);
}

void ChooseMediumLineMask(const MeasuredPage& measured, PreMask& mask) {
    PageFindings& page = mask.page;
    const HistogramClass kind = LineClassifyHistogram(SharesOf(measured.histogram));
    const bool hasDarkText = DarkTextMean(measured.histogram, kLineFamily.darkTextShare).has_value();
    const bool isPrint = kind == HistogramClass::kDarkOnBright;
    page.darkTextHint = hasDarkText && isPrint;
    page.midToneHint = hasDarkText && kind == HistogramClass::kGray;
    page.secondPass = !hasDarkText && !isPrint;
    mask.foreground = PrintOrEdges(measured, page.midToneHint || (!hasDarkText && isPrint),
                                   Binarizer::IsodataThreshold(measured.histogram), kPlainEdge);
}

void ChooseQuietLineMask(const MeasuredPage& measured, PreMask& mask) {
    const bool isPrint = LineClassifyHistogram(SharesOf(measured.histogram)) == HistogramClass::kDarkOnBright;
    mask.foreground =
        PrintOrEdges(measured, isPrint, Binarizer::OtsuThreshold(measured.histogram, 0, 256), kPlainEdge);
}

}  // namespace

PreMask ChoosePreMask(const MeasuredPage& measured) {
    const int ends = measured.strokes.ends;
    PreMask mask{{.strokeEndCount = ends}, measured.strokes.mask};
    if (ends > kBusyEnds) {
        ChooseBusyMask(measured, mask);
    } else if (ends > kMediumEnds) {
        ChooseMediumMask(measured, mask);
    } else {
        ChooseQuietMask(measured, mask);
    }
    return mask;
}

PreMask ChooseLinePreMask(const MeasuredPage& measured) {
    const int ends = measured.strokes.ends;
    PreMask mask{{.strokeEndCount = ends}, measured.strokes.mask};
    if (ends > kBusyEnds) {
        ChooseBusyLineMask(measured, mask);
    } else if (ends > kMediumEnds) {
        ChooseMediumLineMask(measured, mask);
    } else {
        ChooseQuietLineMask(measured, mask);
    }
    return mask;
}

}  // namespace tavrix
