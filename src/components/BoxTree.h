// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "image/Rect.h"

namespace tavrix {

// Boxes under a tree of bounding boxes, eight to a node, that keeps their order: it finds the boxes that
// meet an area one after another in that order, while boxes change and go. It is quick where neighbours in
// the order are mostly neighbours on the page. A box meets an area when neither begins behind the other's
// end, for columns and rows, whatever the order of the sides; see BoxIndex.
class BoxTree {
  public:
    static constexpr int kOutOfSteps = -1;
    static constexpr Rect kNone{INT16_MAX, INT16_MAX, INT16_MIN, INT16_MIN};  // meets nothing

    // boxAt(i) gives box i.
    template <class BoxAt>
    BoxTree(std::size_t size, BoxAt boxAt) : BoxTree(size) {
        for (std::size_t i = 0; i < size; ++i) SetLeaf(i, boxAt(i));
        BuildUpperLevels();
    }

    int Count() const { return count; }
    // The first position from `from` on whose box meets the area (common sides count), or Count(). Each
    // node looked at takes one of the steps; kOutOfSteps when none is left.
    int Next(int from, const Rect& area, int& steps) const;
    // The box; one that nothing meets when it was taken out.
    Rect At(int position) const;
    // Gives a position a new box, or takes its box out.
    void Set(int position, const Rect& box);
    void Remove(int position);

  private:
    static constexpr int kFanOut = 8;
    struct alignas(16) Node {
        std::int16_t x0[kFanOut];
        std::int16_t y0[kFanOut];
        std::int16_t x1[kFanOut];
        std::int16_t y1[kFanOut];
    };

    explicit BoxTree(std::size_t size);
    void SetLeaf(std::size_t i, const Rect& box);
    void BuildUpperLevels();

    int count;
    std::vector<std::vector<Node>> levels;  // from the boxes themselves to a single node
};

}  // namespace tavrix
