// SPDX-License-Identifier: MIT
#include "regions/Finishing.h"

#include <algorithm>
#include <vector>

#include "regions/EdgeMeasures.h"
#include "regions/RegionKernels.h"
#include "regions/RegionPasses.h"

namespace tavrix {
namespace {

constexpr int kStrongEdge = 250;    // Sobel magnitude, exceeded
constexpr int kInvertedFrame = 10;  // pixels, the margin that lies around the text of a line

// Dark pixels turn white; light ones turn black but for a frame around them.
void Invert(const Plane& result, const Rect& rect) {
    const int x1 = std::min<int>(rect.x1, result.width - 1), y1 = std::min<int>(rect.y1, result.height - 1);
    const int coreX0 = rect.x0 + kInvertedFrame + 1, coreX1 = std::min(rect.x1 - kInvertedFrame - 1, x1);
    const int coreY0 = rect.y0 + kInvertedFrame + 1, coreY1 = rect.y1 - kInvertedFrame - 1;
    for (int y = rect.y0; y <= y1; ++y) {
        std::uint8_t* row = result.Row(y);
        for (int x = rect.x0; x <= x1; ++x) row[x] = row[x] == 0 ? 254 : row[x];
        if (y < coreY0 || y > coreY1) continue;
        for (int x = coreX0; x <= coreX1; ++x) row[x] = row[x] == 255 ? 1 : row[x];
    }
}

}  // namespace

Rect FinishRegion(const Plane& result, const Rect& rect, Finish how) {
    switch (how) {
        case Finish::kFillAndMark: return FillAndMarkRegion(result, rect);
        case Finish::kMark: MarkRegion(result, rect); break;
        case Finish::kInvert: Invert(result, rect); break;
        case Finish::kLeave: break;
    }
    return rect;
}

void AddStrongEdges(const ConstPlane& gray, const Plane& result, const Rect& rect) {
    const EdgeRows edgeRows(gray);
    const auto maskUpTo = platform::KernelsOf<MaskKernels>().maskUpTo;
    const auto applyEdgesRow = platform::KernelsOf<RegionKernels>().applyEdgesRow;
    // On the page's frame the strengths, which are 0, count as strong.
    const int first = std::max<int>(rect.x0, 1), last = std::min<int>(rect.x1, gray.rowBytes - 2);
    std::vector<std::uint8_t> edges(static_cast<std::size_t>(gray.rowBytes));
    for (int y = rect.y0; y <= rect.y1; ++y) {
        edgeRows.Measure(y, RowsAround(gray, y), rect.x0, rect.x1, edges.data());
        const bool isFrame = y == 0 || y == gray.height - 1 || last < first;
        if (!isFrame) maskUpTo(&edges[first], last - first + 1, kStrongEdge, &edges[first]);
        applyEdgesRow(result.Row(y) + rect.x0, &edges[rect.x0], rect.x1 - rect.x0 + 1);
    }
}

}  // namespace tavrix
