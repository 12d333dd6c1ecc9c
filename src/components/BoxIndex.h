// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "components/BoxTree.h"
#include "image/Rect.h"

namespace tavrix {

// The boxes of a list's elements: finds the elements that meet an area one after another in list order,
// while boxes change and go. Lists follow the scan of the page, so neighbours in the list are mostly
// neighbours on the page, and a tree in list order answers at once. For lists in any other order a second
// tree, in the order of places, is made when the first one searches long.
//
// With an area turned inside out the elements are found whose boxes hold the area, and with boxes turned
// inside out those that lie in the area: a box meets an area when neither begins behind the other's end.
class BoxIndex {
  public:
    static constexpr Rect kNone = BoxTree::kNone;  // the box of an element that is not to be found

    // boxAt(i) gives the box of element i, its sides in order.
    template <class BoxAt>
    BoxIndex(std::size_t size, BoxAt boxAt) : list(size, boxAt) {}

    int Count() const { return list.Count(); }
    // The first element from position `from` on whose box meets the area (common sides count), or Count().
    int Next(int from, const Rect& area) const;
    // Gives an element a new box, or takes it out.
    void Set(int position, const Rect& box);
    void Remove(int position);

  private:
    struct Places {
        explicit Places(const BoxTree& list);
        std::vector<int> positions;  // in the list, of the tree's boxes
        std::vector<int> slots;      // in the tree, of the list's elements
        BoxTree tree;
    };
    int NextByPlace(int from, const Rect& area) const;

    BoxTree list;
    mutable std::unique_ptr<Places> places;  // null until needed
};

}  // namespace tavrix
