// SPDX-License-Identifier: MIT
#pragma once

#include "tavrix/tavrix.h"

namespace tavrix::lines {

// Merges pieces of one character that stand over each other, a dot over its stem among them, in the store's
// first line, sorted by left, until nothing merges. Pixel counts are not added.
void MergeColumnFragments(ComponentStore& store);

}  // namespace tavrix::lines
