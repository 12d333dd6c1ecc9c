// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstdint>

#include "tavrix/tavrix.h"

namespace tavrix {

// Columns x0..x1 of the stored rows y0..y1, all inclusive. The library makes rectangles with x0 <= x1 and
// y0 <= y1; the nodes of a host's store may have their sides in any order.
struct Rect {
    std::int16_t x0 = 0;
    std::int16_t y0 = 0;  // smallest row
    std::int16_t x1 = 0;
    std::int16_t y1 = 0;  // largest row

    // Columns and rows. Sizes are compared as unsigned 16-bit numbers, whatever the order of the sides.
    int Width() const { return static_cast<std::uint16_t>(x1 - x0 + 1); }
    int Height() const { return static_cast<std::uint16_t>(y1 - y0 + 1); }
    std::int64_t Area() const { return std::int64_t{Width()} * Height(); }
    // Nothing lies in it: a pair of sides is out of order.
    bool IsEmpty() const { return x0 > x1 || y0 > y1; }
};

// A side kept within 16 bits.
inline std::int16_t ClampedSide(int side) {
    return static_cast<std::int16_t>(std::clamp(side, INT16_MIN, INT16_MAX));
}

// The smallest rectangle that holds both.
inline Rect Union(const Rect& a, const Rect& b) {
    return {std::min(a.x0, b.x0), std::min(a.y0, b.y0), std::max(a.x1, b.x1), std::max(a.y1, b.y1)};
}
// What both share. Where they share no column, x0 - x1 is the gap between them, and so for rows.
inline Rect Intersection(const Rect& a, const Rect& b) {
    return {std::max(a.x0, b.x0), std::max(a.y0, b.y0), std::min(a.x1, b.x1), std::min(a.y1, b.y1)};
}
inline bool Contains(const Rect& outer, const Rect& inner) {
    return outer.x0 <= inner.x0 && outer.y0 <= inner.y0 && outer.x1 >= inner.x1 && outer.y1 >= inner.y1;
}
// They share a pixel at least.
inline bool DoMeet(const Rect& a, const Rect& b) {
    return !Intersection(a, b).IsEmpty();
}
// They share two columns and two rows at least.
inline bool DoOverlap(const Rect& a, const Rect& b) {
    const Rect shared = Intersection(a, b);
    return shared.x0 < shared.x1 && shared.y0 < shared.y1;
}

// The rectangle with its sides in order.
inline Rect Ordered(const Rect& rect) {
    return {std::min(rect.x0, rect.x1), std::min(rect.y0, rect.y1), std::max(rect.x0, rect.x1),
            std::max(rect.y0, rect.y1)};
}
// With its sides in order and so many more columns and rows on each side, as far as 16 bits reach.
inline Rect Extended(const Rect& rect, int columns, int rows) {
    const Rect core = Ordered(rect);
    return {ClampedSide(core.x0 - columns), ClampedSide(core.y0 - rows), ClampedSide(core.x1 + columns),
            ClampedSide(core.y1 + rows)};
}

// The records that hosts share call the largest row top and the smallest bottom.
inline Rect RectOf(const ComponentNode& node) {
    return {node.left, node.bottom, node.right, node.top};
}
inline Rect RectOf(const BlockRect& block) {
    return {block.left, block.bottom, block.right, block.top};
}
template <class SharedRecord>
void SetRect(SharedRecord& record, const Rect& rect) {
    record.left = rect.x0;
    record.top = rect.y1;
    record.right = rect.x1;
    record.bottom = rect.y0;
}

}  // namespace tavrix
