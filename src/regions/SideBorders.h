// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "regions/PageShape.h"

namespace tavrix {

// Widths in pixels of the dark bands where a scanner saw beyond the card; 0 for none.
struct SideBorders {
    int left, right;
};

// Looks for the edge of the card in the outer eighths of the rows from the middle of the page to seven
// eighths of it.
SideBorders FindSideBorders(const PageShape& page, const std::uint8_t* gray);

// Gives `count` columns from x0 on, inside the page, the value in every row; likewise whole rows.
void PaintColumns(const PageShape& page, std::uint8_t* gray, int x0, int count, std::uint8_t value);
void PaintRows(const PageShape& page, std::uint8_t* gray, int y0, int count, std::uint8_t value);

}  // namespace tavrix
