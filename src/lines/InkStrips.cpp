// SPDX-License-Identifier: MIT
#include "lines/InkStrips.h"

#include <bit>
#include <optional>

namespace tavrix::lines {

Rect ShrinkToInk(const DibImage& image, const Rect& box) {
    const Rect insideOut{box.x1, box.y1, box.x0, box.y0};
    const InkStrips strips(image, box);
    if (strips.IsEmpty()) return insideOut;
    std::optional<int> first;
    int last = 0;
    for (int x = strips.FirstColumn(); x <= strips.LastColumn(); x += kStripWidth) {
        const std::uint64_t inked = strips.InkedColumns(x);
        if (inked == 0) continue;
        if (!first) first = x + std::countl_zero(inked);
        last = x + kStripWidth - 1 - std::countr_zero(inked);
    }
    if (!first) return insideOut;
    int y0 = strips.FirstRow();
    while (!strips.IsInked(y0)) ++y0;
    int y1 = strips.LastRow();
    while (!strips.IsInked(y1)) --y1;
    return {static_cast<std::int16_t>(*first), static_cast<std::int16_t>(y0), static_cast<std::int16_t>(last),
            static_cast<std::int16_t>(y1)};
}

}  // namespace tavrix::lines
