// SPDX-License-Identifier: MIT
// The regions of an edge-guided binarization: from text components to the cleaned result.
#include <algorithm>
#include <cstring>

#include "regions/EdgeMeasures.h"
#include "regions/EdgeRegionBinarizer.h"
#include "regions/RegionKernels.h"
#include "regions/RegionPasses.h"

namespace tavrix {
namespace {

constexpr int kRegionMargin = 10;  // pixels around a component
constexpr int kRegionGap = 33;     // columns between the boxes of a region, at most
constexpr int kStrongEdge = 250;

std::int64_t AreaOf(const RegionNode& box) {
    return std::int64_t{box.right - box.left + 1} * (box.bottom - box.top + 1);
}

std::int64_t OverlapOf(const RegionNode& a, const RegionNode& b) {
    const int left = std::max(a.left, b.left), right = std::min(a.right, b.right);
    const int top = std::max(a.top, b.top), bottom = std::min(a.bottom, b.bottom);
    return right < left || bottom < top ? 0 : AreaOf({left, right, bottom, top, 0});
}

void Absorb(RegionNode& box, RegionNode& absorbed) {
    absorbed.flag = 1;
    box.left = std::min(box.left, absorbed.left);
    box.right = std::max(box.right, absorbed.right);
    box.top = std::min(box.top, absorbed.top);
    box.bottom = std::max(box.bottom, absorbed.bottom);
}

// Joins the padded boxes of each row group into regions, left to right.
std::vector<RegionNode> JoinBoxes(const PageShape& page, const std::vector<ComponentRecord>& records) {
    std::vector<RegionNode> regions;
    int group = -1;
    for (const ComponentRecord& record : records) {
        const RegionNode box{std::max(record.left - kRegionMargin, 0),
                             std::min(record.right + kRegionMargin, page.rowBytes - 1),
                             std::min(record.bottom + kRegionMargin, page.height - 1),
                             std::max(record.top - kRegionMargin, 0), 0};
        if (record.group != group || box.left - regions.back().right > kRegionGap) {
            regions.push_back(box);
            group = record.group;
        } else {
            RegionNode joined = box;
            Absorb(regions.back(), joined);
        }
    }
    return regions;
}

// Regions that lie inside others, or overlap by three fifths of the smaller one, go into them. Those
// absorbed still take part in later comparisons.
void AbsorbOverlaps(std::vector<RegionNode>& regions) {
    for (std::size_t i = 0; i < regions.size(); ++i) {
        RegionNode& first = regions[i];
        for (std::size_t j = i + 1; j < regions.size(); ++j) {
            RegionNode& second = regions[j];
            const std::int64_t overlap = OverlapOf(first, second);
            if (overlap == 0) continue;
            const std::int64_t firstArea = AreaOf(first), secondArea = AreaOf(second);
            if (overlap >= firstArea) {
                first.flag = 1;
                break;
            }
            if (overlap < 3 * std::min(firstArea, secondArea) / 5) continue;
            if (firstArea <= secondArea) {
                Absorb(second, first);
            } else {
                Absorb(first, second);
            }
        }
    }
}

}  // namespace

PageRect RegionNode::Rect() const {
    const auto narrow = [](int value) { return static_cast<std::int16_t>(value); };
    return {narrow(left), narrow(top), narrow(right), narrow(bottom)};
}

bool EdgeRegionBinarizer::RefineByRegions(std::uint8_t* result, std::uint8_t* scratch, bool smoothed) {
    const PageShape page = Page();
    const std::vector<ComponentRecord> records = FindTextComponents(page, result, src, globalThresholdUsed);
    if (records.empty()) return false;
    std::memset(scratch, 0, page.Bytes());
    std::memset(result, 255, page.Bytes());
    FinishRegions(result, scratch, BuildRegions(scratch, result, records, smoothed));
    return true;
}

std::vector<RegionNode> EdgeRegionBinarizer::BuildRegions(std::uint8_t* scratch, std::uint8_t* result,
                                                          const std::vector<ComponentRecord>& records,
                                                          bool smoothed) {
    std::vector<RegionNode> regions = JoinBoxes(Page(), records);
    AbsorbOverlaps(regions);
    std::erase_if(regions, [](const RegionNode& region) { return region.flag != 0; });
    for (RegionNode& region : regions) {
        const int code = useAltRegionRule ? BinarizeRegionAlt(region.Rect(), result, smoothed)
                                          : BinarizeRegion(region.Rect(), scratch, result, smoothed);
        region.flag = static_cast<std::uint8_t>(code);
    }
    return regions;
}

void EdgeRegionBinarizer::FinishRegions(std::uint8_t* result, std::uint8_t* scratch,
                                        const std::vector<RegionNode>& regions) const {
    const PageShape page = Page();
    const int cut = edgeCutOverride > 0 ? edgeCutOverride : kStrongEdge;
    for (const RegionNode& region : regions) {
        PageRect rect = region.Rect();
        const int mode = region.flag % 3;
        if (mode == 0) rect = FillAndMarkRegion(page, rect, result);
        if (mode == 1) MarkRegion(page, rect, result);
        if (region.flag >= 3 && scratch != nullptr) {
            SobelMagnitude(page, src, scratch, rect, cut);
            ApplyEdgeMask(rect, result, scratch);
        }
    }
}

void EdgeRegionBinarizer::ApplyEdgeMask(PageRect rect, std::uint8_t* result,
                                        const std::uint8_t* edgeMask) const {
    const PageShape page = Page();
    const auto applyEdgesRow = platform::KernelsOf<RegionKernels>().applyEdgesRow;
    for (int y = rect.y0; y <= rect.y1; ++y) {
        const std::size_t start = page.Offset(y) + rect.x0;
        applyEdgesRow(result + start, edgeMask + start, rect.x1 - rect.x0 + 1);
    }
}

}  // namespace tavrix
