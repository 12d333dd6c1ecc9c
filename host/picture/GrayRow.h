// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace host {

// Blue, green, red bytes of a row to their luminance, as picture/GrayLevel.h has it.
void ToGrayRow(const std::uint8_t* from, int width, std::uint8_t* to);

}  // namespace host
