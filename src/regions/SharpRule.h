// SPDX-License-Identifier: MIT
#pragma once

#include "regions/Region.h"

namespace tavrix {

// Smooths a rectangle, thresholds it and, where the stroke ends of the page tell of text, sharpens it.
// Reads and writes as the rules of StandardRules.h do.
Finishing BinarizeRegionSharp(const RulePlanes& planes, const Rect& rect);

}  // namespace tavrix
