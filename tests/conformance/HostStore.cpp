// SPDX-License-Identifier: MIT
#include "HostStore.h"

#include <algorithm>

namespace tavrix::conformance {

HostStore::HostStore() {
    auto* nodes =
        static_cast<ComponentNode*>(GlobalAlloc(GPTR, sizeof(ComponentNode) * TAVRIX_STORE_CAPACITY));
    for (int i = 0; i + 1 < TAVRIX_STORE_INITIAL_COUNT; ++i) nodes[i].next = &nodes[i + 1];
    header.nodes = header.freeList = nodes;
    header.state = TAVRIX_STORE_ALLOCATED;
    header.growStep = TAVRIX_STORE_GROW_STEP;
    header.threadedCount = TAVRIX_STORE_INITIAL_COUNT;
}

ComponentNode* HostStore::Take(ComponentNode*& list, ComponentNode* parent, std::uint32_t kind,
                               const Box& box) {
    ComponentNode* const node = header.freeList;
    header.freeList = node->next;
    ++header.liveCount;
    ComponentNode* prev = nullptr;
    ComponentNode** link = &list;
    for (; *link != nullptr; link = &prev->next) prev = *link;
    *link = node;
    *node = {};
    node->prev = prev;
    node->parent = parent;
    node->kind = kind;
    node->tag = static_cast<std::uint16_t>(node - header.nodes);
    node->left = static_cast<std::int16_t>(box.left);
    node->top = static_cast<std::int16_t>(box.bottom + box.height - 1);
    node->right = static_cast<std::int16_t>(box.left + box.width - 1);
    node->bottom = static_cast<std::int16_t>(box.bottom);
    return node;
}

ComponentNode* HostStore::AddBlock() {
    ++header.blockCount;
    return Take(header.firstBlock, nullptr, NODE_BLOCK, {});
}

void HostStore::AddLine(ComponentNode* block, const std::vector<Box>& boxes) {
    ++header.lineCount;
    ComponentNode* const line = Take(block->firstChild, block, NODE_LINE, boxes.empty() ? Box{} : boxes[0]);
    for (const Box& box : boxes) {
        ++header.componentCount;
        ComponentNode* const node = Take(line->firstChild, line, NODE_COMPONENT, box);
        node->pixelCount = static_cast<std::uint32_t>(box.width * box.height);
        line->left = std::min(line->left, node->left);
        line->bottom = std::min(line->bottom, node->bottom);
        line->right = std::max(line->right, node->right);
        line->top = std::max(line->top, node->top);
    }
}

void HostStore::LeaveFree(int count) {
    header.threadedCount = TAVRIX_STORE_CAPACITY;
    ComponentNode* last = header.freeList;
    for (int i = 1; i < count; ++i) last = last->next;
    last->next = nullptr;
}

}  // namespace tavrix::conformance
