// SPDX-License-Identifier: MIT
#include "binarize/ThresholdKernels.h"

namespace tavrix::TAVRIX_KERNEL_TARGET {

void ThresholdRow(std::uint8_t* row, int width, std::uint8_t threshold) {
    for (int x = 0; x < width; ++x) row[x] = row[x] < threshold ? 0 : 255;
}

}  // namespace tavrix::TAVRIX_KERNEL_TARGET
