// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tavrix/tavrix.h"

namespace tavrix {

// A rectangle in columns and stored rows, inclusive, wide enough for any arithmetic on 16-bit sides.
struct Region {
    int left = 0;
    int bottom = 0;
    int right = 0;
    int top = 0;

    static Region Of(const ComponentNode& node) { return {node.left, node.bottom, node.right, node.top}; }
    bool Contains(const Region& other) const {
        return left <= other.left && bottom <= other.bottom && right >= other.right && top >= other.top;
    }
};

// The union of two regions.
Region Union(const Region& a, const Region& b);

// A uniform grid over nodes of a list, which are named by their positions in it. It finds the nodes near
// a region without a look at all of them; what is near enough is for the caller to test. The few nodes
// that cover very many cells, and those whose sides are in the wrong order, stand in a list of their own
// that every search goes through.
class BoxGrid {
  public:
    using Position = std::uint32_t;

    explicit BoxGrid(const std::vector<ComponentNode*>& nodes);

    void Remove(Position item) { removed[item] = 1; }
    bool IsRemoved(Position item) const { return removed[item] != 0; }
    const Region& BoxOf(Position item) const { return boxes[item]; }
    // Gives an item a box that contains its earlier one.
    void Widen(Position item, const Region& box);

    // The greatest height of an item that does not stand in the list of its own.
    int MaxHeight() const { return maxHeight; }

    // Calls visit(position) for every item left whose cells meet those of the region, some of them more
    // than once.
    template <class Visit>
    void ForEachNear(const Region& region, Visit&& visit) {
        ForEachApart(visit);
        const int lastColumn = ColumnOf(region.right);
        for (int column = ColumnOf(region.left); column <= lastColumn; ++column) {
            ForEachInColumn(column, region.bottom, region.top, visit);
        }
    }
    // The same for the items of the list of its own, and for those of one column of cells.
    template <class Visit>
    void ForEachApart(Visit&& visit) {
        for (std::size_t i = 0; i < apart.size();) {
            if (removed[apart[i]]) {
                apart[i] = apart.back();
                apart.pop_back();
            } else {
                visit(apart[i++]);
            }
        }
    }
    template <class Visit>
    void ForEachInColumn(int column, int bottom, int top, Visit&& visit) {
        const int lastRow = RowOf(top);
        for (int row = RowOf(bottom); row <= lastRow; ++row) {
            Link* link = &heads[CellOf(column, row)];
            while (*link != kEnd) {
                Entry& entry = entries[*link];
                if (removed[entry.item]) {
                    *link = entry.next;  // no later search meets it
                } else {
                    visit(entry.item);
                    link = &entry.next;
                }
            }
        }
    }

    int Columns() const { return columns; }
    // The column of cells at x, the nearest one for an x outside; and the first x of a column.
    int ColumnOf(int x) const { return CellIndex(x - origin.left, cellWidth, columns); }
    int LeftOf(int column) const { return origin.left + column * cellWidth; }

  private:
    using Link = std::uint32_t;
    static constexpr Link kEnd = 0xFFFFFFFF;
    struct Entry {
        Position item;
        Link next;
    };

    static int CellIndex(int offset, int cellSize, int count) {
        return offset <= 0 ? 0 : offset / cellSize < count ? offset / cellSize : count - 1;
    }
    int RowOf(int y) const { return CellIndex(y - origin.bottom, cellHeight, rows); }
    std::size_t CellOf(int column, int row) const { return std::size_t(row) * columns + column; }
    void Choose(std::size_t itemCount);
    // Enters an item into the cells of box that are not cells of entered (none when null).
    void Enter(Position item, const Region& box, const Region* entered);

    std::vector<Region> boxes;
    std::vector<std::uint8_t> removed;
    std::vector<Position> apart;
    std::vector<std::uint8_t> isApart;
    std::vector<Link> heads;
    std::vector<Entry> entries;
    Region origin;
    int cellWidth = 0;
    int cellHeight = 0;
    int columns = 1;
    int rows = 1;
    int maxHeight = 0;
};

}  // namespace tavrix
