// SPDX-License-Identifier: MIT
#pragma once

#include "components/ImageFrame.h"
#include "tavrix/tavrix.h"

namespace tavrix::lines {

// Deletes rules, frame edges and strangers from the first block's lines of very large type, fits the lines to
// what is left and deletes those without any, and then a block without lines. A line's character height is
// its lineHeight, or estimated where that is 0.
void CleanTrueLine(ComponentStore& store, const ImageFrame& page);

}  // namespace tavrix::lines
