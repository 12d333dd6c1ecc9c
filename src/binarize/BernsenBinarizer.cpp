// SPDX-License-Identifier: MIT
#include "binarize/BernsenBinarizer.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "binarize/BernsenKernels.h"

namespace tavrix {
namespace {

constexpr int kReach = 7;  // pixels from the centre to the window's edge
constexpr int kSide = 2 * kReach + 1;

// A ring of rows of extremes: row y is there until row y + size comes.
class ExtremesRing {
  public:
    ExtremesRing(int ringSize, int columns)
        : size(ringSize), stride(static_cast<std::size_t>(columns)), values(2 * size * stride) {}
    Extremes Row(int y) {
        std::uint8_t* low = values.data() + static_cast<std::size_t>(2 * (y % size)) * stride;
        return {low, low + stride};
    }

  private:
    int size;
    std::size_t stride;
    std::vector<std::uint8_t> values;
};

}  // namespace

bool BernsenBinarizer::Binarize() {
    ApplyMarkerPalette();
    if (width == 0 || height == 0) return true;
    // Repeating the edge pixels outside adds nothing to a window, since a window that reaches over an edge
    // holds the edge.
    std::vector<std::uint8_t> padded(static_cast<std::size_t>(width + 2 * kReach));
    ExtremesRing rowOf4(1, width + 2 * kReach), rows(2, width), of2(3, width), of4(5, width), of8(8, width);
    // Window row y spans the image rows from y - 14 to y, rows of2 .. of8 the last 2 .. 8 of them.
    const int end = height + 2 * kReach;
    for (int y = 0; y < end; ++y) {
        if (y == 0 || (y > kReach && y < height + kReach)) {
            const std::uint8_t* row = image->Row(std::max(y - kReach, 0));
            std::memset(padded.data(), row[0], kReach);
            std::memcpy(padded.data() + kReach, row, static_cast<std::size_t>(width));
            std::memset(padded.data() + kReach + width, row[width - 1], kReach);
            TAVRIX_KERNEL(ExtremesOf4)(padded.data(), width + 2 * kReach - 3, rowOf4.Row(0));
            TAVRIX_KERNEL(ExtremesOf15)(rowOf4.Row(0), width, rows.Row(y));
        } else {
            const Extremes last = rows.Row(y - 1);
            TAVRIX_KERNEL(MergeExtremes)(last, last, width, rows.Row(y));
        }
        if (y >= 1) TAVRIX_KERNEL(MergeExtremes)(rows.Row(y), rows.Row(y - 1), width, of2.Row(y));
        if (y >= 3) TAVRIX_KERNEL(MergeExtremes)(of2.Row(y), of2.Row(y - 2), width, of4.Row(y));
        if (y >= 7) TAVRIX_KERNEL(MergeExtremes)(of4.Row(y), of4.Row(y - 4), width, of8.Row(y));
        if (y >= kSide - 1) {
            TAVRIX_KERNEL(MidRangeRow)(image->Row(y - 2 * kReach), width, of8.Row(y), of8.Row(y - 7));
        }
    }
    return true;
}

}  // namespace tavrix
