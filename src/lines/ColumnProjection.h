// SPDX-License-Identifier: MIT
#pragma once

#include "image/Rect.h"
#include "tavrix/tavrix.h"

namespace tavrix::lines {

// A run of columns [from, to).
struct ColumnRun {
    int from;
    int to;
};

// The columns over which a component counts as standing: wide ones leave their outermost columns to the
// neighbours. None where to <= from.
ColumnRun CoverageOf(const Rect& box);

// Replaces the components of a line that stand over the same columns by one, whose pixelCount is 0. They
// end right to left; components over no such column follow.
void MergeByColumnProjection(ComponentStore& store, ComponentNode* line);

}  // namespace tavrix::lines
