// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>

#include "regions/PageShape.h"

// Edge strength of a gray page, the masks made from it, and the count of stroke ends. In a mask 0 is
// foreground and 255 background.
namespace tavrix {

// Edge strengths from which a pixel counts as an edge, by level.
inline constexpr std::array<int, 4> kEdgeLevelThresholds{82, 145, 217, 255};

inline constexpr int kNoMask = -1;
// Sobel gradient magnitude over the rectangle, truncated and limited to 255; 0 on the page's outer frame
// (row 0, the last row, column 0 and the last byte of a row). Neighbours are read as they lie in memory,
// padding included. With a maskCut the result is a mask instead: 255 up to the cut, 0 above it, and 0 on
// the frame.
void SobelMagnitude(const PageShape& page, const std::uint8_t* source, std::uint8_t* target, PageRect rect,
                    int maskCut = kNoMask);

// Pixels at least as strong as each of kEdgeLevelThresholds.
using EdgeCounts = std::array<std::uint64_t, 4>;
// SobelMagnitude over the whole page (columns below width), with the counts.
EdgeCounts MeasureEdges(const PageShape& page, const std::uint8_t* source, std::uint8_t* edges);

// One step towards the level at which 7 to 13.9 % of the page are edges; not limited.
int AdjustEdgeLevel(double edgeShare, int level);
// Takes those steps from a contrast level until the level stays or has moved both ways; the threshold of
// the last mask. `bytes` of the page, padding included, is what the shares are of.
int SettleEdgeThreshold(const EdgeCounts& counts, std::size_t bytes, int level);

// mask = 0 where edges >= threshold, else 255, over all columns of the shape.
void EdgeMask(const PageShape& page, const std::uint8_t* edges, int threshold, std::uint8_t* mask);
// mask = 255 where gray > threshold, else 0, over all columns of the shape.
void GrayMask(const PageShape& page, const std::uint8_t* gray, int threshold, std::uint8_t* mask);

// Foreground pixels whose right and three lower neighbours are background: the upper right tips of
// strokes. Column 0 and the last row have none.
int CountStrokeEnds(const PageShape& page, const std::uint8_t* mask);
// Those of the mask that MeasureEdges, SettleEdgeThreshold and EdgeMask give for the source, without
// buffers of the page's size.
int CountStrokeEndsOfEdges(const PageShape& page, const std::uint8_t* source, int level);

}  // namespace tavrix
