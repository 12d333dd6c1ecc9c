// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "lines/LetterBox.h"

namespace tavrix::lines {

// What some boxes have at most: the rows that they lie in, and the least and the greatest of their heights.
struct Extent {
    std::int16_t y0 = INT16_MAX;
    std::int16_t y1 = INT16_MIN;
    std::uint16_t least = UINT16_MAX;
    std::uint16_t greatest = 0;
};

// The extents of a line's boxes, strip of columns by strip, under a binary tree: a search along the line
// passes by strips where it cannot end. A box counts where it begins.
class ColumnExtents {
  public:
    bool IsEmpty() const { return nodes.empty(); }
    void Clear() {
        nodes.clear();
        leaves = 0;
    }
    // Of boxes that ascend by x0.
    void Build(const std::vector<LetterBox>& boxes);
    // After a change of boxes that begin in column x. False when that needs a new tree.
    [[nodiscard]] bool Update(const std::vector<LetterBox>& boxes, int x);

    // The last box up to position i whose strip may hold what is looked for, or -1.
    template <class MayHold>
    int Last(const std::vector<LetterBox>& boxes, int i, MayHold mayHold) const {
        if (i < 0) return -1;
        std::size_t node = LeafOf(boxes[static_cast<std::size_t>(i)].x0);
        if (mayHold(nodes[node])) return i;
        while (!mayHold(nodes[node]) || node < leaves) {
            if (mayHold(nodes[node])) {
                node = 2 * node + 1;
            } else {
                while (node % 2 == 0) node /= 2;
                if (node == 1) return -1;
                --node;
            }
        }
        return CountUpTo(boxes, node) - 1;
    }
    // The first box from position i on, or the count.
    template <class MayHold>
    int First(const std::vector<LetterBox>& boxes, int i, MayHold mayHold) const {
        if (i >= static_cast<int>(boxes.size())) return i;
        std::size_t node = LeafOf(boxes[static_cast<std::size_t>(i)].x0);
        if (mayHold(nodes[node])) return i;
        while (!mayHold(nodes[node]) || node < leaves) {
            if (mayHold(nodes[node])) {
                node = 2 * node;
            } else {
                while (node % 2 == 1 && node != 1) node /= 2;
                if (node == 1) return static_cast<int>(boxes.size());
                ++node;
            }
        }
        return CountUpTo(boxes, node - 1);
    }

  private:
    static constexpr int kStripBits = 6;  // of columns: strips of 64

    std::size_t LeafOf(int x) const { return leaves + static_cast<std::size_t>((x >> kStripBits) - first); }
    // The boxes in the strips up to a leaf's.
    int CountUpTo(const std::vector<LetterBox>& boxes, std::size_t leaf) const;

    int first = 0;              // strip
    std::size_t leaves = 0;     // a power of two
    std::vector<Extent> nodes;  // node k stands over 2 k and 2 k + 1; the leaves come last
};

}  // namespace tavrix::lines
