// SPDX-License-Identifier: MIT
#pragma once

#include "tavrix/tavrix.h"

namespace tavrix {

class DibImage;

// Makes a new block for the host, locked once, with a 1-bit image inside a white margin on all sides;
// the bits that fill up its rows are set as well. The colour table is black and white, the resolution the
// image's. The new sides are at most kMaxSide. False, with result left alone, when memory runs out.
[[nodiscard]] bool SurroundWithWhite(const DibImage& image, int margin, DibRecord* result);

}  // namespace tavrix
