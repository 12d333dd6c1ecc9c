// SPDX-License-Identifier: MIT
#include "binarize/LocalContrastBinarizer.h"

#include <vector>

#include "binarize/LocalContrastKernels.h"

namespace tavrix {
namespace {

constexpr int kReach = 2;  // pixels from the centre to the window's edge
constexpr int kSide = 2 * kReach + 1;
constexpr std::uint8_t kOutside = 255;

}  // namespace

bool LocalContrastBinarizer::Binarize() {
    const std::int32_t threshold = ImageOtsuThreshold();
    ApplyMarkerPalette();
    CompareWithWindows(threshold);
    return true;
}

void LocalContrastBinarizer::CompareWithWindows(std::int32_t globalThreshold) {
    if (width <= 0) return;
    const auto& kernels = platform::KernelsOf<LocalContrastKernels>();
    // Rows are overwritten while the window still needs them: it keeps copies of its five.
    const auto columns = static_cast<std::size_t>(width);
    std::vector<std::uint8_t> window(kSide * columns, kOutside);
    const std::vector<std::uint8_t> below(columns, kOutside);
    std::vector<std::uint16_t> sums(columns + 2 * kReach, kSide * kOutside);
    std::vector<std::int32_t> squares(columns + 2 * kReach, kSide * kOutside * kOutside);
    for (int entering = 0; entering < height + kReach; ++entering) {
        kernels.slideWindow(entering < height ? image->Row(entering) : below.data(),
                            window.data() + entering % kSide * columns, width, sums.data() + kReach,
                            squares.data() + kReach);
        const int y = entering - kReach;
        if (y < 0) continue;
        kernels.contrastRow(image->Row(y), width, sums.data(), squares.data(), globalThreshold);
    }
}

}  // namespace tavrix
