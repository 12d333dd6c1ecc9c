// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

namespace tavrix {

inline constexpr int kGrayLevels = 256;

// Adds the bytes of a rectangle to 256 counters: height rows of width bytes, rowBytes apart.
void CountPixels(const std::uint8_t* first, std::size_t rowBytes, int width, int height,
                 std::uint32_t* histogram);

}  // namespace tavrix
