// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace tavrix {

// What the measurements of a page tell the rules of its regions or lines. Made once, with the pre-mask; the
// defaults are for images that are not measured.
struct PageFindings {
    std::int32_t strokeEndCount = 0;   // of the mask of the page's edges
    bool useAltRegionRule = false;     // a busy page: the alternative rule
    bool sharpenAllowed = true;        // not on very bright busy pages
    bool darkTextHint = false;         // bright paper with dark text: look for a threshold inside the dark
    bool midToneHint = false;          // a gray page with dark text (line rules only)
    bool globalThresholdUsed = false;  // the pre-mask is a gray threshold: wide components may be text
    bool secondPass = false;           // rules work on the smoothed page, too
};

}  // namespace tavrix
