// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

#include "image/Rect.h"
#include "tavrix/tavrix.h"

namespace tavrix::lines {

// A component's box, its sizes at hand.
struct LetterBox : Rect {
    explicit LetterBox(const ComponentNode& node)
        : Rect(RectOf(node)), width(Rect::Width()), height(Rect::Height()) {}
    int width;
    int height;
};

// Rows between two boxes, negative when they share some.
inline int RowGap(const Rect& a, const Rect& b) {
    const Rect shared = Intersection(a, b);
    return shared.y0 - shared.y1;
}

// A line and its components, sorted by left, with what the merging of lines asks of them again and again.
struct MeasuredLine {
    MeasuredLine() = default;
    explicit MeasuredLine(ComponentNode* lineNode) : node(lineNode) { Measure(); }

    void Measure();
    int Count() const { return static_cast<int>(boxes.size()); }

    ComponentNode* node = nullptr;  // null once merged into another line
    std::vector<LetterBox> boxes;   // in list order, ascending x0
    std::vector<int> reach;         // greatest x1 of the boxes up to each one
    int quartileHeight = 0;         // of the tallest quarter, the smallest
};

}  // namespace tavrix::lines
