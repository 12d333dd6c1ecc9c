// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "image/Plane.h"

namespace tavrix {

inline constexpr int kGrayLevels = 256;

// Adds the pixels of a rectangle inside the plane to 256 counters.
void CountPixels(const ConstPlane& plane, const Rect& rect, std::uint32_t* histogram);

}  // namespace tavrix
