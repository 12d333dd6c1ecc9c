// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "components/ComponentStore.h"

namespace tavrix {

// The box with its sides in order.
store::Box Ordered(const store::Box& box);

// The boxes of a list's elements under a tree of bounding boxes, eight to a node, that keeps the list's
// order: it finds the elements that meet an area one after another in that order, while boxes change and
// go. Lists follow the scan of the page, so neighbours in the list are mostly neighbours on the page.
class BoxIndex {
  public:
    // boxAt(i) gives the box of element i.
    template <class BoxAt>
    BoxIndex(std::size_t size, BoxAt boxAt) : BoxIndex(size) {
        for (std::size_t i = 0; i < size; ++i) SetLeaf(i, Ordered(boxAt(i)));
        BuildUpperLevels();
    }

    int Count() const { return count; }
    // The first element from position `from` on whose box meets the area (common sides count), or Count().
    int Next(int from, const store::Box& area) const;
    // Sides are put in order where left > right or bottom > top.
    void Set(int position, const store::Box& box);
    void Remove(int position);

  private:
    static constexpr int kFanOut = 8;
    struct alignas(16) Node {
        std::int16_t left[kFanOut];
        std::int16_t right[kFanOut];
        std::int16_t bottom[kFanOut];
        std::int16_t top[kFanOut];
    };

    explicit BoxIndex(std::size_t size);
    void SetLeaf(std::size_t i, const store::Box& box);
    void BuildUpperLevels();
    void Replace(int position, store::Box box);

    int count;
    std::vector<std::vector<Node>> levels;  // from the boxes themselves to a single node
};

}  // namespace tavrix
