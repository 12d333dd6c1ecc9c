// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "tavrix/tavrix.h"

namespace tavrix {

class DibImage;

// What the right-angle turns of 1-bit images offer. Orientation codes: 0 as it is, 1 a quarter turn
// clockwise (as displayed, row 0 at the bottom), 2 a half turn, 3 a quarter turn counter-clockwise,
// 4 upside down, 5 mirrored left to right, then as 3; any other as 0.
class Rotator {
  public:
    // Maps the rectangle of a node through a turn of the whole image, as RotateRect does.
    virtual bool RotateNodeRect(ComponentNode* node, std::uint16_t code) = 0;
    // Cuts a block out of the image and turns it. Takes over target, an empty image. The result is the
    // caller's: target or a new image; null when the block covers no pixel or memory runs out.
    virtual DibImage* RotateBlock(BlockRect block, std::uint16_t code, DibImage* target) = 0;
    // Turns a whole 1-bit image clockwise by 0, 90, 180 or 270 degrees and releases it. Null, with the
    // image left alone, for another angle or when memory runs out.
    virtual DibImage* RotateOneBit(DibImage* image, int angle) = 0;
    virtual ~Rotator() = default;
};

}  // namespace tavrix
