// SPDX-License-Identifier: MIT
#include "binarize/LocalContrastBinarizer.h"

#include <vector>

#include "binarize/LocalContrastKernels.h"
#include "binarize/WindowColumns.h"

namespace tavrix {

bool LocalContrastBinarizer::Binarize() {
    const std::int32_t threshold = ImageOtsuThreshold();
    ApplyMarkerPalette();
    CompareWithWindows(threshold);
    return true;
}

void LocalContrastBinarizer::CompareWithWindows(std::int32_t globalThreshold) {
    if (width <= 0) return;
    constexpr int kReach = WindowColumns::kRows / 2;  // pixels from the centre to the window's edge
    const auto& kernels = platform::KernelsOf<LocalContrastKernels>();
    // Rows are overwritten while the window still needs them: it keeps copies of its five.
    WindowColumns window(width);
    const LocalContrastKernels::Columns columns = window.Columns();
    const std::vector<std::uint8_t> below(static_cast<std::size_t>(width), WindowColumns::kWhite);
    for (int entering = 0; entering < height + kReach; ++entering) {
        kernels.slideWindow(entering < height ? image->Row(entering) : below.data(), window.Row(entering),
                            width, columns);
        const int y = entering - kReach;
        if (y >= 0) kernels.contrastRow(image->Row(y), width, columns, globalThreshold);
    }
}

}  // namespace tavrix
