// SPDX-License-Identifier: MIT
#pragma once

#include "image/DibImage.h"
#include "tavrix/tavrix.h"

namespace tavrix::lines {

// Cuts components that hold several characters which touch into pieces as wide as the line's characters,
// each shrunk to its ink in the image. Sorts the lines by left. Where memory or the store's room runs out
// the rest of a component stays whole.
void SplitWideComponents(ComponentStore& store, const DibImage& image);

}  // namespace tavrix::lines
