// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "components/ComponentStore.h"

namespace tavrix::test {

// A store that a test fills by hand and that releases itself.
struct TestStore : ComponentStore {
    TestStore() : ComponentStore{} { EXPECT_TRUE(store::Create(*this)); }
    // One block with one line of the boxes, in their order, as extraction leaves it.
    TestStore(int width, int height, const std::vector<store::Box>& boxes) : TestStore() {
        ComponentNode* block = store::InsertBlock(*this, nullptr, nullptr, {});
        AddLine(block,
                {0, static_cast<std::int16_t>(height - 1), static_cast<std::int16_t>(width - 1), 0}, boxes);
    }
    ~TestStore() { store::Release(*this); }
    TestStore(const TestStore&) = delete;
    TestStore& operator=(const TestStore&) = delete;

    // A line at the head of a block.
    ComponentNode* AddLine(ComponentNode* block, const store::Box& box,
                           const std::vector<store::Box>& boxes) {
        ComponentNode* line = store::InsertLine(*this, block, nullptr, block->firstChild, box);
        ComponentNode* last = nullptr;
        for (const store::Box& sides : boxes) {
            last = store::InsertComponent(*this, line, last, nullptr, sides);
            if (last == nullptr) break;
            last->pixelCount = 7;
        }
        return line;
    }
};

// A store's tree, counters and free list in words, one node a line: what hosts can see. A wrong link
// shows as a failure.
inline std::vector<std::string> Describe(const ComponentStore& s) {
    std::vector<std::string> lines;
    std::ostringstream text;
    const auto endLine = [&] {
        lines.push_back(text.str());
        text.str("");
    };
    const auto walk = [&](const auto& self, const ComponentNode* head, const ComponentNode* parent) -> void {
        const ComponentNode* prev = nullptr;
        for (const ComponentNode* n = head; n != nullptr; prev = n, n = n->next) {
            EXPECT_EQ(n->prev, prev);
            EXPECT_EQ(n->parent, parent);
            text << "kind " << n->kind << " slot " << n - s.nodes << " box " << n->left << ' ' << n->bottom
                 << ' ' << n->right << ' ' << n->top << " count " << n->pixelCount << " height "
                 << n->lineHeight;
            endLine();
            self(self, n->firstChild, n);
        }
    };
    walk(walk, s.firstBlock, nullptr);
    text << "live " << s.liveCount << " blocks " << s.blockCount << " lines " << s.lineCount
         << " components " << s.componentCount << " free";
    for (const ComponentNode* n = s.freeList; n != nullptr; n = n->next) text << ' ' << n - s.nodes;
    endLine();
    return lines;
}

}  // namespace tavrix::test
