// SPDX-License-Identifier: MIT
#include "components/BoxGrid.h"

#include <algorithm>

namespace tavrix {
namespace {

constexpr int kMinCellSide = 16;         // pixels, about a character
constexpr std::size_t kMaxCells = 1024;  // of one item
constexpr int kMaxRows = 32;             // of one item; bounds MaxHeight, by which callers bound a search

bool InOrder(const Region& box) {
    return box.left <= box.right && box.bottom <= box.top;
}

}  // namespace

Region Union(const Region& a, const Region& b) {
    return {std::min(a.left, b.left), std::min(a.bottom, b.bottom), std::max(a.right, b.right),
            std::max(a.top, b.top)};
}

BoxGrid::BoxGrid(const std::vector<ComponentNode*>& nodes) : removed(nodes.size()), isApart(nodes.size()) {
    boxes.reserve(nodes.size());
    for (const ComponentNode* node : nodes) boxes.push_back(Region::Of(*node));
    Choose(nodes.size());
    entries.reserve(2 * nodes.size());
    for (Position item = 0; item < boxes.size(); ++item) Enter(item, boxes[item], nullptr);
}

// Cells of the mean item's size or larger, so that the items take few cells each and there are few cells
// in all.
void BoxGrid::Choose(std::size_t itemCount) {
    std::int64_t widths = 0;
    std::int64_t heights = 0;
    std::int64_t counted = 0;
    for (const Region& box : boxes) {
        if (!InOrder(box)) continue;
        origin = counted == 0 ? box : Union(origin, box);
        widths += box.right - box.left + 1;
        heights += box.top - box.bottom + 1;
        ++counted;
    }
    const std::int64_t divisor = std::max<std::int64_t>(counted, 1);
    cellWidth = std::max(kMinCellSide, static_cast<int>(widths / divisor));
    cellHeight = std::max(kMinCellSide, static_cast<int>(heights / divisor));
    for (;;) {
        columns = (origin.right - origin.left) / cellWidth + 1;
        rows = (origin.top - origin.bottom) / cellHeight + 1;
        if (std::size_t(columns) * std::size_t(rows) <= 2 * itemCount + kMaxCells) break;
        cellWidth *= 2;
        cellHeight *= 2;
    }
    heads.assign(std::size_t(columns) * std::size_t(rows), kEnd);
}

void BoxGrid::Widen(Position item, const Region& box) {
    const Region old = boxes[item];
    boxes[item] = box;
    if (!isApart[item]) Enter(item, box, &old);
}

void BoxGrid::Enter(Position item, const Region& box, const Region* entered) {
    const int firstColumn = ColumnOf(box.left);
    const int lastColumn = ColumnOf(box.right);
    const int firstRow = RowOf(box.bottom);
    const int lastRow = RowOf(box.top);
    const int height = lastRow - firstRow + 1;
    if (!InOrder(box) || height > kMaxRows ||
        std::size_t(lastColumn - firstColumn + 1) * std::size_t(height) > kMaxCells) {
        isApart[item] = 1;
        apart.push_back(item);
        return;
    }
    maxHeight = std::max(maxHeight, box.top - box.bottom + 1);
    for (int row = firstRow; row <= lastRow; ++row) {
        const bool rowEntered =
            entered != nullptr && row >= RowOf(entered->bottom) && row <= RowOf(entered->top);
        for (int column = firstColumn; column <= lastColumn; ++column) {
            if (rowEntered && column >= ColumnOf(entered->left) && column <= ColumnOf(entered->right)) {
                continue;
            }
            Link& head = heads[CellOf(column, row)];
            entries.push_back({item, head});
            head = static_cast<Link>(entries.size() - 1);
        }
    }
}

}  // namespace tavrix
