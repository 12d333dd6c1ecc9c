// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

#include "tavrix/tavrix.h"

// Ways through a store's tree that the steps of text-line building share.
namespace tavrix::lines {

// The line whose components text lines are built from: the first of the first block, or null.
inline ComponentNode* WorkLine(const ComponentStore& store) {
    return store.firstBlock != nullptr ? store.firstBlock->firstChild : nullptr;
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
