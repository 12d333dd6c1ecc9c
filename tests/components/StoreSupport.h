// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "components/ComponentStore.h"

namespace tavrix::test {

// A store that lives as long as the object.
struct Store : ComponentStore {
    Store() : ComponentStore{} { EXPECT_TRUE(store::Create(*this)); }
    ~Store() { store::Release(*this); }
    Store(const Store&) = delete;
    std::ptrdiff_t Slot(const ComponentNode* node) const { return node - nodes; }
};

// The children of a node (or the blocks), with their links checked.
inline std::vector<ComponentNode*> Siblings(ComponentNode* first, const ComponentNode* parent) {
    std::vector<ComponentNode*> siblings;
    const ComponentNode* prev = nullptr;
    for (ComponentNode* node = first; node != nullptr; prev = node, node = node->next) {
        EXPECT_EQ(node->prev, prev);
        EXPECT_EQ(node->parent, parent);
        siblings.push_back(node);
    }
    return siblings;
}
inline std::vector<ComponentNode*> Children(const ComponentNode* parent) {
    return Siblings(parent->firstChild, parent);
}

// All that a host can see of a store: tree, slots, boxes, counters and the free list's order.
inline std::vector<std::int64_t> Contents(const Store& s) {
    std::vector<std::int64_t> all{s.threadedCount, s.liveCount, s.blockCount, s.lineCount, s.componentCount};
    const auto add = [&](const ComponentNode* node) {
        all.insert(all.end(), {s.Slot(node), node->left, node->top, node->right, node->bottom, node->tag,
                               node->kind, node->pixelCount});
    };
    for (const ComponentNode* block : Siblings(s.firstBlock, nullptr)) {
        add(block);
        for (const ComponentNode* line : Children(block)) {
            add(line);
            for (const ComponentNode* node : Children(line)) add(node);
        }
    }
    for (const ComponentNode* node = s.freeList; node != nullptr; node = node->next)
        all.push_back(s.Slot(node));
    return all;
}

}  // namespace tavrix::test
