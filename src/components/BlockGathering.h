// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

#include "components/ComponentTree.h"
#include "components/SmearedBoxes.h"

// What the two block groupers share: stretched boxes of components, merged where they overlap, gather the
// components whose centres they hold.
namespace tavrix {

struct MeanSize {
    int w;
    int h;
};

// Truncated means over the components of the source line: of their width, or the line's height where that
// is less, and of their height. 1 x 1 without components.
MeanSize MeanComponentSize(const ComponentStore& store);

// The boxes of all components of the store, stretched, the last component's first. stretch gives the box of
// a component.
template <class Stretch>
std::vector<SmearedBox> Smear(const ComponentStore& store, Stretch stretch) {
    std::vector<SmearedBox> boxes;
    store::ForEachComponent(store, [&](const ComponentNode* node) { boxes.push_back(stretch(*node)); });
    return {boxes.rbegin(), boxes.rend()};
}

// For each box in turn, a new block behind the first one with a line of the components of the source line
// whose centres lie in the box, the last one first. The source line is the store's first one. False when
// there is none or the store is full.
[[nodiscard]] bool GatherByCentre(ComponentStore& store, const std::vector<SmearedBox>& boxes);

}  // namespace tavrix
