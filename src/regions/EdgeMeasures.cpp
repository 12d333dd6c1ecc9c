// SPDX-License-Identifier: MIT
#include "regions/EdgeMeasures.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "image/RowRing.h"
#include "regions/HistogramMeasures.h"
#include "regions/RegionKernels.h"

namespace tavrix {
namespace {

constexpr double kManyEdges = 0.139, kFewEdges = 0.07;  // shares of the page, padding included
constexpr int kLevels = static_cast<int>(kEdgeLevelThresholds.size());

// Adds a row of edges to the counts.
class EdgeCounter {
  public:
    void Add(const std::uint8_t* edges, int count) {
        for (std::size_t level = 0; level < counts.size(); ++level) {
            counts[level] += countFrom(edges, count, kEdgeLevelThresholds[level]);
        }
    }

    EdgeCounts counts{};

  private:
    decltype(MaskKernels::countFrom) countFrom = platform::KernelsOf<MaskKernels>().countFrom;
};

// The last column in which a stroke may end.
int LastTip(const ConstPlane& page) {
    return std::min(page.width - 1, page.columns - 2);
}

// One step towards a fair share of edges; not limited.
int AdjustEdgeLevel(double edgeShare, int level) {
    if (edgeShare > kManyEdges) return level + 2;
    return edgeShare >= kFewEdges ? level : level - 1;
}

// Takes those steps; the level of the last mask. `bytes` is what the shares are of.
int SettledEdgeLevel(const EdgeCounts& counts, std::size_t bytes, int level) {
    bool up = false, down = false;
    for (;;) {
        const double share = static_cast<double>(counts[level]) / static_cast<double>(bytes);
        const int next = std::clamp(AdjustEdgeLevel(share, level), 0, kLevels - 1);
        if (next == level || (up && down)) return level;
        up = up || next > level || next == kLevels - 1;
        down = down || next < level || next == 0;
        level = next;
    }
}

}  // namespace

void EdgeRows::Measure(int y, const RowTriple& rows, int x0, int x1, std::uint8_t* edges) const {
    const int first = std::max(x0, 1), last = std::min(x1, rowBytes - 2);
    if (y == 0 || y == lastRow || last < first) {
        if (x0 <= x1) std::memset(edges + x0, 0, static_cast<std::size_t>(x1 - x0 + 1));
        return;
    }
    sobelRow(rows.before + first, rows.row + first, rows.after + first, last - first + 1, edges + first);
    if (x0 < first) edges[x0] = 0;
    if (x1 > last) edges[x1] = 0;
}

EdgeCounts MeasureEdges(const ConstPlane& gray, const Plane& edges) {
    const EdgeRows rows(gray);
    EdgeCounter counter;
    const auto padding = static_cast<std::size_t>(gray.rowBytes - gray.width);
    for (int y = 0; y < gray.height; ++y) {
        std::uint8_t* row = edges.Row(y);
        rows.Measure(y, RowsAround(gray, y), 0, gray.width - 1, row);
        std::memset(row + gray.width, 0, padding);
        counter.Add(row, gray.width);
    }
    return counter.counts;
}

void MeasureSmoothedEdges(const ConstPlane& gray, const Plane& edges) {
    const EdgeRows rows(gray);
    const Smoothing smoothing(gray, gray.Whole());
    RowRing smoothed(3, static_cast<std::size_t>(gray.rowBytes));
    if (gray.columns > gray.width) smoothed.Fill(255);  // background that the page's reach includes
    for (int y = 0; y <= gray.height; ++y) {
        if (y < gray.height) smoothing(y, RowsAround(gray, y), smoothed.Row(y));
        if (y == 0) continue;
        rows.Measure(y - 1, {smoothed.Row(y - 2), smoothed.Row(y - 1), smoothed.Row(y)}, 0, gray.width - 1,
                     edges.Row(y - 1));
    }
}

int CountStrokeEnds(const Mask& mask) {
    const ConstPlane& plane = mask.plane;
    const int last = LastTip(plane);
    if (last < 1) return 0;
    const auto countTips = platform::KernelsOf<RegionKernels>().countTips;
    RowRing rows(2, static_cast<std::size_t>(plane.columns));
    int count = 0;
    for (int y = 0; y < plane.height; ++y) {
        mask.WriteRow(y, rows.Row(y));
        if (y > 0) count += countTips(rows.Row(y - 1) + 1, rows.Row(y) + 1, last);
    }
    return count;
}

Strokes MaskStrokes(const std::uint32_t* histogram, const ConstPlane& gray, const Plane& edges) {
    const EdgeCounts counts = MeasureEdges(gray, edges);
    const int level = SettledEdgeLevel(counts, gray.Bytes(), ContrastLevel(histogram, gray.Bytes()));
    const Mask mask = Mask::From(edges, kEdgeLevelThresholds[level]);
    return {mask, CountStrokeEnds(mask)};
}

int CountStrokeEndsOf(const ConstPlane& gray) {
    std::array<std::uint32_t, 256> histogram;
    RegionHistogram(gray, gray.Whole(), histogram.data());
    // A row of edges; each level's mask of that row and, in turns, of the one before.
    const auto rowBytes = static_cast<std::size_t>(gray.rowBytes);
    std::vector<std::uint8_t> edges(rowBytes), masks(2 * kLevels * rowBytes);
    std::array<int, kLevels> ends{};
    const int lastTip = LastTip(gray);
    const EdgeRows rows(gray);
    EdgeCounter counter;
    const auto maskUpTo = platform::KernelsOf<MaskKernels>().maskUpTo;
    const auto countTips = platform::KernelsOf<RegionKernels>().countTips;
    for (int y = 0; y < gray.height; ++y) {
        rows.Measure(y, RowsAround(gray, y), 0, gray.width - 1, edges.data());
        counter.Add(edges.data(), gray.width);
        for (std::size_t level = 0; level < kLevels; ++level) {
            const std::size_t odd = y % 2;
            std::uint8_t* mask = &masks[(2 * level + odd) * rowBytes];
            const std::uint8_t* before = &masks[(2 * level + 1 - odd) * rowBytes];
            maskUpTo(edges.data(), gray.columns, kEdgeLevelThresholds[level] - 1, mask);
            if (y > 0 && lastTip > 0) ends[level] += countTips(before + 1, mask + 1, lastTip);
        }
    }
    const int level = ContrastLevel(histogram.data(), gray.Bytes());
    return ends[SettledEdgeLevel(counter.counts, gray.Bytes(), level)];
}

}  // namespace tavrix
