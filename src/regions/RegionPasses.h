// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "regions/PageShape.h"

// Passes over a rectangle of byte buffers that share a page's geometry. Bytes outside the rectangle stay
// as they are.
namespace tavrix {

// Counts the rectangle's bytes into 256 counters, cleared first.
void RegionHistogram(const PageShape& page, PageRect rect, const std::uint8_t* buffer,
                     std::uint32_t* histogram);

inline constexpr int kMostlyDark = 2;
// Pixels below the threshold become 0 in the target, the others 255 where force is set or the target is
// not 0 already. kMostlyDark when (pixels made light) * lightFactor < (dark pixels), else 0. Source and
// target may be the same buffer.
int ThresholdRegion(const PageShape& page, PageRect rect, int threshold, const std::uint8_t* source,
                    std::uint8_t* target, bool force, double lightFactor);

// 3 x 3 mean, rounded down; the source itself on the page's outer frame (row 0, the last row, column 0 and
// the last byte of a row).
void SmoothRegion(const PageShape& page, PageRect rect, const std::uint8_t* source, std::uint8_t* target);

// factor * centre less the eight neighbours, in single precision, limited to 0..255 and truncated; the
// source itself on the frame of the pixels (row 0, the last row, columns 0 and width - 1). Padding that
// belongs to the page is sharpened too: right of a row's last byte lies the next row's first one, and
// beyond the buffer 0.
void SharpenRegion(const PageShape& page, PageRect rect, const std::uint8_t* source, std::uint8_t* target,
                   float factor);

// target = 0 where both are 0, else 255.
void MergeRegionMasks(const PageShape& page, PageRect rect, std::uint8_t* target, const std::uint8_t* other);

// Marks for good what a region's rule decided: 0 becomes 1, 255 becomes 254.
void MarkRegion(const PageShape& page, PageRect rect, std::uint8_t* mask);
// The same with gaps filled, in raster order, each pixel seeing what became of those before it: a 255
// becomes 1 when at least three of its four neighbours are black (0 or 1). Keeps clear of the page's
// outer frame; returns the rectangle it worked on.
PageRect FillAndMarkRegion(const PageShape& page, PageRect rect, std::uint8_t* mask);

}  // namespace tavrix
