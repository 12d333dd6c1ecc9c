// SPDX-License-Identifier: MIT
#include "binarize/LocalContrastKernels.h"

namespace tavrix::TAVRIX_KERNEL_TARGET {
namespace {

constexpr int kWindowPixels = 25;
constexpr int kShift = 20;  // levels
// A deviation of 20 levels, as 25 Q - S^2 of the window's sum S and sum of squares Q: (20 * 25)^2.
constexpr int kContrastLimit = 250000;

}  // namespace

void SlideWindow(const std::uint8_t* entering, std::uint8_t* leaving, int width, std::uint16_t* sums,
                 std::int32_t* squares) {
    for (int x = 0; x < width; ++x) {
        const int in = entering[x], out = leaving[x];
        sums[x] = static_cast<std::uint16_t>(sums[x] + in - out);
        squares[x] += in * in - out * out;
        leaving[x] = static_cast<std::uint8_t>(in);
    }
}

void ContrastRow(std::uint8_t* row, int width, const std::uint16_t* sums, const std::int32_t* squares,
                 int globalThreshold) {
    for (int x = 0; x < width; ++x) {
        const int sum = sums[x] + sums[x + 1] + sums[x + 2] + sums[x + 3] + sums[x + 4];
        const int square = squares[x] + squares[x + 1] + squares[x + 2] + squares[x + 3] + squares[x + 4];
        const int mean = sum / kWindowPixels;
        const int base = kWindowPixels * square - sum * sum >= kContrastLimit ? mean : globalThreshold;
        const int threshold = mean < globalThreshold ? base + kShift : base - kShift;
        row[x] = row[x] <= threshold ? 0 : 255;
    }
}

}  // namespace tavrix::TAVRIX_KERNEL_TARGET
