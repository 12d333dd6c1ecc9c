// SPDX-License-Identifier: MIT
#include "regions/EdgeMeasures.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "binarize/MaskKernels.h"
#include "image/NeighbourhoodKernels.h"
#include "platform/Guarded.h"
#include "regions/HistogramMeasures.h"
#include "regions/RegionKernels.h"
#include "regions/RegionPasses.h"

namespace tavrix {
namespace {

constexpr double kManyEdges = 0.139, kFewEdges = 0.07;  // shares of the page, padding included
constexpr int kLevels = static_cast<int>(kEdgeLevelThresholds.size());

// Sobel magnitudes of rows, with the kernels for this machine.
class EdgeRows {
  public:
    explicit EdgeRows(const ConstPlane& gray) : source(gray) {}

    // The columns x0..x1 of row y into a row of the page's length.
    void Measure(int y, int x0, int x1, std::uint8_t* edges) const {
        const int first = std::max(x0, 1), last = std::min(x1, source.rowBytes - 2);
        if (y == 0 || y == source.height - 1 || last < first) {
            if (x0 <= x1) std::memset(edges + x0, 0, static_cast<std::size_t>(x1 - x0 + 1));
            return;
        }
        sobelRow(source.Row(y - 1) + first, source.Row(y) + first, source.Row(y + 1) + first,
                 last - first + 1, edges + first);
        if (x0 < first) edges[x0] = 0;
        if (x1 > last) edges[x1] = 0;
    }
    // Every pixel of row y, counted.
    void MeasureAndCount(int y, std::uint8_t* edges, EdgeCounts& counts) const {
        Measure(y, 0, source.width - 1, edges);
        for (std::size_t level = 0; level < counts.size(); ++level) {
            counts[level] += countFrom(edges, source.width, kEdgeLevelThresholds[level]);
        }
    }

  private:
    const ConstPlane source;
    const decltype(NeighbourhoodKernels::sobelRow) sobelRow =
        platform::KernelsOf<NeighbourhoodKernels>().sobelRow;
    const decltype(MaskKernels::countFrom) countFrom = platform::KernelsOf<MaskKernels>().countFrom;
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

void SobelMagnitude(const ConstPlane& source, const Plane& edges, const Rect& rect) {
    const EdgeRows rows(source);
    for (int y = rect.y0; y <= rect.y1; ++y) rows.Measure(y, rect.x0, rect.x1, edges.Row(y));
}

void StrongEdgeMask(const ConstPlane& source, const Plane& mask, const Rect& rect, int cut) {
    SobelMagnitude(source, mask, rect);
    const Rect inner = Intersection(rect, {1, 1, static_cast<std::int16_t>(source.rowBytes - 2),
                                           static_cast<std::int16_t>(source.height - 2)});
    const auto maskUpTo = platform::KernelsOf<MaskKernels>().maskUpTo;
    if (inner.IsEmpty()) return;
    for (int y = inner.y0; y <= inner.y1; ++y) {
        std::uint8_t* row = mask.Row(y) + inner.x0;
        maskUpTo(row, inner.Width(), cut, row);
    }
}

EdgeCounts MeasureEdges(const ConstPlane& source, const Plane& edges) {
    EdgeCounts counts{};
    const EdgeRows rows(source);
    for (int y = 0; y < source.height; ++y) rows.MeasureAndCount(y, edges.Row(y), counts);
    return counts;
}

void EdgeMask(const ConstPlane& edges, int threshold, const Plane& mask) {
    const int limit = std::clamp(threshold - 1, -1, 255);
    const auto maskUpTo = platform::KernelsOf<MaskKernels>().maskUpTo;
    for (int y = 0; y < edges.height; ++y) maskUpTo(edges.Row(y), edges.columns, limit, mask.Row(y));
}

void GrayMask(const ConstPlane& gray, int threshold, const Plane& mask) {
    const int limit = std::clamp(threshold, -1, 255);
    const auto maskAbove = platform::KernelsOf<MaskKernels>().maskAbove;
    for (int y = 0; y < gray.height; ++y) maskAbove(gray.Row(y), gray.columns, limit, mask.Row(y));
}

int CountStrokeEnds(const ConstPlane& mask) {
    const int last = LastTip(mask);
    const auto countTips = platform::KernelsOf<RegionKernels>().countTips;
    int count = 0;
    for (int y = 0; y + 1 < mask.height && last >= 1; ++y) {
        count += countTips(mask.Row(y) + 1, mask.Row(y + 1) + 1, last);
    }
    return count;
}

int MaskStrokes(const std::uint32_t* histogram, const ConstPlane& gray, const Plane& edges,
                const Plane& mask) {
    const EdgeCounts counts = MeasureEdges(gray, edges);
    const int level = SettledEdgeLevel(counts, gray.Bytes(), ContrastLevel(histogram, gray.Bytes()));
    EdgeMask(edges, kEdgeLevelThresholds[level], mask);
    return CountStrokeEnds(mask);
}

int CountStrokeEndsOf(const ConstPlane& gray) {
    constexpr int kNoMemory = -1;
    return Guarded(kNoMemory, [&] {
        std::array<std::uint32_t, 256> histogram;
        RegionHistogram(gray, gray.Whole(), histogram.data());
        // A row of edges; each level's mask of that row and, in turns, of the one before.
        const auto rowBytes = static_cast<std::size_t>(gray.rowBytes);
        std::vector<std::uint8_t> edges(rowBytes), masks(2 * kLevels * rowBytes);
        EdgeCounts counts{};
        std::array<int, kLevels> ends{};
        const int lastTip = LastTip(gray);
        const EdgeRows rows(gray);
        const auto maskUpTo = platform::KernelsOf<MaskKernels>().maskUpTo;
        const auto countTips = platform::KernelsOf<RegionKernels>().countTips;
        for (int y = 0; y < gray.height; ++y) {
            rows.MeasureAndCount(y, edges.data(), counts);
            for (std::size_t level = 0; level < kLevels; ++level) {
                const std::size_t odd = y % 2;
                std::uint8_t* mask = &masks[(2 * level + odd) * rowBytes];
                const std::uint8_t* before = &masks[(2 * level + 1 - odd) * rowBytes];
                maskUpTo(edges.data(), gray.columns, kEdgeLevelThresholds[level] - 1, mask);
                if (y > 0 && lastTip > 0) ends[level] += countTips(before + 1, mask + 1, lastTip);
            }
        }
        return ends[SettledEdgeLevel(counts, gray.Bytes(), ContrastLevel(histogram.data(), gray.Bytes()))];
    });
}

}  // namespace tavrix
