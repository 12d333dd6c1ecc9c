// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "image/Plane.h"
#include "regions/EdgeMeasures.h"
#include "regions/Mask.h"
#include "regions/PageFindings.h"

// The rough foreground in which a page's text is looked for: edges of the page, edges of the smoothed page,
// or what lies below a gray threshold. The choice goes by the count of stroke ends and the histogram class.
namespace tavrix {

struct PreMask {
    PageFindings page;
    Mask foreground;
};

// What is known of a page before.
struct MeasuredPage {
    ConstPlane gray;  // its margins painted
    Plane edges;      // its edge strengths; may be measured anew
    Strokes strokes;  // from MaskStrokes
    const std::uint32_t* histogram;
};

// For the edge-guided method; the histogram is that of the page before its margins were painted.
PreMask ChoosePreMask(const MeasuredPage& measured);
// For the line method; the histogram is that of the painted page.
PreMask ChooseLinePreMask(const MeasuredPage& measured);

}  // namespace tavrix
