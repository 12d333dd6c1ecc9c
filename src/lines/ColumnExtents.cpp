// SPDX-License-Identifier: MIT
#include "lines/ColumnExtents.h"

#include <algorithm>
#include <bit>

namespace tavrix::lines {
namespace {

void Widen(Extent& extent, const Extent& other) {
    extent.y0 = std::min(extent.y0, other.y0);
    extent.y1 = std::max(extent.y1, other.y1);
    extent.least = std::min(extent.least, other.least);
    extent.greatest = std::max(extent.greatest, other.greatest);
}

Extent ExtentOf(const LetterBox& box) {
    return {box.y0, box.y1, box.height, box.height};
}

Extent Both(Extent a, const Extent& b) {
    Widen(a, b);
    return a;
}

}  // namespace

void ColumnExtents::Build(const std::vector<LetterBox>& boxes) {
    first = boxes.front().x0 >> kStripBits;
    leaves = std::bit_ceil(static_cast<std::size_t>((boxes.back().x0 >> kStripBits) - first + 1));
    nodes.assign(2 * leaves, {});
    for (const LetterBox& box : boxes) Widen(nodes[LeafOf(box.x0)], ExtentOf(box));
    for (std::size_t node = leaves - 1; node > 0; --node) {
        nodes[node] = Both(nodes[2 * node], nodes[2 * node + 1]);
    }
}

bool ColumnExtents::Update(const std::vector<LetterBox>& boxes, int x) {
    const int strip = x >> kStripBits;
    if (strip < first || strip - first >= static_cast<int>(leaves)) return false;
    std::size_t node = LeafOf(x);
    Extent extent;
    for (int i = CountUpTo(boxes, node); i-- > 0 && LeafOf(boxes[static_cast<std::size_t>(i)].x0) == node;) {
        Widen(extent, ExtentOf(boxes[static_cast<std::size_t>(i)]));
    }
    nodes[node] = extent;
    while ((node /= 2) > 0) nodes[node] = Both(nodes[2 * node], nodes[2 * node + 1]);
    return true;
}

int ColumnExtents::CountUpTo(const std::vector<LetterBox>& boxes, std::size_t leaf) const {
    const int strip = first + static_cast<int>(leaf - leaves);
    const auto behind = std::partition_point(
        boxes.begin(), boxes.end(), [&](const LetterBox& box) { return box.x0 >> kStripBits <= strip; });
    return static_cast<int>(behind - boxes.begin());
}

}  // namespace tavrix::lines
