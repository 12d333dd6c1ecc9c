// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "components/ComponentStore.h"
#include "tavrix/tavrix.h"

// Boxes, and ways through a store's tree, that the steps of text-line building share.
namespace tavrix::lines {

// The line whose components text lines are built from: the first of the first block, or null.
inline ComponentNode* WorkLine(const ComponentStore& store) {
    return store.firstBlock != nullptr ? store.firstBlock->firstChild : nullptr;
}

inline store::Box BoxOf(const ComponentNode& node) {
    return {node.left, node.top, node.right, node.bottom};
}
inline void SetBox(ComponentNode& node, const store::Box& box) {
    node.left = box.left;
    node.top = box.top;
    node.right = box.right;
    node.bottom = box.bottom;
}
inline store::Box UnionOf(const store::Box& a, const store::Box& b) {
    return {std::min(a.left, b.left), std::max(a.top, b.top), std::max(a.right, b.right),
            std::min(a.bottom, b.bottom)};
}
// The box with its sides in order, and so many more columns and rows on each side.
inline store::Box Extended(const store::Box& box, int columns, int rows) {
    const auto clamped = [](int side) { return static_cast<std::int16_t>(std::clamp(side, -32768, 32767)); };
    return {clamped(std::min(box.left, box.right) - columns), clamped(std::max(box.top, box.bottom) + rows),
            clamped(std::max(box.left, box.right) + columns), clamped(std::min(box.top, box.bottom) - rows)};
}

inline std::vector<ComponentNode*> ChildrenOf(const ComponentNode& parent) {
    std::vector<ComponentNode*> children;
    for (ComponentNode* child = parent.firstChild; child != nullptr; child = child->next) {
        children.push_back(child);
    }
    return children;
}

// Calls visit(line) for every line of every block. visit may delete its line.
template <class Visit>
void ForEachLine(const ComponentStore& store, Visit&& visit) {
    for (ComponentNode* block = store.firstBlock; block != nullptr; block = block->next) {
        for (ComponentNode* line = block->firstChild; line != nullptr;) {
            ComponentNode* const next = line->next;
            visit(line);
            line = next;
        }
    }
}

// Calls visit(component) for every component of a line. visit may delete its component.
template <class Visit>
void ForEachComponent(const ComponentNode& line, Visit&& visit) {
    for (ComponentNode* component = line.firstChild; component != nullptr;) {
        ComponentNode* const next = component->next;
        visit(component);
        component = next;
    }
}

}  // namespace tavrix::lines
