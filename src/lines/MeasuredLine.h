// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <vector>

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

// A line and its components, sorted by left, with what the merging of lines asks of them again and again.
struct MeasuredLine {
    MeasuredLine() = default;
    MeasuredLine(ComponentNode* lineNode, const ComponentStore& store) : node(lineNode) { Measure(store); }

    // Reads the components from the tree.
    void Measure(const ComponentStore& store);
    // After a change of the heights.
    void UpdateQuartile();
    // Makes the components the line's children in the tree.
    void WriteLinks(const ComponentStore& store);
    int Count() const { return static_cast<int>(boxes.size()); }

    ComponentNode* node = nullptr;       // null once merged into another line
    std::vector<LetterBox> boxes;        // in list order, ascending x0
    std::vector<std::uint16_t> heights;  // of the boxes, ascending
    int quartileHeight = 0;              // of the tallest quarter, the smallest
    bool isAhead = false;                // of the tree, where the line's children are not these any more
    // What the projection of the columns needs to do: no box meets a rule for sides out of order or out of
    // range, and the line's rectangle is their union ..
    bool isPlain = false;
    // .. and each stands over columns of its own, so that there is nothing to do.
    bool isProjected = false;
};

}  // namespace tavrix::lines
