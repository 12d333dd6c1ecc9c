// SPDX-License-Identifier: MIT
#include "binarize/EdgeMeasures.h"

#include <algorithm>
#include <cstring>

#include "binarize/PageKernels.h"

namespace tavrix {
namespace {

constexpr double kManyEdges = 0.139, kFewEdges = 0.07;  // shares of the page

template <class RowPass>
void ForEachRow(const PageShape& page, const RowPass& pass) {
    for (int y = 0; y < page.height; ++y) pass(page.Offset(y));
}

}  // namespace

void SobelMagnitude(const PageShape& page, const std::uint8_t* source, std::uint8_t* target, PageRect rect,
                    int maskCut) {
    const int x0 = rect.x0, x1 = rect.x1;
    const int first = std::max(x0, 1), last = std::min(x1, page.rowBytes - 2);
    for (int y = rect.y0; y <= rect.y1; ++y) {
        std::uint8_t* row = target + page.Offset(y);
        const bool frame = y == 0 || y >= page.height - 1;
        if (frame || first > last) {
            if (x0 <= x1) std::memset(row + x0, 0, static_cast<std::size_t>(x1 - x0 + 1));
            continue;
        }
        const std::uint8_t* middle = source + page.Offset(y) + first;
        const int count = last - first + 1;
        TAVRIX_KERNEL(SobelRow)(middle - page.rowBytes, middle, middle + page.rowBytes, count, row + first);
        if (maskCut >= 0) TAVRIX_KERNEL(MaskUpTo)(row + first, count, maskCut, row + first);
        if (x0 < first) row[x0] = 0;
        if (x1 > last) row[x1] = 0;
    }
}

EdgeCounts MeasureEdges(const PageShape& page, const std::uint8_t* source, std::uint8_t* edges) {
    SobelMagnitude(page, source, edges, page.Whole());
    EdgeCounts counts{};
    ForEachRow(page, [&](std::size_t row) {
        for (std::size_t level = 0; level < counts.size(); ++level) {
            counts[level] += TAVRIX_KERNEL(CountFrom)(edges + row, page.width, kEdgeLevelThresholds[level]);
        }
    });
    return counts;
}

int AdjustEdgeLevel(double edgeShare, int level) {
    if (edgeShare > kManyEdges) return level + 2;
    return edgeShare >= kFewEdges ? level : level - 1;
}

int SettleEdgeThreshold(const EdgeCounts& counts, std::size_t bytes, int level) {
    constexpr int kTopLevel = static_cast<int>(kEdgeLevelThresholds.size()) - 1;
    bool up = false, down = false;
    for (int previous = level;; previous = level) {
        const double share = static_cast<double>(counts[level]) / static_cast<double>(bytes);
        const int threshold = kEdgeLevelThresholds[level];
        if (up && down) return threshold;
        level = std::clamp(AdjustEdgeLevel(share, level), 0, kTopLevel);
        if (level == previous) return threshold;
        up = up || level > previous || level == kTopLevel;
        down = down || level < previous || level == 0;
    }
}

void EdgeMask(const PageShape& page, const std::uint8_t* edges, int threshold, std::uint8_t* mask) {
    const int limit = std::clamp(threshold - 1, -1, 255);
    ForEachRow(page, [&](std::size_t row) {
        TAVRIX_KERNEL(MaskUpTo)(edges + row, page.columns, limit, mask + row);
    });
}

void GrayMask(const PageShape& page, const std::uint8_t* gray, int threshold, std::uint8_t* mask) {
    const int limit = std::clamp(threshold, -1, 255);
    ForEachRow(page, [&](std::size_t row) {
        TAVRIX_KERNEL(MaskAbove)(gray + row, page.columns, limit, mask + row);
    });
}

int CountStrokeEnds(const PageShape& page, const std::uint8_t* mask) {
    const int last = std::min(page.width - 1, page.columns - 2);
    int count = 0;
    for (int y = 0; y + 1 < page.height && last >= 1; ++y) {
        const std::uint8_t* row = mask + page.Offset(y) + 1;
        count += TAVRIX_KERNEL(CountTips)(row, row + page.rowBytes, last);
    }
    return count;
}

}  // namespace tavrix
