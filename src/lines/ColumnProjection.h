// SPDX-License-Identifier: MIT
#pragma once

#include "tavrix/tavrix.h"

namespace tavrix::lines {

// Replaces the components of a line that stand over the same columns by one, whose pixelCount is 0. They
// end right to left; components over no such column follow.
void MergeByColumnProjection(ComponentStore& store, ComponentNode* line);

}  // namespace tavrix::lines
