// SPDX-License-Identifier: MIT
#pragma once

#include "tavrix/tavrix.h"

namespace tavrix::lines {

// Joins lines of the first block, each sorted by left, that overlap and vote for it or continue each other
// along the rows, until nothing joins. pageWidth: in columns.
void MergeLinePairs(ComponentStore& store, int pageWidth);

}  // namespace tavrix::lines
