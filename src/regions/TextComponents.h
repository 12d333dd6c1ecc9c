// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

#include "image/Plane.h"
#include "regions/Mask.h"

namespace tavrix {

// A component of the size of text, in columns and rows of the page.
struct ComponentRecord {
    int group;  // index of its row group
    int area;
    Rect box;
    int centreX, centreY;
};

// The components of a mask, of which every second column counts, that have the size of
// text: at least five runs, 33 pixels, lower than two thirds of the page and narrower than half of it. Where
// wideToo is set, wider ones that are mostly dark in the gray page are accepted as well. Sorted into row
// groups from row 0 upward, a group's records from left to right.
std::vector<ComponentRecord> FindTextComponents(const Mask& mask, const ConstPlane& gray, bool wideToo);

}  // namespace tavrix
