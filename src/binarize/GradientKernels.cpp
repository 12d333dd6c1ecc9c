// SPDX-License-Identifier: MIT
#include "binarize/GradientKernels.h"

namespace tavrix::TAVRIX_KERNEL_TARGET {
namespace {

// White for a quarter of the neighbours' sum from 1 to 99.
constexpr unsigned kWhiteFrom = 4, kBlackFrom = 400;

inline int Magnitude(int component) {
    return component < 0 ? -component : component;
}

}  // namespace

void GradientRow(const std::uint8_t* above, const std::uint8_t* values, const std::uint8_t* below, int width,
                 std::uint8_t* __restrict gradient) {
    for (int x = 0; x < width; ++x) {
        const int gx =
            above[x + 1] - above[x - 1] + 2 * (values[x + 1] - values[x - 1]) + below[x + 1] - below[x - 1];
        const int gy = below[x - 1] - above[x - 1] + 2 * (below[x] - above[x]) + below[x + 1] - above[x + 1];
        gradient[x] = static_cast<std::uint8_t>(Magnitude(gx) + Magnitude(gy));
    }
}

void EdgeLevelRow(const std::uint8_t* values, const std::uint8_t* previous, const std::uint8_t* gradientAbove,
                  const std::uint8_t* gradient, const std::uint8_t* gradientBelow, int width,
                  std::uint8_t* __restrict row) {
    for (int x = 0; x < width; ++x) {
        const unsigned sum =
            static_cast<unsigned>(gradientAbove[x] + gradient[x - 1] + gradient[x + 1] + gradientBelow[x]);
        const bool white = values[x] != previous[x] && sum >= kWhiteFrom && sum < kBlackFrom;
        row[x] = white ? 255 : 0;
    }
}

}  // namespace tavrix::TAVRIX_KERNEL_TARGET
