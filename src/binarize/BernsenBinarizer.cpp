// SPDX-License-Identifier: MIT
#include "binarize/BernsenBinarizer.h"

#include <cstring>
#include <vector>

#include "binarize/BernsenKernels.h"
#include "image/RowRing.h"

namespace tavrix {
namespace {

constexpr int kReach = 7;  // pixels from the centre to the window's edge
constexpr std::size_t kStep = BernsenWindow::kStep;

// Of a ring's row: the lowest values, then the highest.
Extremes ExtremesOf(RowRing& ring, int y, std::size_t columns) {
    return {ring.Row(y), ring.Row(y) + columns};
}

}  // namespace

bool BernsenBinarizer::Binarize() {
    ApplyMarkerPalette();
    if (width <= 0 || height <= 0) return true;
    const auto& kernels = platform::KernelsOf<BernsenKernels>();
    const auto pixels = static_cast<std::size_t>(width);
    const std::size_t columns = (pixels + kStep - 1) / kStep * kStep;
    std::vector<std::uint8_t> padded(columns + kStep + 3), unused(pixels);
    RowRing columns4(1, 2 * (columns + kStep));
    RowRing rows1(1, 2 * columns), rows2(2, 2 * columns), rows4(4, 2 * columns), rows8(7, 2 * columns);
    const Extremes entering = ExtremesOf(columns4, 0, columns + kStep);
    // The edge pixels are repeated outside. That adds nothing to a clipped window: one that reaches over an
    // edge holds the edge.
    for (int y = -kReach; y < height + kReach; ++y) {
        if (y == -kReach || (y > 0 && y < height)) {
            const std::uint8_t* row = image->Row(y < 0 ? 0 : y);
            std::memset(padded.data(), row[0], kReach);
            std::memcpy(padded.data() + kReach, row, pixels);
            std::memset(padded.data() + kReach + pixels, row[width - 1], kReach);
            kernels.extremesOf4(padded.data(), static_cast<int>(columns + kStep), entering);
        }
        const int turn = y + kReach;
        const BernsenWindow window{entering, ExtremesOf(rows1, turn, columns),
                                   ExtremesOf(rows2, turn, columns), ExtremesOf(rows4, turn, columns),
                                   ExtremesOf(rows8, turn, columns)};
        const int centre = y - kReach;
        kernels.midRangeRow(window, width, centre < 0 ? unused.data() : image->Row(centre));
    }
    return true;
}

}  // namespace tavrix
