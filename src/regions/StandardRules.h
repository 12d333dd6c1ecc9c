// SPDX-License-Identifier: MIT
#pragma once

#include "regions/Region.h"

// The rules of pages that are not busy: threshold one rectangle of the gray page into the result, and say
// what is to be done with it then.
namespace tavrix {

// A region of the edge-guided method. The rectangle lies inside the page.
Finishing BinarizeRegion(const PageFindings& page, const RulePlanes& planes, const Rect& rect);
// A line of the line method. The rectangle may reach a column and a row beyond the page.
Finish LineRule(const PageFindings& page, const RulePlanes& planes, const Rect& rect);

// A dark region whose tones hold darker text: that text, with strong edges added. Else at the isodata
// threshold.
Finishing BinarizeDarkText(const Region& region);

}  // namespace tavrix
