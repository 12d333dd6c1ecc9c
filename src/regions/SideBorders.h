// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "image/Plane.h"

namespace tavrix {

// Widths in pixels of the dark bands where a scanner saw beyond the card; 0 for none.
struct SideBorders {
    int left, right;
};

// Looks for the edge of the card in the outer eighths of the rows from the middle of the page to seven
// eighths of it.
SideBorders FindSideBorders(const ConstPlane& gray);

// Gives the page's margins a value, as far as they lie inside: `left` columns, one column less than `right`,
// and the first and last rows.
void PaintMargins(const Plane& gray, int left, int right, std::uint8_t value);

// Gives every pixel a value; padding stays as it is.
void FillPixels(const Plane& plane, std::uint8_t value);

}  // namespace tavrix
