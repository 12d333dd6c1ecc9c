// SPDX-License-Identifier: MIT
#pragma once

#include "automatic/Plane.h"

namespace host {

// A gray picture made even: wherever it lies between ink and paper, half-way is kMiddle, whatever the
// light and the paper are there. Where nothing stands out it is white.
struct Levelled {
    Levels picture;
    Levels edges;  // the range of every pixel's 3 x 3 neighbours
};

inline constexpr int kMiddle = 128;

// letterHeight: the typical one in pixels, or 0 where it is not known yet; the sizes of the filters
// follow it.
Levelled Level(const Levels& gray, int letterHeight);

}  // namespace host
