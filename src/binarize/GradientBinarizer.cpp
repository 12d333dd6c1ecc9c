// SPDX-License-Identifier: MIT
#include "binarize/GradientBinarizer.h"

#include <cstring>

#include "binarize/GradientKernels.h"
#include "image/RowRing.h"

namespace tavrix {

bool GradientBinarizer::Binarize() {
    ApplyMarkerPalette();
    const auto& kernels = platform::KernelsOf<GradientKernels>();
    const auto columns = static_cast<std::size_t>(width);
    // With a pixel 0 at either end of a row; rows outside the image are all 0.
    RowRing valueRows(4, columns + 2), gradientRows(3, columns + 2);
    const auto values = [&](int y) { return valueRows.Row(y) + 1; };
    const auto gradients = [&](int y) { return gradientRows.Row(y) + 1; };
    const auto load = [&](int y) {
        if (y < height) {
            std::memcpy(values(y), image->Row(y), columns);
        } else {
            std::memset(values(y), 0, columns);
        }
    };
    load(0);
    // Magnitudes run a row ahead of the result, values two rows.
    for (int y = -1; y < height; ++y) {
        load(y + 2);
        if (y + 1 < height) {
            kernels.gradientRow(values(y), values(y + 1), values(y + 2), width, gradients(y + 1));
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
