// SPDX-License-Identifier: MIT
#include "regions/RegionBuilding.h"

#include <algorithm>

namespace tavrix {
namespace {

constexpr int kMargin = 10;  // pixels around a component
constexpr int kGap = 33;     // columns between the rectangles of a region, at most

struct BuiltRegion {
    Rect rect;
    bool absorbed = false;  // by another region
};

// Joins the padded boxes of each row group, left to right.
std::vector<BuiltRegion> JoinBoxes(const Rect& page, const std::vector<ComponentRecord>& components) {
    std::vector<BuiltRegion> regions;
    int group = -1;
    for (const ComponentRecord& component : components) {
        const Rect box = Intersection(Extended(component.box, kMargin, kMargin), page);
        if (component.group != group || box.x0 - regions.back().rect.x1 > kGap) {
            regions.push_back({box});
            group = component.group;
        } else {
            regions.back().rect = Union(regions.back().rect, box);
        }
    }
    return regions;
}

void Absorb(BuiltRegion& region, BuiltRegion& absorbed) {
    absorbed.absorbed = true;
    region.rect = Union(region.rect, absorbed.rect);
}

// Regions that lie inside others, or overlap by three fifths of the smaller one, go into them. Those
// absorbed still take part in later comparisons.
void AbsorbOverlaps(std::vector<BuiltRegion>& regions) {
    for (std::size_t i = 0; i < regions.size(); ++i) {
        BuiltRegion& first = regions[i];
        for (std::size_t j = i + 1; j < regions.size(); ++j) {
            BuiltRegion& second = regions[j];
            const Rect shared = Intersection(first.rect, second.rect);
            if (shared.IsEmpty()) continue;
            const std::int64_t firstArea = first.rect.Area(), secondArea = second.rect.Area();
            if (shared.Area() >= firstArea) {
                first.absorbed = true;
                break;
            }
            if (shared.Area() < 3 * std::min(firstArea, secondArea) / 5) continue;
            if (firstArea <= secondArea) {
                Absorb(second, first);
            } else {
                Absorb(first, second);
            }
        }
    }
}

}  // namespace

std::vector<Rect> BuildRegions(const ConstPlane& page, const std::vector<ComponentRecord>& components) {
    std::vector<BuiltRegion> regions = JoinBoxes(page.Reach(), components);
    AbsorbOverlaps(regions);
    std::vector<Rect> rects;
    for (const BuiltRegion& region : regions) {
        if (!region.absorbed) rects.push_back(region.rect);
    }
    return rects;
}

}  // namespace tavrix
