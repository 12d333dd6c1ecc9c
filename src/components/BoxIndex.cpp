// SPDX-License-Identifier: MIT
#include "components/BoxIndex.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <new>
#include <utility>
#include <vector>

namespace tavrix {
namespace {

// Nodes that a search may look at. Where many boxes meet the area the list leads to one of them within few
// nodes; where few do, so do the places.
constexpr int kListSteps = 64;
constexpr int kPlaceSteps = 512;  // beyond these the list is searched to its end

// The number's bits, each followed by a zero.
std::uint32_t Spread(std::uint32_t bits) {
    bits = (bits | bits << 8) & 0x00FF00FF;
    bits = (bits | bits << 4) & 0x0F0F0F0F;
    bits = (bits | bits << 2) & 0x33333333;
    return (bits | bits << 1) & 0x55555555;
}

// Places along a curve that stays within each quarter of the page, and each quarter of it, before the next.
std::uint32_t PlaceOf(const Rect& box) {
    const auto x = static_cast<std::uint32_t>((box.x0 + box.x1 + 65536) / 2);
    const auto y = static_cast<std::uint32_t>((box.y0 + box.y1 + 65536) / 2);
    return Spread(x) | Spread(y) << 1;
}

std::vector<int> OrderOfPlaces(const BoxTree& list) {
    std::vector<std::pair<std::uint32_t, int>> places(static_cast<std::size_t>(list.Count()));
    for (int i = 0; i < list.Count(); ++i) places[static_cast<std::size_t>(i)] = {PlaceOf(list.At(i)), i};
    std::sort(places.begin(), places.end());
    std::vector<int> order;
    order.reserve(places.size());
    for (const auto& place : places) order.push_back(place.second);
    return order;
}

}  // namespace

BoxIndex::Places::Places(const BoxTree& list)
    : positions(OrderOfPlaces(list)),
      slots(positions.size()),
      tree(positions.size(), [&](std::size_t slot) { return list.At(positions[slot]); }) {
    for (std::size_t slot = 0; slot < positions.size(); ++slot) {
        const int position = positions[slot];
        slots[static_cast<std::size_t>(position)] = static_cast<int>(slot);
    }
}

int BoxIndex::Next(int from, const Rect& area) const {
    int steps = kListSteps;
    int found = list.Next(from, area, steps);
    if (found == BoxTree::kOutOfSteps) found = NextByPlace(from, area);
    if (found == BoxTree::kOutOfSteps) {
        steps = INT_MAX;
        found = list.Next(from, area, steps);
    }
    return found;
}

int BoxIndex::NextByPlace(int from, const Rect& area) const {
    if (places == nullptr) {
        try {
            places = std::make_unique<Places>(list);
        } catch (const std::bad_alloc&) {
            return BoxTree::kOutOfSteps;  // the list does without
        }
    }
    int first = list.Count(), steps = kPlaceSteps;
    for (int slot = places->tree.Next(0, area, steps); slot < list.Count();
         slot = places->tree.Next(slot + 1, area, steps)) {
        if (slot == BoxTree::kOutOfSteps) return BoxTree::kOutOfSteps;
        const int position = places->positions[static_cast<std::size_t>(slot)];
        if (position >= from) first = std::min(first, position);
    }
    return first;
}

void BoxIndex::Set(int position, const Rect& box) {
    list.Set(position, box);
    if (places != nullptr) places->tree.Set(places->slots[static_cast<std::size_t>(position)], box);
}

void BoxIndex::Remove(int position) {
    list.Remove(position);
    if (places != nullptr) places->tree.Remove(places->slots[static_cast<std::size_t>(position)]);
}

}  // namespace tavrix
