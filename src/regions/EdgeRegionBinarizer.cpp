// SPDX-License-Identifier: MIT
#include "regions/EdgeRegionBinarizer.h"

#include <algorithm>
#include <memory>

#include "platform/OutputFile.h"
#include "regions/AltRules.h"
#include "regions/EdgeMeasures.h"
#include "regions/PreMask.h"
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

void Fill(const Plane& plane, std::uint8_t value) {
    std::fill_n(plane.pixels, plane.Bytes(), value);
}

}  // namespace

EdgeRegionBinarizer::EdgeRegionBinarizer(DibImage* page) {
    if (Attach(page)) src = PlaneOfRows(*page);
}

bool EdgeRegionBinarizer::Binarize() {
    if (!HasPixels()) return false;
    const auto result = std::unique_ptr<std::uint8_t[]>(new std::uint8_t[src.Bytes()]);
    const auto scratch = std::make_unique<std::uint8_t[]>(src.Bytes());
    const RulePlanes planes{src, src.Over(scratch.get()), src.Over(result.get())};
    const PageFindings page = BuildPreMask(planes.result, planes.scratch);
    return RefineByRegions(page, planes) && image->PackToOneBit(result.get());
}

bool EdgeRegionBinarizer::BinarizeBlock() {
    if (!HasPixels()) return false;
    std::vector<std::uint8_t> scratch(src.Bytes()), result(src.Bytes(), 255);
    const RulePlanes planes{src, src.Over(scratch.data()), src.Over(result.data())};
    const Finishing finishing = BinarizeRegion(PageFindings{}, planes, src.Whole());
    FinishRegion(planes.result, src.Whole(), finishing.how);  // without strong edges
    return image->PackToOneBit(result.data());
}

bool EdgeRegionBinarizer::BinarizeSharp() {
    if (!HasPixels()) return false;
    std::vector<std::uint8_t> scratch(src.Bytes(), 255), result(src.Bytes(), 255);
    const RulePlanes planes{src, src.Over(scratch.data()), src.Over(result.data())};
    FinishRegions(planes, {{src.Whole(), BinarizeRegionSharp(planes, src.Whole())}});
    return image->PackToOneBit(result.data());
}

PageFindings EdgeRegionBinarizer::BuildPreMask(const Plane& preMask, const Plane& edges) {
    ComputeHistogram(1);
    const int strokeEndCount = MaskStrokes(histogram, src, edges, preMask);
    PaintPageMargins();
    return ChoosePreMask({src, edges, preMask}, histogram, strokeEndCount);
}

void EdgeRegionBinarizer::PaintPageMargins() {
    const auto margin = [](int border) { return border != 0 ? border + kBeyondBorder : kPlainMargin; };
    const SideBorders borders = FindSideBorders(src);
    PaintMargins(src, margin(borders.left), margin(borders.right), kMarginGray);
    image->WriteBmp(platform::kDebugDumpPath);
}

bool EdgeRegionBinarizer::RefineByRegions(const PageFindings& page, const RulePlanes& planes) {
    const std::vector<ComponentRecord> components =
        FindTextComponents(planes.result, src, page.globalThresholdUsed);
    if (components.empty()) return false;
    Fill(planes.scratch, 0);
    Fill(planes.result, 255);
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
        if (region.finishing.withStrongEdges)
            AddStrongEdges(planes.gray, planes.scratch, planes.result, rect);
    }
}

}  // namespace tavrix
