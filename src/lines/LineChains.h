// SPDX-License-Identifier: MIT
#pragma once

#include "tavrix/tavrix.h"

namespace tavrix::lines {

// Chains the components of the store's first line, sorted by left, from left to right, each to the one that
// goes on best after it, and gives each chain a line of its own at the head of the block. pixelCount of a
// component is then the number of its chain.
void ChainIntoLines(ComponentStore& store);

}  // namespace tavrix::lines
