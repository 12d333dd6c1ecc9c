// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>

#include "image/NeighbourhoodKernels.h"
#include "image/Plane.h"
#include "regions/Mask.h"
#include "regions/RegionPasses.h"

// Edge strength of a gray page, the masks made from it, and the count of stroke ends.
namespace tavrix {

// Edge strengths from which a pixel counts as an edge, by level.
inline constexpr std::array<int, 4> kEdgeLevelThresholds{82, 145, 217, 255};

// Sobel gradient magnitudes of a page's rows, truncated and limited to 255; 0 on the outer frame (row 0, the
// last row, column 0 and the last byte of a row). Neighbours are read as they lie in memory, padding
// included.
class EdgeRows {
  public:
    explicit EdgeRows(const ConstPlane& shape) : rowBytes(shape.rowBytes), lastRow(shape.height - 1) {}

    // The columns x0..x1 of row y into a row of the page's length.
    void Measure(int y, const RowTriple& rows, int x0, int x1, std::uint8_t* edges) const;

  private:
    int rowBytes, lastRow;
    decltype(NeighbourhoodKernels::sobelRow) sobelRow = platform::KernelsOf<NeighbourhoodKernels>().sobelRow;
};

// Pixels at least as strong as each of kEdgeLevelThresholds.
using EdgeCounts = std::array<std::uint64_t, 4>;
// The edge strength of every pixel, with the counts. Padding becomes 0.
EdgeCounts MeasureEdges(const ConstPlane& gray, const Plane& edges);
// The edge strength of every pixel of the smoothed page, whose padding is taken for background. Padding
// stays.
void MeasureSmoothedEdges(const ConstPlane& gray, const Plane& edges);

// Foreground pixels whose right and three lower neighbours are background: the upper right tips of
// strokes, a measure of how much text there is. Column 0 and the last row have none.
int CountStrokeEnds(const Mask& mask);

// The edges of a page, and how many stroke ends they show.
struct Strokes {
    Mask mask;
    int ends;
};
// Measures a gray page with its histogram into `edges`, and masks the edges at the level that suits the page:
// from its contrast level, steps towards the one at which 7 to 13.9 % of the page are edges, until the level
// stays or has moved both ways.
Strokes MaskStrokes(const std::uint32_t* histogram, const ConstPlane& gray, const Plane& edges);
// Counts the stroke ends of that mask without planes of the page's size.
int CountStrokeEndsOf(const ConstPlane& gray);

}  // namespace tavrix
