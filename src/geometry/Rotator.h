// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "image/DibImage.h"
#include "tavrix/tavrix.h"

namespace tavrix {

// What the right-angle turns of 1-bit images offer. Orientation codes: 0 as it is, 1 a quarter turn
// clockwise (as displayed, row 0 at the bottom), 2 a half turn, 3 a quarter turn counter-clockwise,
// 4 upside down, 5 mirrored left to right, then as 3; any other as 0.
class Rotator {
  public:
    // Maps the rectangle of a node through a turn of the whole image, as RotateRect does. Always true.
    virtual bool RotateNodeRect(ComponentNode* node, std::uint16_t code) = 0;
    // A new image: a block of the tool's image, turned. Null when it covers no pixel or memory runs out.
    virtual ImagePtr RotateBlock(const BlockRect& block, std::uint16_t code) = 0;
    // A new image: a whole 1-bit image turned clockwise by 0, 90, 180 or 270 degrees. Null for another
    // angle or when memory runs out.
    virtual ImagePtr RotateOneBit(const DibImage& source, int angle) = 0;
    virtual ~Rotator() = default;
};

}  // namespace tavrix
