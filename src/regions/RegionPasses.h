// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "image/Plane.h"

// Passes over a rectangle of planes of one shape. Pixels outside the rectangle stay as they are; a
// rectangle may reach beyond the plane.
namespace tavrix {

// Counts the rectangle's pixels into 256 counters, cleared first.
void RegionHistogram(const ConstPlane& plane, const Rect& rect, std::uint32_t* histogram);

// What becomes of black that earlier passes left in the target.
enum class Earlier { kBlackStays, kOverwritten };
enum class Verdict { kLightEnough, kMostlyDark };
// Pixels below the threshold become 0 in the target, the others 255, unless they are 0 in the target already
// and that stays. kMostlyDark when (pixels made light) * lightFactor < (dark pixels). Source and target may
// be the same plane.
Verdict ThresholdRegion(const ConstPlane& source, const Plane& target, const Rect& rect, int threshold,
                        Earlier earlier, double lightFactor);

// 3 x 3 mean, rounded down; the source itself on the outer frame (row 0, the last row, column 0 and the last
// byte of a row).
void SmoothRegion(const ConstPlane& source, const Plane& target, const Rect& rect);

// factor * centre less the eight neighbours, in single precision, limited to 0..255 and truncated; the
// source itself on the frame of the pixels (row 0, the last row, columns 0 and width - 1). Padding that
// belongs to the plane is sharpened too: right of a row's last byte lies the next row's first one, and
// beyond the last row 0.
void SharpenRegion(const ConstPlane& source, const Plane& target, const Rect& rect, float factor);

// target = 0 where both are 0, else 255.
void MergeRegionMasks(const Plane& target, const ConstPlane& other, const Rect& rect);

// Marks for good what a region's rule decided: 0 becomes 1, 255 becomes 254.
void MarkRegion(const Plane& result, const Rect& rect);
// The same with gaps filled, in raster order, each pixel seeing what became of those before it: a 255
// becomes 1 when at least three of its four neighbours are black (0 or 1). Keeps clear of the outer frame;
// gives the rectangle it worked on, which may be empty.
Rect FillAndMarkRegion(const Plane& result, const Rect& rect);

}  // namespace tavrix
