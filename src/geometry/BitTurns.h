// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "image/DibImage.h"
#include "tavrix/tavrix.h"

// Turns and mirrors of 1-bit images, row 0 at the bottom. Each gives a new image, or null when memory runs
// out.
namespace tavrix {

// Cuts a block out of the image, as far as it lies in it, and turns it by an orientation code (Rotator.h).
// A block with bottom > top comes out black. Null also when the block covers no pixel.
[[nodiscard]] ImagePtr TurnedBlock(const DibImage& image, const BlockRect& block, std::uint16_t code);

// The whole image turned clockwise by 0, 90, 180 or 270 degrees; null for another angle.
[[nodiscard]] ImagePtr TurnedWhole(const DibImage& image, int angle);

// The whole image upside down, or mirrored left to right. Header and colour table are the image's.
[[nodiscard]] ImagePtr Flipped(const DibImage& image);
[[nodiscard]] ImagePtr Mirrored(const DibImage& image);

}  // namespace tavrix
