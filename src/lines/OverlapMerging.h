// SPDX-License-Identifier: MIT
#pragma once

#include "tavrix/tavrix.h"

namespace tavrix::lines {

// Merges components of one line whose boxes overlap by two columns and two rows: goes through each list and
// merges every later component that overlaps the current one, whose box grows on the way and whose
// pixelCount becomes the sum. Marks the blocks as built.
void MergeOverlappingComponents(ComponentStore& store);

}  // namespace tavrix::lines
