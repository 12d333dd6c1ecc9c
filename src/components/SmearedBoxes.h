// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

#include "image/Rect.h"

namespace tavrix {

// A component's stretched box. Wide ones merge only when one lies inside the other.
struct SmearedBox : Rect {
    bool wide = false;
};

// The rectangles overlap by two columns and two rows, or the first lies inside the second.
bool OverlapsOrLiesIn(const Rect& a, const Rect& b);

using MergeRule = bool (*)(const SmearedBox& box, const SmearedBox& later);

// Merges boxes until a pass over them merges none. A pass takes each box in order and compares it, as it
// grows, with every later one; it absorbs those that the rule allows: only boxes that meet, and of boxes of
// which one is wide only such as one of them holds the other.
std::vector<SmearedBox> MergeOverlaps(std::vector<SmearedBox> boxes, MergeRule rule);

}  // namespace tavrix
