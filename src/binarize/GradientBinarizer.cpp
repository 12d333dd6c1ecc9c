// SPDX-License-Identifier: MIT
#include "binarize/GradientBinarizer.h"

#include <algorithm>
#include <vector>

#include "binarize/GradientKernels.h"
#include "image/RowRing.h"

namespace tavrix {

bool GradientBinarizer::Binarize() {
    ApplyMarkerPalette();
    if (width <= 0 || height <= 0) return true;
    const auto& kernels = platform::KernelsOf<GradientKernels>();
    constexpr int kRows = GradientKernels::kRows;
    const auto columns = static_cast<std::size_t>(width);
    const std::vector<std::uint8_t> outside(columns);
    const auto values = [&](int y) { return y >= 0 && y < height ? image->Row(y) : outside.data(); };
    // With a magnitude 0 at either end of a row.
    RowRing gradientRows(kRows + 2, columns + 2);
    const auto gradients = [&](int y) { return gradientRows.Row(y) + 1; };
    // The first row becomes black, as where the one before it is the same.
    std::vector<std::uint8_t> previous(columns), spare(image->Row(0), image->Row(0) + columns);
    const auto target = [&](int y) { return y >= 0 && y < height ? image->Row(y) : spare.data(); };

    // Results run a row behind the magnitudes, and these a row behind the values.
    for (int top = 0; top <= height; top += kRows) {
        kernels.gradientRows({values(top - 1), values(top), values(top + 1), values(top + 2), values(top + 3),
                              values(top + 4)},
                             width,
                             {gradients(top), gradients(top + 1), gradients(top + 2), gradients(top + 3)});
        for (int y = std::max(height, top); y < top + kRows; ++y) {
            std::fill_n(gradients(y), columns, std::uint8_t{0});
        }
        kernels.edgeLevelRows({target(top - 1), target(top), target(top + 1), target(top + 2)},
                              previous.data(),
                              {gradients(top - 2), gradients(top - 1), gradients(top), gradients(top + 1),
                               gradients(top + 2), gradients(top + 3)},
                              width);
    }
    return true;
}

}  // namespace tavrix
