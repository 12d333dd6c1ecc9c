// SPDX-License-Identifier: MIT
#include "regions/EdgeRegionBinarizer.h"

#include <algorithm>

#include "platform/OutputFile.h"
#include "regions/AltRules.h"
#include "regions/EdgeMeasures.h"
#include "regions/RegionBuilding.h"
#include "regions/SharpRule.h"
#include "regions/SideBorders.h"
#include "regions/StandardRules.h"
#include "regions/TextComponents.h"

namespace tavrix {
namespace {

constexpr std::uint8_t kMarginGray = 200;
constexpr int kPlainMargin = 15;   // columns painted where no border was found
constexpr int kBeyondBorder = 13;  // columns painted beyond a border

void FillWhite(const Plane& plane) {
    std::fill_n(plane.pixels, plane.Bytes(), std::uint8_t{255});
}

}  // namespace

EdgeRegionBinarizer::EdgeRegionBinarizer(DibImage* page) {
    if (Attach(page)) src = PlaneOfRows(*page);
}

bool EdgeRegionBinarizer::Binarize() {
    if (!HasPixels()) return false;
    const SidePlane result(*image, src);
    const RulePlanes planes{src, result.Get(), {}};
    const PreMask mask = BuildPreMask(planes.result);
    return RefineByRegions(mask, planes) && image->PackToOneBit(result.Get().pixels);
}

bool EdgeRegionBinarizer::BinarizeBlock() {
    if (!HasPixels()) return false;
    const SidePlane result(*image, src);
    const RulePlanes planes{src, result.Get(), {}};
    FillWhite(planes.result);
    const Finishing finishing = BinarizeRegion(PageFindings{}, planes, src.Whole());
    FinishRegion(planes.result, src.Whole(), finishing.how);  // without strong edges
    return image->PackToOneBit(result.Get().pixels);
}

bool EdgeRegionBinarizer::BinarizeSharp() {
    if (!HasPixels()) return false;
    const SidePlane result(*image, src);
    const RulePlanes planes{src, result.Get(), {}};
    FillWhite(planes.result);
    FinishRegions(planes, {{src.Whole(), BinarizeRegionSharp(planes, src.Whole())}});
    return image->PackToOneBit(result.Get().pixels);
}

PreMask EdgeRegionBinarizer::BuildPreMask(const Plane& edges) {
    ComputeHistogram(1);
    const Strokes strokes = MaskStrokes(histogram, src, edges);
    PaintPageMargins();
    return ChoosePreMask({src, edges, strokes, histogram});
}

void EdgeRegionBinarizer::PaintPageMargins() {
    const auto margin = [](int border) { return border != 0 ? border + kBeyondBorder : kPlainMargin; };
    const SideBorders borders = FindSideBorders(src);
    PaintMargins(src, margin(borders.left), margin(borders.right), kMarginGray);
    image->WriteBmp(platform::kDebugDumpPath);
}

bool EdgeRegionBinarizer::RefineByRegions(const PreMask& mask, const RulePlanes& planes) {
    const PageFindings& page = mask.page;
    const std::vector<ComponentRecord> components =
        FindTextComponents(mask.foreground, src, page.globalThresholdUsed);
    if (components.empty()) return false;
    FillWhite(planes.result);
    std::vector<RegionNode> regions;
    for (const Rect& rect : BuildRegions(src, components)) {
        const Finishing finishing = page.useAltRegionRule ? Finishing{BinarizeRegionAlt(page, planes, rect)}
                                                          : BinarizeRegion(page, planes, rect);
        regions.push_back({rect, finishing});
    }
    FinishRegions(planes, regions);
    return true;
}

void EdgeRegionBinarizer::FinishRegions(const RulePlanes& planes, const std::vector<RegionNode>& regions) {
    for (const RegionNode& region : regions) {
        const Rect rect = FinishRegion(planes.result, region.rect, region.finishing.how);
        if (region.finishing.withStrongEdges) AddStrongEdges(planes.gray, planes.result, rect);
    }
}

}  // namespace tavrix
