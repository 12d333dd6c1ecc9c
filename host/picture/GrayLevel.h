// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

// Luminance as the library weighs it: 0.299 red + 0.587 green + 0.114 blue, rounded, in doubles. Loops work
// in whole numbers, which say the same but in the middle between two levels.
namespace host {

// The luminance and half a level.
inline unsigned Thousandths(unsigned red, unsigned green, unsigned blue) {
    return 299 * red + 587 * green + 114 * blue + 500;
}

inline unsigned LevelOf(unsigned thousandths) {
    return (thousandths / 8 * 33555) >> 22;  // by 125, exact up to 255,500
}

inline bool IsMiddle(unsigned level, unsigned thousandths) {
    return level * 1000 == thousandths;
}

inline std::uint8_t GrayOf(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
    return static_cast<std::uint8_t>(0.299 * red + 0.587 * green + 0.114 * blue + 0.5);
}

}  // namespace host
