// SPDX-License-Identifier: MIT
#include "image/PixelKernels.h"

namespace tavrix::TAVRIX_KERNEL_TARGET {

void PackAbove(const std::uint8_t* row, int width, std::uint8_t limit, std::uint8_t* packed) {
    for (int x = 0; x < width; x += 8) {
        const int count = width - x < 8 ? width - x : 8;
        unsigned byte = 0;
        for (int i = 0; i < count; ++i) byte |= (row[x + i] > limit ? 0x80u : 0u) >> i;
        packed[x / 8] = static_cast<std::uint8_t>(byte);
    }
}

void GrayRow(const std::uint8_t* row, int width, std::uint8_t* gray) {
    for (int x = 0; x < width; ++x) {
        const double blue = row[3 * x], green = row[3 * x + 1], red = row[3 * x + 2];
        gray[x] = static_cast<std::uint8_t>(0.299 * red + 0.587 * green + 0.114 * blue + 0.5);
    }
}

}  // namespace tavrix::TAVRIX_KERNEL_TARGET
