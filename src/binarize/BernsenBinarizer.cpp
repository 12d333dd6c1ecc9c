// SPDX-License-Identifier: MIT
#include "binarize/BernsenBinarizer.h"

#include <cstring>
#include <vector>

#include "binarize/BernsenKernels.h"

namespace tavrix {
namespace {

constexpr int kReach = 7;  // pixels from the centre to the window's edge
constexpr std::size_t kStep = BernsenWindow::kStep;

// Rows of extremes that take turns.
class ExtremesRing {
  public:
    ExtremesRing(int ringSize, std::size_t columns)
        : size(ringSize), stride(columns), values(2 * columns * static_cast<std::size_t>(ringSize)) {}
    Extremes Row(int y) {
        std::uint8_t* low = values.data() + 2 * stride * static_cast<std::size_t>(y % size);
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
    if (width <= 0 || height <= 0) return true;
    const auto& kernels = platform::KernelsOf<BernsenKernels>();
    const auto pixels = static_cast<std::size_t>(width);
    const std::size_t columns = (pixels + kStep - 1) / kStep * kStep;
    std::vector<std::uint8_t> padded(columns + kStep + 3), unused(pixels);
    ExtremesRing columns4(1, columns + kStep);
    ExtremesRing rows1(1, columns), rows2(2, columns), rows4(4, columns), rows8(7, columns);
    // The edge pixels are repeated outside. That adds nothing to a clipped window: one that reaches over an
    // edge holds the edge.
    for (int y = -kReach; y < height + kReach; ++y) {
        if (y == -kReach || (y > 0 && y < height)) {
            const std::uint8_t* row = image->Row(y < 0 ? 0 : y);
            std::memset(padded.data(), row[0], kReach);
            std::memcpy(padded.data() + kReach, row, pixels);
            std::memset(padded.data() + kReach + pixels, row[width - 1], kReach);
            kernels.extremesOf4(padded.data(), static_cast<int>(columns + kStep), columns4.Row(0));
        }
        const int turn = y + kReach;
        const BernsenWindow window{columns4.Row(0), rows1.Row(turn), rows2.Row(turn), rows4.Row(turn),
                                   rows8.Row(turn)};
        const int centre = y - kReach;
        kernels.midRangeRow(window, width, centre < 0 ? unused.data() : image->Row(centre));
    }
    return true;
}

}  // namespace tavrix
