// SPDX-License-Identifier: MIT
#include "regions/LineRegionBinarizer.h"

#include <algorithm>

#include "components/ComponentExtractor.h"
#include "components/ComponentNoiseFilter.h"
#include "components/ComponentTree.h"
#include "components/OrientedBlockGrouper.h"
#include "components/PrivateStore.h"
#include "image/PixelKernels.h"
#include "regions/AltRules.h"
#include "regions/EdgeMeasures.h"
#include "regions/PreMask.h"
#include "regions/SideBorders.h"
#include "regions/StandardRules.h"

namespace tavrix {
namespace {

constexpr std::uint8_t kWhite = 255;
constexpr int kBeyondBorder = 7;        // columns painted beyond a dark side border
constexpr int kLineMargin = 10;         // pixels around a line's components
constexpr double kPageShare = 0.8;      // of both sides, from which a line counts as the page
constexpr int kAboveDarkMean = 10;      // levels, of the threshold of a page without lines
constexpr std::uint16_t kSmallest = 2;  // side of the components from which the noise filter starts

}  // namespace

LineRegionBinarizer::LineRegionBinarizer(DibImage* page) {
    if (Attach(page)) gray = PlaneOfPixels(*page);
}

bool LineRegionBinarizer::Binarize() {
    if (!HasPixels()) return false;
    PaintPageMargins();
    DibImage result(image), scratch(image);
    if (result.bits == nullptr || scratch.bits == nullptr) return false;
    const RulePlanes planes{gray, gray.Over(scratch.bits), gray.Over(result.bits)};
    const PageFindings page = BuildLinePreMask(planes.result, planes.scratch);
    return RefineByLines(page, planes) && image->PackToOneBit(result);
}

bool LineRegionBinarizer::BinarizeBlock() {
    if (!HasPixels()) return false;
    DibImage scratch(image), result(image);
    if (scratch.bits == nullptr || result.bits == nullptr) return false;
    const RulePlanes planes{gray, gray.Over(scratch.bits), gray.Over(result.bits)};
    FillPixels(planes.result, kWhite);
    FinishRegion(planes.result, gray.Whole(), LineRule(PageFindings{}, planes, gray.Whole()));
    return image->PackToOneBit(result);
}

void LineRegionBinarizer::PaintPageMargins() {
    const auto margin = [](int border) { return border != 0 ? border + kBeyondBorder : 0; };
    const SideBorders borders = FindSideBorders(gray);
    PaintMargins(gray, margin(borders.left), margin(borders.right), kWhite);
}

PageFindings LineRegionBinarizer::BuildLinePreMask(const Plane& preMask, const Plane& edges) {
    ComputeHistogram(1);
    const int strokeEndCount = MaskStrokes(histogram, gray, edges, preMask);
    return ChooseLinePreMask({gray, edges, preMask}, histogram, strokeEndCount);
}

bool LineRegionBinarizer::RefineByLines(const PageFindings& page, const RulePlanes& planes) {
    PrivateStore components;
    {
        DibImage mask;
        if (!mask.Create(width, height, 1) || !components.IsReady()) return false;
        const auto packAbove = platform::KernelsOf<PixelKernels>().packAbove;
        for (int y = 0; y < height; ++y) packAbove(planes.result.Row(y), width, 1, mask.Row(y));
        ComponentExtractor(&mask).Run(components);
        ComponentNoiseFilter filter(&mask);
        filter.Run(components, kSmallest, kSmallest);
        OrientedBlockGrouper(&mask).Run(components);
        filter.FilterForBinarization(components);
    }
    FillPixels(planes.result, kWhite);
    BinarizeLines(page, planes, components);
    return true;
}

void LineRegionBinarizer::BinarizeLines(PageFindings page, const RulePlanes& planes,
                                        const ComponentStore& components) const {
    // Only the rule for gray pages reads scratch beyond the rectangle that it has just filled.
    if (page.midToneHint) FillPixels(planes.scratch, kWhite);
    bool anyLine = false;
    store::ForEachLine(components, [&](const ComponentNode* line) {
        anyLine = true;
        const Rect rect = PaddedRect(*line);
        if (IsPage(rect)) {  // for the lines after it as well
            page.darkTextHint = true;
            page.secondPass = false;
        }
        const Finish finish =
            page.useAltRegionRule ? LineRuleAlt(page, planes, rect) : LineRule(page, planes, rect);
        FinishRegion(planes.result, rect, finish);
    });
    if (anyLine) return;
    const Region whole(kLineFamily, planes, gray.Whole());
    whole.Threshold(gray, planes.result, whole.DarkMean() + kAboveDarkMean, Earlier::kOverwritten);
}

Rect LineRegionBinarizer::PaddedRect(const ComponentNode& line) const {
    return Intersection(Extended(RectOf(line), kLineMargin, kLineMargin),
                        {0, 0, ClampedSide(width), ClampedSide(height)});
}

bool LineRegionBinarizer::IsPage(const Rect& line) const {
    return line.Height() >= Scaled(height, kPageShare) && line.Width() >= Scaled(width, kPageShare);
}

}  // namespace tavrix
