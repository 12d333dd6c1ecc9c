// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "image/NeighbourhoodKernels.h"
#include "image/Plane.h"
#include "regions/RegionKernels.h"

// Passes over a rectangle of planes of one shape. Pixels outside the rectangle stay as they are; a
// rectangle may reach beyond the plane.
namespace tavrix {

// Counts the rectangle's pixels into 256 counters, cleared first.
void RegionHistogram(const ConstPlane& plane, const Rect& rect, std::uint32_t* histogram);

// Pixels of a rectangle that lie outside the plane, of which `inside` is the part inside.
std::int64_t AreaOutside(const Rect& rect, const Rect& inside);

// What becomes of black that earlier passes left in the target.
enum class Earlier { kBlackStays, kOverwritten };
enum class Verdict { kLightEnough, kMostlyDark };
// kMostlyDark when (pixels made light) * lightFactor < (dark pixels).
Verdict VerdictOf(std::int64_t light, std::int64_t dark, double lightFactor);

// Thresholds rows of a rectangle: pixels below the threshold become 0 in the target, the others 255, unless
// they are 0 in the target already and that stays.
class Thresholding {
  public:
    Thresholding(int threshold, Earlier earlier);
    // The target may be the row.
    void Add(const std::uint8_t* row, int count, std::uint8_t* target) {
        thresholdRow(row, count, limit, force, target, &dark, &light);
    }
    // So many pixels of value 0 that have no target.
    void AddOutside(std::int64_t pixels);
    Verdict Result(double lightFactor) const { return VerdictOf(light, dark, lightFactor); }

  private:
    int limit;
    bool force;
    std::int64_t dark = 0, light = 0;
    decltype(RegionKernels::thresholdRegionRow) thresholdRow =
        platform::KernelsOf<RegionKernels>().thresholdRegionRow;
};
// The same for a rectangle of a plane; source and target may be the same.
Verdict ThresholdRegion(const ConstPlane& source, const Plane& target, const Rect& rect, int threshold,
                        Earlier earlier, double lightFactor);

// Three rows of a page from column 0 on. At the page's ends the row itself stands for what is missing.
struct RowTriple {
    const std::uint8_t *before, *row, *after;
};
RowTriple RowsAround(const ConstPlane& plane, int y);

// Rows of a smoothed page, columns inside.x0..x1, worked out one at a time: the 3 x 3 mean, rounded down;
// the page itself on the outer frame (row 0, the last row, column 0 and the last byte of a row).
class Smoothing {
  public:
    Smoothing(const ConstPlane& shape, const Rect& insideOfShape) : page(shape), inside(insideOfShape) {}
    // target[0] is column inside.x0.
    void operator()(int y, const RowTriple& rows, std::uint8_t* target) const;

  private:
    ConstPlane page;
    Rect inside;
    decltype(NeighbourhoodKernels::meanRow) meanRow = platform::KernelsOf<NeighbourhoodKernels>().meanRow;
};

// The same of a sharpened page: factor * centre less the eight neighbours, in single precision, limited to
// 0..255 and truncated; the page itself on the frame of the pixels (row 0, the last row, columns 0 and
// width - 1). Padding that belongs to the plane is sharpened too: right of a row's last byte lies the next
// row's first one, and beyond the last row 0.
class Sharpening {
  public:
    Sharpening(const ConstPlane& shape, const Rect& insideOfShape, float centreFactor)
        : page(shape), inside(insideOfShape), factor(centreFactor) {}
    void operator()(int y, const RowTriple& rows, std::uint8_t* target) const;

  private:
    void SharpenPadding(int y, const RowTriple& rows, std::uint8_t* target) const;

    ConstPlane page;
    Rect inside;
    SharpeningFactor factor;
    decltype(NeighbourhoodKernels::sharpenRow) sharpenRow =
        platform::KernelsOf<NeighbourhoodKernels>().sharpenRow;
};

// Marks for good what a region's rule decided: 0 becomes 1, 255 becomes 254.
void MarkRegion(const Plane& result, const Rect& rect);
// The same with gaps filled, in raster order, each pixel seeing what became of those before it: a 255
// becomes 1 when at least three of its four neighbours are black (0 or 1). Keeps clear of the outer frame;
// gives the rectangle it worked on, which may be empty.
Rect FillAndMarkRegion(const Plane& result, const Rect& rect);

}  // namespace tavrix
