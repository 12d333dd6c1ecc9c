// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>

#include "image/Plane.h"

// Edge strength of a gray page, the masks made from it, and the count of stroke ends. In a mask 0 is
// foreground and 255 background.
namespace tavrix {

// Edge strengths from which a pixel counts as an edge, by level.
inline constexpr std::array<int, 4> kEdgeLevelThresholds{82, 145, 217, 255};

// Sobel gradient magnitude over the rectangle, truncated and limited to 255; 0 on the outer frame (row 0,
// the last row, column 0 and the last byte of a row). Neighbours are read as they lie in memory, padding
// included.
void SobelMagnitude(const ConstPlane& source, const Plane& edges, const Rect& rect);
// A mask of that instead: foreground, 0, above the cut and on the frame.
void StrongEdgeMask(const ConstPlane& source, const Plane& mask, const Rect& rect, int cut);

// Pixels at least as strong as each of kEdgeLevelThresholds.
using EdgeCounts = std::array<std::uint64_t, 4>;
// SobelMagnitude of every pixel, with the counts. Padding stays as it is.
EdgeCounts MeasureEdges(const ConstPlane& source, const Plane& edges);

// mask = 0 where edges >= threshold, else 255, over the plane's reach.
void EdgeMask(const ConstPlane& edges, int threshold, const Plane& mask);
// mask = 255 where gray > threshold, else 0, over the plane's reach.
void GrayMask(const ConstPlane& gray, int threshold, const Plane& mask);

// Foreground pixels whose right and three lower neighbours are background: the upper right tips of
// strokes, a measure of how much text there is. Column 0 and the last row have none.
int CountStrokeEnds(const ConstPlane& mask);

// Measures a gray page with its histogram into `edges`, which comes zeroed, and masks the edges at the
// level that suits the page: from its contrast level, steps towards the one at which 7 to 13.9 % of the
// page are edges, until the level stays or has moved both ways. Gives the mask's stroke ends.
int MaskStrokes(const std::uint32_t* histogram, const ConstPlane& gray, const Plane& edges,
                const Plane& mask);
// Counts the stroke ends of that mask without planes of the page's size; -1 when memory runs out.
int CountStrokeEndsOf(const ConstPlane& gray);

}  // namespace tavrix
