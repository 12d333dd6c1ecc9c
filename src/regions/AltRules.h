// SPDX-License-Identifier: MIT
#pragma once

#include "regions/Region.h"

// The rules of busy pages, where sharpening would bring out the ground: as in StandardRules.h, but a
// threshold that suits the region's histogram, on the gray or the smoothed page.
namespace tavrix {

Finish BinarizeRegionAlt(const PageFindings& page, const RulePlanes& planes, const Rect& rect);
Finish LineRuleAlt(const PageFindings& page, const RulePlanes& planes, const Rect& rect);

}  // namespace tavrix
