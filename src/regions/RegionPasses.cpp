// SPDX-License-Identifier: MIT
#include "regions/RegionPasses.h"

#include <algorithm>
#include <cstring>

#include "binarize/Histogram.h"
#include "image/NeighbourhoodKernels.h"
#include "regions/RegionKernels.h"

namespace tavrix {
namespace {

// Calls pass(y) for each row of a rectangle that has columns.
template <class RowPass>
void ForEachRow(const Rect& rect, const RowPass& pass) {
    if (rect.x1 < rect.x0) return;
    for (int y = rect.y0; y <= rect.y1; ++y) pass(y);
}

std::int64_t AreaOutside(const Rect& rect, const Rect& inside) {
    return rect.Area() - (inside.IsEmpty() ? 0 : inside.Area());
}

// Rows 0 and height - 1, where a 3 x 3 neighbourhood reaches over the edge: the source itself.
bool CopiesEndRow(const ConstPlane& source, const Plane& target, const Rect& inside, int y) {
    if (y != 0 && y != source.height - 1) return false;
    std::memcpy(target.Row(y) + inside.x0, source.Row(y) + inside.x0,
                static_cast<std::size_t>(inside.Width()));
    return true;
}

}  // namespace

void RegionHistogram(const ConstPlane& plane, const Rect& rect, std::uint32_t* histogram) {
    std::fill_n(histogram, kGrayLevels, 0u);
    const Rect inside = Intersection(rect, plane.Reach());
    CountPixels(plane, inside, histogram);
    histogram[0] += static_cast<std::uint32_t>(AreaOutside(rect, inside));
}

Verdict ThresholdRegion(const ConstPlane& source, const Plane& target, const Rect& rect, int threshold,
                        Earlier earlier, double lightFactor) {
    const int limit = std::clamp(threshold, 0, kGrayLevels);
    const bool force = earlier == Earlier::kOverwritten;
    std::int64_t dark = 0, light = 0;
    const Rect inside = Intersection(rect, source.Reach());
    const auto thresholdRow = platform::KernelsOf<RegionKernels>().thresholdRegionRow;
    ForEachRow(inside, [&](int y) {
        thresholdRow(source.Row(y) + inside.x0, inside.Width(), limit, force, target.Row(y) + inside.x0,
                     &dark, &light);
    });
    if (limit > 0) {
        dark += AreaOutside(rect, inside);
    } else if (force) {
        light += AreaOutside(rect, inside);
    }
    const bool mostlyDark = static_cast<double>(light) * lightFactor < static_cast<double>(dark);
    return mostlyDark ? Verdict::kMostlyDark : Verdict::kLightEnough;
}

void SmoothRegion(const ConstPlane& source, const Plane& target, const Rect& rect) {
    const Rect inside = Intersection(rect, source.Reach());
    const auto meanRow = platform::KernelsOf<NeighbourhoodKernels>().meanRow;
    const int end = source.rowBytes - 1;
    const int first = std::max<int>(inside.x0, 1), last = std::min<int>(inside.x1, end - 1);
    // The last column may have no right neighbour to read.
    const int lastFull = std::min(last, source.columns - 2);
    ForEachRow(inside, [&](int y) {
        if (CopiesEndRow(source, target, inside, y)) return;
        const std::uint8_t *before = source.Row(y - 1), *row = source.Row(y), *after = source.Row(y + 1);
        std::uint8_t* out = target.Row(y);
        if (inside.x0 == 0) out[0] = row[0];
        if (inside.x1 == end) out[end] = row[end];
        meanRow(before + first, row + first, after + first, lastFull - first + 1, out + first);
        for (int x = std::max(first, lastFull + 1); x <= last; ++x) {
            const int sum = before[x - 1] + before[x] + row[x - 1] + row[x] + after[x - 1] + after[x];
            out[x] = static_cast<std::uint8_t>(sum / 9);
        }
    });
}

// In single precision the difference is exact where it is not negative, and the neighbours are whole: so
// the kernel may truncate the product first.
void SharpenRegion(const ConstPlane& source, const Plane& target, const Rect& rect, float factor) {
    const Rect inside = Intersection(rect, source.Reach());
    const auto sharpenRow = platform::KernelsOf<NeighbourhoodKernels>().sharpenRow;
    const int end = source.rowBytes - 1;
    ForEachRow(inside, [&](int y) {
        if (CopiesEndRow(source, target, inside, y)) return;
        const std::uint8_t *before = source.Row(y - 1), *row = source.Row(y), *after = source.Row(y + 1);
        std::uint8_t* out = target.Row(y);
        const auto sharpen = [&](int first, int last) {
            sharpenRow(before + first, row + first, after + first, last - first + 1, factor, out + first);
        };
        sharpen(std::max<int>(inside.x0, 1), std::min<int>(inside.x1, source.width - 2));
        for (const int x : {0, source.width - 1}) {
            if (x >= inside.x0 && x <= inside.x1) out[x] = row[x];
        }
        // Padding, when it belongs to the plane.
        const int firstPadding = std::max({static_cast<int>(inside.x0), 1, source.width});
        if (inside.x1 < end || firstPadding > end || y != source.height - 2) {
            sharpen(firstPadding, inside.x1);
            return;
        }
        // The last byte of the last row but one has a neighbour beyond the buffer.
        sharpen(firstPadding, end - 1);
        const int sum = before[end - 1] + before[end] + before[end + 1] + row[end - 1] + row[end + 1] +
                        after[end - 1] + after[end];
        const int product = static_cast<int>(factor * static_cast<float>(row[end]));
        out[end] = static_cast<std::uint8_t>(std::clamp(product - sum, 0, 255));
    });
}

void MergeRegionMasks(const Plane& target, const ConstPlane& other, const Rect& rect) {
    const Rect inside = Intersection(rect, target.Reach());
    const auto mergeRow = platform::KernelsOf<RegionKernels>().mergeRow;
    ForEachRow(inside,
               [&](int y) { mergeRow(target.Row(y) + inside.x0, other.Row(y) + inside.x0, inside.Width()); });
}

void MarkRegion(const Plane& result, const Rect& rect) {
    const Rect inside = Intersection(rect, result.Reach());
    const auto markRow = platform::KernelsOf<RegionKernels>().markRow;
    ForEachRow(inside, [&](int y) { markRow(result.Row(y) + inside.x0, inside.Width()); });
}

Rect FillAndMarkRegion(const Plane& result, const Rect& rect) {
    const Rect core = Intersection(
        rect, {1, 1, ClampedSide(result.rowBytes - 2), static_cast<std::int16_t>(result.height - 2)});
    const Rect inside = Intersection(core, result.Reach());
    const auto fillAndMarkRow = platform::KernelsOf<RegionKernels>().fillAndMarkRow;
    const bool blackAfter = inside.x1 + 1 >= result.columns;  // reads 0
    ForEachRow(inside, [&](int y) {
        fillAndMarkRow(result.Row(y - 1) + inside.x0, result.Row(y) + inside.x0,
                       result.Row(y + 1) + inside.x0, inside.Width(), blackAfter);
    });
    return core;
}

}  // namespace tavrix
