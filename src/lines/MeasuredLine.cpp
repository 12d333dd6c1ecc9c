// SPDX-License-Identifier: MIT
#include "lines/MeasuredLine.h"

#include <algorithm>
#include <cstddef>

#include "components/ComponentTree.h"
#include "lines/ColumnProjection.h"

namespace tavrix::lines {
namespace {

constexpr std::size_t kManyBoxes = 100;

// Unions with such boxes hold nothing else, and they stand over some column.
bool IsPlain(const LetterBox& box) {
    return box.x0 < box.x1 && box.y0 <= box.y1 && box.x0 > INT16_MIN && box.y0 > INT16_MIN &&
           Contains(box, store::kUnionStart);
}

// The rectangle is the union of all its boxes, whether moves widened it over a side of -1 or not.
bool IsUnion(const Rect& rect, const Rect& bounds) {
    return Contains(rect, bounds) && Contains(bounds, rect) && rect.x0 != -1 && rect.y0 != -1;
}

}  // namespace

void MeasuredLine::Measure(const ComponentStore& store) {
    boxes.clear();
    heights.clear();
    isAhead = false;
    isPlain = isProjected = true;
    Rect bounds = store::kUnionStart;
    int coveredTo = INT16_MIN;
    store::ForEachChild(*node, [&](const ComponentNode* child) {
        LetterBox box(*child, store);
        if (!boxes.empty()) box.reach = std::max(box.reach, boxes.back().reach);
        boxes.push_back(box);
        heights.push_back(box.height);
        bounds = Union(bounds, box);
        const ColumnRun covered = CoverageOf(box);
        isPlain = isPlain && IsPlain(box);
        isProjected = isProjected && covered.from > coveredTo;
        coveredTo = covered.to;
    });
    isPlain = isPlain && !boxes.empty() && IsUnion(RectOf(*node), bounds);
    isProjected = isProjected && isPlain;
    std::sort(heights.begin(), heights.end());
    UpdateQuartile();
    BuildExtents();
}

void MeasuredLine::BuildExtents() {
    extents.Clear();
    if (isProjected && boxes.size() >= kManyBoxes) extents.Build(boxes);
}

void MeasuredLine::UpdateQuartile() {
    if (!heights.empty()) quartileHeight = heights[heights.size() - 1 - heights.size() / 4];
}

void MeasuredLine::WriteLinks(const ComponentStore& store) {
    ComponentNode* prev = nullptr;
    for (const LetterBox& box : boxes) {
        ComponentNode* const child = store.nodes + box.slot;
        (prev != nullptr ? prev->next : node->firstChild) = child;
        child->prev = prev;
        child->next = nullptr;
        child->parent = node;
        prev = child;
    }
    isAhead = false;
}

}  // namespace tavrix::lines
