// SPDX-License-Identifier: MIT
#pragma once

#include "image/Plane.h"

// What is done to a region of the result (0 black, 255 white) when its rule is through. 1 and 254 mark what
// is black and white for good.
namespace tavrix {

enum class Finish {
    kFillAndMark,  // fill gaps of a pixel, then mark
    kMark,
    kLeave,   // as the rule left it
    kInvert,  // a dark band with bright text becomes dark text on white
};

// What a rule asks for.
struct Finishing {
    Finish how;
    bool withStrongEdges = false;  // strong edges of the gray page become black, all else white
};

// A region of text, and what is to be done about it.
struct RegionNode {
    Rect rect;
    Finishing finishing;
};

// Gives the rectangle it worked on: filling keeps clear of the page's frame.
Rect FinishRegion(const Plane& result, const Rect& rect, Finish how);

// Black for good where the gray page has strong edges or the result is black for good, else white for good.
// The rectangle lies inside the planes.
void AddStrongEdges(const ConstPlane& gray, const Plane& result, const Rect& rect);

}  // namespace tavrix
