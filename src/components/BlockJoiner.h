// SPDX-License-Identifier: MIT
#pragma once

#include "components/BlockGathering.h"
#include "tavrix/tavrix.h"

namespace tavrix {

// Joins blocks that are aligned above or beside each other, or that touch, until none is left to join: the
// components of the later block's first line go to the earlier one's, and the later block goes. Every block
// has a first line. mean: of the components, in pixels.
void JoinBlocks(ComponentStore& store, const MeanSize& mean);

}  // namespace tavrix
