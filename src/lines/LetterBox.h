// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "image/Rect.h"
#include "tavrix/tavrix.h"

namespace tavrix::lines {

// A component's box, its sizes at hand.
struct LetterBox : Rect {
    LetterBox(const ComponentNode& node, const ComponentStore& store)
        : Rect(RectOf(node)),
          width(static_cast<std::uint16_t>(Rect::Width())),
          height(static_cast<std::uint16_t>(Rect::Height())),
          reach(x1),
          slot(static_cast<std::uint16_t>(&node - store.nodes)) {}
    std::uint16_t width;
    std::uint16_t height;
    std::int16_t reach;  // the greatest x1 of the line's components up to this one
    std::uint16_t slot;  // of its node in the store
};
static_assert(TAVRIX_STORE_CAPACITY <= 0x10000);

// Rows between two boxes, negative when they share some.
inline int RowGap(const Rect& a, const Rect& b) {
    const Rect shared = Intersection(a, b);
    return shared.y0 - shared.y1;
}

}  // namespace tavrix::lines
