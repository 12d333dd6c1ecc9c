// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "image/Plane.h"
#include "regions/PageFindings.h"

// The rough foreground in which a page's text is looked for: edges of the page, edges of the smoothed page,
// or what lies below a gray threshold. The choice goes by the count of stroke ends and the histogram class.
namespace tavrix {

struct PreMaskPlanes {
    ConstPlane gray;  // the page, its margins painted
    Plane edges;      // its edge strengths; may be measured anew
    Plane mask;       // 0 foreground, 255 background; comes with the mask of MaskStrokes
};

// For the edge-guided method; the histogram is that of the page before its margins were painted.
PageFindings ChoosePreMask(const PreMaskPlanes& planes, const std::uint32_t* histogram, int strokeEndCount);
// For the line method; the histogram is that of the painted page.
PageFindings ChooseLinePreMask(const PreMaskPlanes& planes, const std::uint32_t* histogram,
                               int strokeEndCount);

}  // namespace tavrix
