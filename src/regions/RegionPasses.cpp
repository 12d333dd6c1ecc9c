// SPDX-License-Identifier: MIT
#include "regions/RegionPasses.h"

#include <algorithm>
#include <cstring>

#include "binarize/Histogram.h"
#include "image/NeighbourhoodKernels.h"
#include "regions/RegionKernels.h"

namespace tavrix {
namespace {

// The part of a rectangle that lies inside the page, with 32-bit coordinates.
struct Inside {
    int x0, y0, x1, y1;

    Inside(const PageShape& page, PageRect rect)
        : x0(std::max<int>(rect.x0, 0)),
          y0(std::max<int>(rect.y0, 0)),
          x1(std::min<int>(rect.x1, page.columns - 1)),
          y1(std::min<int>(rect.y1, page.height - 1)) {}

    int Columns() const { return x1 - x0 + 1; }
    std::int64_t Area() const { return x1 < x0 || y1 < y0 ? 0 : std::int64_t{Columns()} * (y1 - y0 + 1); }
};

// Calls pass with the offset of each row's first byte of the rectangle.
template <class RowPass>
void ForEachRow(const PageShape& page, const Inside& rect, const RowPass& pass) {
    if (rect.x1 < rect.x0) return;
    for (int y = rect.y0; y <= rect.y1; ++y) pass(page.Offset(y) + rect.x0);
}

}  // namespace

void RegionHistogram(const PageShape& page, PageRect rect, const std::uint8_t* buffer,
                     std::uint32_t* histogram) {
    std::fill_n(histogram, kGrayLevels, 0u);
    const Inside inside(page, rect);
    if (inside.Area() > 0) {
        CountPixels(buffer + page.Offset(inside.y0) + inside.x0, page.rowBytes, inside.Columns(),
                    inside.y1 - inside.y0 + 1, histogram);
    }
    histogram[0] += static_cast<std::uint32_t>(std::max<std::int64_t>(rect.Area() - inside.Area(), 0));
}

int ThresholdRegion(const PageShape& page, PageRect rect, int threshold, const std::uint8_t* source,
                    std::uint8_t* target, bool force, double lightFactor) {
    const int limit = std::clamp(threshold, 0, 256);
    std::int64_t dark = 0, light = 0;
    const Inside inside(page, rect);
    const auto& kernels = platform::KernelsOf<RegionKernels>();
    ForEachRow(page, inside, [&](std::size_t row) {
        kernels.thresholdRegionRow(source + row, inside.Columns(), limit, force, target + row, &dark, &light);
    });
    const std::int64_t outside = std::max<std::int64_t>(rect.Area() - inside.Area(), 0);
    if (limit > 0) {
        dark += outside;
    } else if (force) {
        light += outside;
    }
    return static_cast<double>(light) * lightFactor < static_cast<double>(dark) ? kMostlyDark : 0;
}

void SmoothRegion(const PageShape& page, PageRect rect, const std::uint8_t* source, std::uint8_t* target) {
    const Inside inside(page, rect);
    const auto& kernels = platform::KernelsOf<NeighbourhoodKernels>();
    const int first = std::max(inside.x0, 1), last = std::min(inside.x1, page.rowBytes - 2);
    // The last column may have no right neighbour to read.
    const int lastFull = std::min(last, page.columns - 2);
    ForEachRow(page, inside, [&](std::size_t rowStart) {
        const std::size_t offset = rowStart - inside.x0;
        const std::uint8_t* row = source + offset;
        std::uint8_t* out = target + offset;
        if (offset == 0 || offset == page.Offset(page.height - 1)) {
            std::memcpy(out + inside.x0, row + inside.x0, static_cast<std::size_t>(inside.Columns()));
            return;
        }
        const std::uint8_t *before = row - page.rowBytes, *after = row + page.rowBytes;
        if (inside.x0 == 0) out[0] = row[0];
        if (inside.x1 == page.rowBytes - 1) out[inside.x1] = row[inside.x1];
        kernels.meanRow(before + first, row + first, after + first, lastFull - first + 1, out + first);
        for (int x = std::max(first, lastFull + 1); x <= last; ++x) {
            const int sum = before[x - 1] + before[x] + row[x - 1] + row[x] + after[x - 1] + after[x];
            out[x] = static_cast<std::uint8_t>(sum / 9);
        }
    });
}

// In single precision the difference is exact where it is not negative, and the neighbours are whole: so
// the kernel may truncate the product first.
void SharpenRegion(const PageShape& page, PageRect rect, const std::uint8_t* source, std::uint8_t* target,
                   float factor) {
    const Inside inside(page, rect);
    const auto sharpenRow = platform::KernelsOf<NeighbourhoodKernels>().sharpenRow;
    const int end = page.rowBytes - 1;
    ForEachRow(page, inside, [&](std::size_t rowStart) {
        const std::size_t offset = rowStart - inside.x0;
        const std::uint8_t* row = source + offset;
        std::uint8_t* out = target + offset;
        if (offset == 0 || offset == page.Offset(page.height - 1)) {
            std::memcpy(out + inside.x0, row + inside.x0, static_cast<std::size_t>(inside.Columns()));
            return;
        }
        const std::uint8_t *before = row - page.rowBytes, *after = row + page.rowBytes;
        const auto sharpen = [&](int first, int last) {
            sharpenRow(before + first, row + first, after + first, last - first + 1, factor, out + first);
        };
        sharpen(std::max(inside.x0, 1), std::min(inside.x1, page.width - 2));
        for (const int x : {0, page.width - 1}) {
            if (x >= inside.x0 && x <= inside.x1) out[x] = row[x];
        }
        // Padding, when it belongs to the page.
        const int firstPadding = std::max({inside.x0, 1, page.width});
        if (inside.x1 < end || firstPadding > end || offset != page.Offset(page.height - 2)) {
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

void MergeRegionMasks(const PageShape& page, PageRect rect, std::uint8_t* target, const std::uint8_t* other) {
    const Inside inside(page, rect);
    const auto& kernels = platform::KernelsOf<RegionKernels>();
    ForEachRow(page, inside,
               [&](std::size_t row) { kernels.mergeRow(target + row, other + row, inside.Columns()); });
}

void MarkRegion(const PageShape& page, PageRect rect, std::uint8_t* mask) {
    const Inside inside(page, rect);
    const auto& kernels = platform::KernelsOf<RegionKernels>();
    ForEachRow(page, inside, [&](std::size_t row) { kernels.markRow(mask + row, inside.Columns()); });
}

PageRect FillAndMarkRegion(const PageShape& page, PageRect rect, std::uint8_t* mask) {
    rect.x0 = std::max<std::int16_t>(rect.x0, 1);
    rect.y0 = std::max<std::int16_t>(rect.y0, 1);
    rect.x1 = static_cast<std::int16_t>(std::min<int>(rect.x1, page.rowBytes - 2));
    rect.y1 = static_cast<std::int16_t>(std::min<int>(rect.y1, page.height - 2));
    const Inside inside(page, rect);
    const auto& kernels = platform::KernelsOf<RegionKernels>();
    ForEachRow(page, inside, [&](std::size_t start) {
        std::uint8_t* row = mask + start;
        const bool outside = inside.x1 + 1 >= page.columns;  // reads 0
        kernels.fillAndMarkRow(row - page.rowBytes, row, row + page.rowBytes, inside.Columns(), outside);
    });
    return rect;
}

}  // namespace tavrix
