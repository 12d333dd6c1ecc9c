// SPDX-License-Identifier: MIT
#include "regions/RegionPasses.h"

#include <algorithm>
#include <cstring>

#include "binarize/Histogram.h"

namespace tavrix {
namespace {

// Calls pass(y) for each row of a rectangle that has columns.
template <class RowPass>
void ForEachRow(const Rect& rect, const RowPass& pass) {
    if (rect.x1 < rect.x0) return;
    for (int y = rect.y0; y <= rect.y1; ++y) pass(y);
}

// Rows 0 and height - 1, where a 3 x 3 neighbourhood reaches over the edge: the page itself.
bool CopiesEndRow(const ConstPlane& page, const Rect& inside, int y, const std::uint8_t* row,
                  std::uint8_t* target) {
    if (y != 0 && y != page.height - 1) return false;
    std::memcpy(target, row + inside.x0, static_cast<std::size_t>(inside.Width()));
    return true;
}

}  // namespace

std::int64_t AreaOutside(const Rect& rect, const Rect& inside) {
    return rect.Area() - (inside.IsEmpty() ? 0 : inside.Area());
}

void RegionHistogram(const ConstPlane& plane, const Rect& rect, std::uint32_t* histogram) {
    std::fill_n(histogram, kGrayLevels, 0u);
    const Rect inside = Intersection(rect, plane.Reach());
    CountPixels(plane, inside, histogram);
    histogram[0] += static_cast<std::uint32_t>(AreaOutside(rect, inside));
}

Thresholding::Thresholding(int threshold, Earlier earlier)
    : limit(std::clamp(threshold, 0, kGrayLevels)), force(earlier == Earlier::kOverwritten) {}

void Thresholding::AddOutside(std::int64_t pixels) {
    if (limit > 0) {
        dark += pixels;
    } else if (force) {
        light += pixels;
    }
}

Verdict VerdictOf(std::int64_t light, std::int64_t dark, double lightFactor) {
    const bool mostlyDark = static_cast<double>(light) * lightFactor < static_cast<double>(dark);
    return mostlyDark ? Verdict::kMostlyDark : Verdict::kLightEnough;
}

Verdict ThresholdRegion(const ConstPlane& source, const Plane& target, const Rect& rect, int threshold,
                        Earlier earlier, double lightFactor) {
    const Rect inside = Intersection(rect, source.Reach());
    Thresholding thresholding(threshold, earlier);
    ForEachRow(inside, [&](int y) {
        thresholding.Add(source.Row(y) + inside.x0, inside.Width(), target.Row(y) + inside.x0);
    });
    thresholding.AddOutside(AreaOutside(rect, inside));
    return thresholding.Result(lightFactor);
}

RowTriple RowsAround(const ConstPlane& plane, int y) {
    return {plane.Row(std::max(y - 1, 0)), plane.Row(y), plane.Row(std::min(y + 1, plane.height - 1))};
}

void Smoothing::operator()(int y, const RowTriple& rows, std::uint8_t* target) const {
    const auto [before, row, after] = rows;
    if (CopiesEndRow(page, inside, y, row, target)) return;
    const int start = inside.x0, end = page.rowBytes - 1;
    const int first = std::max(start, 1), last = std::min<int>(inside.x1, end - 1);
    // The last column may have no right neighbour to read.
    const int lastFull = std::min(last, page.columns - 2);
    if (start == 0) target[0] = row[0];
    if (inside.x1 == end) target[end - start] = row[end];
    meanRow(before + first, row + first, after + first, lastFull - first + 1, target + (first - start));
    for (int x = std::max(first, lastFull + 1); x <= last; ++x) {
        const int sum = before[x - 1] + before[x] + row[x - 1] + row[x] + after[x - 1] + after[x];
        target[x - start] = static_cast<std::uint8_t>(sum / 9);
    }
}

// In single precision the difference is exact where it is not negative, and the neighbours are whole: so
// the kernel may truncate the product first.
void Sharpening::operator()(int y, const RowTriple& rows, std::uint8_t* target) const {
    const auto [before, row, after] = rows;
    if (CopiesEndRow(page, inside, y, row, target)) return;
    const int start = inside.x0;
    const int first = std::max(start, 1), last = std::min<int>(inside.x1, page.width - 2);
    sharpenRow(before + first, row + first, after + first, last - first + 1, factor,
               target + (first - start));
    for (const int x : {0, page.width - 1}) {
        if (x >= start && x <= inside.x1) target[x - start] = row[x];
    }
    if (inside.x1 >= page.width) SharpenPadding(y, rows, target);
}

void Sharpening::SharpenPadding(int y, const RowTriple& rows, std::uint8_t* target) const {
    const auto [before, row, after] = rows;
    const int start = inside.x0, end = page.rowBytes - 1;
    const int first = std::max(start, page.width);
    const bool hasLast = inside.x1 == end && y == page.height - 2;
    const int last = hasLast ? end - 1 : inside.x1;
    sharpenRow(before + first, row + first, after + first, last - first + 1, factor,
               target + (first - start));
    if (!hasLast) return;
    // The last byte of the last row but one has a neighbour beyond the buffer.
    const int sum = before[end - 1] + before[end] + before[end + 1] + row[end - 1] + row[end + 1] +
                    after[end - 1] + after[end];
    const int product = static_cast<int>(factor.single * static_cast<float>(row[end]));
    target[end - start] = static_cast<std::uint8_t>(std::clamp(product - sum, 0, 255));
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
