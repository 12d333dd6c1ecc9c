// SPDX-License-Identifier: MIT
#include "binarize/GradientBinarizer.h"

#include <cstring>

#include "binarize/GradientKernels.h"
#include "image/RowRing.h"

namespace tavrix {

bool GradientBinarizer::Binarize() {
    ApplyMarkerPalette();
    const auto& kernels = platform::KernelsOf<GradientKernels>();
    constexpr std::size_t kStep = GradientKernels::kStep;
    const auto columns = static_cast<std::size_t>(width);
    const std::size_t rowSize = 1 + (columns + kStep - 1) / kStep * kStep + kStep;
    // With a pixel 0 at either end of a row; rows outside the image are all 0.
    RowRing valueRows(4, rowSize), gradientRows(3, rowSize), lowRows(3, rowSize), eighthRows(3, rowSize);
    const auto values = [&](int y) { return valueRows.Row(y) + 1; };
    const auto gradients = [&](int y) { return gradientRows.Row(y) + 1; };
    const auto smoothed = [&](int y) {
        return GradientKernels::Smoothed{lowRows.Row(y), reinterpret_cast<std::int8_t*>(eighthRows.Row(y))};
    };
    const auto load = [&](int y) {
        if (y < height) {
            std::memcpy(values(y), image->Row(y), columns);
        } else {
            std::memset(values(y), 0, columns);
        }
        kernels.smoothRow(values(y), width, smoothed(y));
    };
    load(0);
    // Magnitudes run a row ahead of the result, values two rows.
    for (int y = -1; y < height; ++y) {
        load(y + 2);
        if (y + 1 < height) {
            kernels.gradientRow(values(y), values(y + 1), values(y + 2), smoothed(y), smoothed(y + 2), width,
                                gradients(y + 1));
            gradients(y + 1)[width] = 0;
        } else {
            std::memset(gradients(y + 1), 0, columns);
        }
        if (y == 0) {
            std::memset(image->Row(0), 0, columns);
        } else if (y > 0) {
            kernels.edgeLevelRow(values(y), values(y - 1), gradients(y - 1), gradients(y), gradients(y + 1),
                                 width, image->Row(y));
        }
    }
    return true;
}

}  // namespace tavrix
