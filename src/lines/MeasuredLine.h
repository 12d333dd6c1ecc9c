// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <vector>

#include "lines/ColumnExtents.h"
#include "lines/LetterBox.h"
#include "tavrix/tavrix.h"

namespace tavrix::lines {

// A line and its components, sorted by left, with what the merging of lines asks of them again and again.
struct MeasuredLine {
    MeasuredLine() = default;
    MeasuredLine(ComponentNode* lineNode, const ComponentStore& store) : node(lineNode) { Measure(store); }

    // Reads the components from the tree.
    void Measure(const ComponentStore& store);
    // After a change of the heights.
    void UpdateQuartile();
    // Makes the extents anew, where so many components are worth it.
    void BuildExtents();
    // Makes the components the line's children in the tree.
    void WriteLinks(const ComponentStore& store);
    int Count() const { return static_cast<int>(boxes.size()); }

    ComponentNode* node = nullptr;       // null once merged into another line
    std::vector<LetterBox> boxes;        // in list order, ascending x0
    std::vector<std::uint16_t> heights;  // of the boxes, ascending
    int quartileHeight = 0;              // of the tallest quarter, the smallest
    ColumnExtents extents;               // of the boxes; none of few and of a line that is not projected
    bool isAhead = false;                // of the tree, where the line's children are not these any more
    // What the projection of the columns needs to do: no box meets a rule for sides out of order or out of
    // range, and the line's rectangle is their union ..
    bool isPlain = false;
    // .. and each stands over columns of its own, so that there is nothing to do.
    bool isProjected = false;
};

}  // namespace tavrix::lines
