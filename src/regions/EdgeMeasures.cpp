// SPDX-License-Identifier: MIT
#include "regions/EdgeMeasures.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "binarize/MaskKernels.h"
#include "image/NeighbourhoodKernels.h"
#include "regions/RegionKernels.h"

namespace tavrix {
namespace {

constexpr double kManyEdges = 0.139, kFewEdges = 0.07;  // shares of the page

// Calls pass with each row's offset and number.
template <class RowPass>
void ForEachRow(const PageShape& page, const RowPass& pass) {
    for (int y = 0; y < page.height; ++y) pass(page.Offset(y), y);
}

// Measures rows of a page, with the kernels for this machine.
class EdgeRows {
  public:
    explicit EdgeRows(const PageShape& shape) : page(shape) {}

    // SobelMagnitude of the columns x0..x1 of one row into a row of their own.
    void Sobel(const std::uint8_t* source, int y, int x0, int x1, std::uint8_t* target, int maskCut) const {
        const int first = std::max(x0, 1), last = std::min(x1, page.rowBytes - 2), count = last - first + 1;
        if (y == 0 || y == page.height - 1 || count <= 0) {
            if (x0 <= x1) std::memset(target + x0, 0, static_cast<std::size_t>(x1 - x0 + 1));
            return;
        }
        const std::uint8_t* row = source + page.Offset(y) + first;
        neighbourhoods.sobelRow(row - page.rowBytes, row, row + page.rowBytes, count, target + first);
        if (maskCut >= 0) masks.maskUpTo(target + first, count, maskCut, target + first);
        if (x0 < first) target[x0] = 0;
        if (x1 > last) target[x1] = 0;
    }
    void Count(const std::uint8_t* edges, EdgeCounts& counts) const {
        for (std::size_t level = 0; level < counts.size(); ++level) {
            counts[level] += masks.countFrom(edges, page.width, kEdgeLevelThresholds[level]);
        }
    }

    const NeighbourhoodKernels& neighbourhoods = platform::KernelsOf<NeighbourhoodKernels>();
    const MaskKernels& masks = platform::KernelsOf<MaskKernels>();

  private:
    const PageShape& page;
};

// The last column in which a stroke may end.
int LastTip(const PageShape& page) {
    return std::min(page.width - 1, page.columns - 2);
}

}  // namespace

void SobelMagnitude(const PageShape& page, const std::uint8_t* source, std::uint8_t* target, PageRect rect,
                    int maskCut) {
    const EdgeRows rows(page);
    for (int y = rect.y0; y <= rect.y1; ++y) {
        rows.Sobel(source, y, rect.x0, rect.x1, target + page.Offset(y), maskCut);
    }
}

EdgeCounts MeasureEdges(const PageShape& page, const std::uint8_t* source, std::uint8_t* edges) {
    EdgeCounts counts{};
    const EdgeRows rows(page);
    ForEachRow(page, [&](std::size_t row, int y) {
        rows.Sobel(source, y, 0, page.width - 1, edges + row, kNoMask);
        rows.Count(edges + row, counts);
    });
    return counts;
}

int CountStrokeEndsOfEdges(const PageShape& page, const std::uint8_t* source, int level) {
    constexpr std::size_t kLevels = kEdgeLevelThresholds.size();
    EdgeCounts counts{};
    std::array<int, kLevels> ends{};
    // A row of edges; each level's mask of that row and, in turns, of the one before.
    const std::size_t rowBytes = page.Offset(1);
    std::vector<std::uint8_t> edges(rowBytes), masks(2 * kLevels * rowBytes);
    const int lastTip = LastTip(page);
    const EdgeRows rows(page);
    const auto countTips = platform::KernelsOf<RegionKernels>().countTips;
    ForEachRow(page, [&](std::size_t, int y) {
        rows.Sobel(source, y, 0, page.width - 1, edges.data(), kNoMask);
        rows.Count(edges.data(), counts);
        for (std::size_t i = 0; i < kLevels; ++i) {
            const std::size_t odd = y % 2;
            std::uint8_t* mask = &masks[(2 * i + odd) * rowBytes];
            const std::uint8_t* before = &masks[(2 * i + 1 - odd) * rowBytes];
            rows.masks.maskUpTo(edges.data(), page.columns, kEdgeLevelThresholds[i] - 1, mask);
            if (y > 0 && lastTip > 0) ends[i] += countTips(before + 1, mask + 1, lastTip);
        }
    });
    const int threshold = SettleEdgeThreshold(counts, page.Bytes(), level);
    const auto* chosen = std::find(kEdgeLevelThresholds.begin(), kEdgeLevelThresholds.end(), threshold);
    return ends[chosen - kEdgeLevelThresholds.begin()];
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
    const auto maskUpTo = platform::KernelsOf<MaskKernels>().maskUpTo;
    ForEachRow(page, [&](std::size_t row, int) { maskUpTo(edges + row, page.columns, limit, mask + row); });
}

void GrayMask(const PageShape& page, const std::uint8_t* gray, int threshold, std::uint8_t* mask) {
    const int limit = std::clamp(threshold, -1, 255);
    const auto maskAbove = platform::KernelsOf<MaskKernels>().maskAbove;
    ForEachRow(page, [&](std::size_t row, int) { maskAbove(gray + row, page.columns, limit, mask + row); });
}

int CountStrokeEnds(const PageShape& page, const std::uint8_t* mask) {
    const int last = LastTip(page);
    const auto countTips = platform::KernelsOf<RegionKernels>().countTips;
    int count = 0;
    for (int y = 0; y + 1 < page.height && last >= 1; ++y) {
        const std::uint8_t* row = mask + page.Offset(y) + 1;
        count += countTips(row, row + page.rowBytes, last);
    }
    return count;
}

}  // namespace tavrix
