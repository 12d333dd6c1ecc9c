// SPDX-License-Identifier: MIT
#pragma once

#include "tavrix/tavrix.h"

namespace tavrix::lines {

// Height of the characters in rows, one above the height that most components share.
// Of the store's first line, without its tallest few: those that are not wide count; the line's own height
// when none does, 0 without a line.
int EstimateTextHeight(const ComponentStore& store);
// Of any line, its tallest components too: those that are neither wide nor tall count; 1 when none does.
int EstimateLineHeight(const ComponentNode& line);

}  // namespace tavrix::lines
