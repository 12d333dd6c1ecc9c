// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

#include "components/ComponentStore.h"

// What the two block groupers share: stretched boxes of components, merged where they overlap, gather the
// components whose centres they hold.
namespace tavrix {

struct MeanSize {
    int w;
    int h;
};

// A component's stretched box. Wide ones merge only when one lies inside the other.
struct SmearedBox : store::Box {
    bool wide = false;
};

// The first line of the first block, from which components are gathered; null when there is none.
ComponentNode* SourceLine(const ComponentStore& store);

// Truncated means of min(width, height of the line) and of the height; 1 x 1 for no components.
MeanSize MeanComponentSize(const ComponentNode* line);

// Boxes of all components of the store, stretched, the last component's first. stretch gives the new right
// and top of a component.
template <class Stretch>
std::vector<SmearedBox> Smear(const ComponentStore& store, Stretch stretch) {
    std::vector<SmearedBox> boxes;
    for (const ComponentNode* block = store.firstBlock; block != nullptr; block = block->next) {
        for (const ComponentNode* line = block->firstChild; line != nullptr; line = line->next) {
            for (const ComponentNode* node = line->firstChild; node != nullptr; node = node->next) {
                boxes.push_back(stretch(*node));
            }
        }
    }
    return {boxes.rbegin(), boxes.rend()};
}

// The rectangles share more than a side, or the first lies inside the second.
bool DoOverlap(const store::Box& a, const store::Box& b);
bool LiesInside(const store::Box& inner, const store::Box& outer);

using MergeRule = bool (*)(const SmearedBox& box, const SmearedBox& later);

// Merges boxes until a pass over them merges none. A pass takes each box in order and compares it, as it
// grows, with every later one; it absorbs those that the rule allows.
std::vector<SmearedBox> MergeOverlaps(std::vector<SmearedBox> boxes, MergeRule rule);

// For each box in turn, a new block behind the first one with a line of the components of the source line
// whose centres lie in the box, the last one first. False when there is no source line or the store is full.
bool GatherByCentre(ComponentStore& store, const std::vector<SmearedBox>& boxes);

}  // namespace tavrix
