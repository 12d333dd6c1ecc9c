// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <vector>

#include "image/DibImage.h"
#include "image/Rect.h"

namespace tavrix::lines {

// What each column of a component holds: its ink pixels and the rows from its lowest to its highest one.
// A column without ink repeats the span of the column before.
struct ColumnProfiles {
    std::vector<std::uint16_t> ink;
    std::vector<std::uint16_t> span;
};

// Of the columns of a box with its sides in order. Outside the image there is no ink.
ColumnProfiles ProfileColumns(const DibImage& image, const Rect& box);

}  // namespace tavrix::lines
