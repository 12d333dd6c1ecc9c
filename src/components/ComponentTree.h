// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

#include "image/Rect.h"
#include "tavrix/tavrix.h"

// Ways through a store's tree of blocks, lines and components, and the sizes of its nodes.
namespace tavrix::store {

// Unsigned 16-bit numbers, as Rect has them.
inline int WidthOf(const ComponentNode& node) {
    return RectOf(node).Width();
}
inline int HeightOf(const ComponentNode& node) {
    return RectOf(node).Height();
}
// Centre, truncated toward zero.
inline int CentreX(const ComponentNode& node) {
    return (node.left + node.right) / 2;
}
inline int CentreY(const ComponentNode& node) {
    return (node.top + node.bottom) / 2;
}

// Where the union of nodes' rectangles starts: sides beyond 9999 or below 0 do not move it.
inline constexpr Rect kUnionStart{9999, 9999, 0, 0};

// The line that holds the components of an extracted store, from which all grouping starts: the first of
// the first block, or null.
inline ComponentNode* FirstLine(const ComponentStore& store) {
    return store.firstBlock != nullptr ? store.firstBlock->firstChild : nullptr;
}

inline std::vector<ComponentNode*> ChildrenOf(const ComponentNode& parent) {
    std::vector<ComponentNode*> children;
    for (ComponentNode* child = parent.firstChild; child != nullptr; child = child->next) {
        children.push_back(child);
    }
    return children;
}

// Each calls visit(node) in list order. visit may delete its node.
template <class Visit>
void ForEachFrom(ComponentNode* first, Visit&& visit) {
    for (ComponentNode *node = first, *following; node != nullptr; node = following) {
        following = node->next;
        visit(node);
    }
}
template <class Visit>
void ForEachChild(const ComponentNode& parent, Visit&& visit) {
    ForEachFrom(parent.firstChild, visit);
}
template <class Visit>
void ForEachBlock(const ComponentStore& store, Visit&& visit) {
    ForEachFrom(store.firstBlock, visit);
}
// The lines of all blocks; visit may not delete the last line's block.
template <class Visit>
void ForEachLine(const ComponentStore& store, Visit&& visit) {
    for (const ComponentNode* block = store.firstBlock; block != nullptr; block = block->next) {
        ForEachChild(*block, visit);
    }
}
// The components of all lines.
template <class Visit>
void ForEachComponent(const ComponentStore& store, Visit&& visit) {
    ForEachLine(store, [&](const ComponentNode* line) { ForEachChild(*line, visit); });
}

}  // namespace tavrix::store
