// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "image/Rect.h"

namespace tavrix {

// The boxes of a list's elements under a tree of bounding boxes, eight to a node, that keeps the list's
// order: it finds the elements that meet an area one after another in that order, while boxes change and
// go. Lists follow the scan of the page, so neighbours in the list are mostly neighbours on the page.
class BoxIndex {
  public:
    // boxAt(i) gives the box of element i; sides are put in order.
    template <class BoxAt>
    BoxIndex(std::size_t size, BoxAt boxAt) : BoxIndex(size) {
        for (std::size_t i = 0; i < size; ++i) SetLeaf(i, Ordered(boxAt(i)));
        BuildUpperLevels();
    }

    int Count() const { return count; }
    // The first element from position `from` on whose box meets the area (common sides count), or Count().
    int Next(int from, const Rect& area) const;
    // Gives an element a new box, or takes it out. A box's sides are put in order.
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

    explicit BoxIndex(std::size_t size);
    void SetLeaf(std::size_t i, const Rect& box);
    void BuildUpperLevels();
    void Replace(int position, Rect box);

    int count;
    std::vector<std::vector<Node>> levels;  // from the boxes themselves to a single node
};

}  // namespace tavrix
