// SPDX-License-Identifier: MIT
#include "components/ComponentStore.h"

#include <algorithm>
#include <cstddef>

#include "components/ComponentTree.h"
#include "platform/GlobalMemory.h"

namespace tavrix::store {

// The layout that 32-bit hosts share.
static_assert(sizeof(void*) != 4 ||
              (sizeof(ComponentNode) == 124 && offsetof(ComponentNode, pixelCount) == 100 &&
               sizeof(ComponentStore) == 40));

namespace {

// Chains count slots from slot start on through their next links.
void Thread(ComponentStore& store, std::uint32_t start, std::uint32_t count) {
    ComponentNode* slot = store.nodes + start;
    for (std::uint32_t i = 1; i < count; ++i, ++slot) slot->next = slot + 1;
    slot->next = nullptr;
}

void SpliceIn(ComponentNode*& head, ComponentNode* node) {
    if (node->next != nullptr) node->next->prev = node;
    (node->prev != nullptr ? node->prev->next : head) = node;
}

void Unlink(ComponentNode*& head, const ComponentNode* node) {
    if (node->next != nullptr) node->next->prev = node->prev;
    (node->prev != nullptr ? node->prev->next : head) = node->next;
}

}  // namespace

void Lay(ComponentStore& store, ComponentNode* nodes, std::uint32_t initialCount, std::uint32_t growStep) {
    store.nodes = nodes;
    store.freeList = nodes;
    store.state = TAVRIX_STORE_ALLOCATED;
    store.growStep = growStep;
    store.threadedCount = initialCount;
    Thread(store, 0, initialCount);
}

bool Create(ComponentStore& store, std::uint32_t initialCount, std::uint32_t growStep) {
    if (store.state == TAVRIX_STORE_ALLOCATED) Release(store);
    store = {};
    auto* nodes = static_cast<ComponentNode*>(platform::AllocFixed(kBytes));
    if (nodes == nullptr) return false;
    Lay(store, nodes, initialCount, growStep);
    return true;
}

void Release(ComponentStore& store) {
    if (store.nodes != nullptr) platform::Free(platform::HandleOf(store.nodes));
    store = {};
}

ComponentNode* AllocNode(ComponentStore& store, const Rect& rect, std::uint16_t tag, std::uint32_t kind,
                         ComponentNode* prev, ComponentNode* next, ComponentNode* parent,
                         ComponentNode* firstChild) {
    if (store.nodes == nullptr) return nullptr;
    if (store.freeList == nullptr) {
        if (store.threadedCount >= TAVRIX_STORE_CAPACITY) return nullptr;
        const std::uint32_t left = TAVRIX_STORE_CAPACITY - store.threadedCount;
        const std::uint32_t step = std::clamp<std::uint32_t>(store.growStep, 1, left);
        Thread(store, store.threadedCount, step);
        store.freeList = store.nodes + store.threadedCount;
        store.threadedCount += step;
    }
    ComponentNode* node = store.freeList;
    store.freeList = node->next;
    ++store.liveCount;
    SetRect(*node, rect);
    node->tag = tag;
    node->kind = kind;
    node->reserved20 = 0;
    node->reserved32 = 0;
    node->pixelCount = 0;
    node->prev = prev;
    node->next = next;
    node->parent = parent;
    node->firstChild = firstChild;
    return node;
}

void FreeNode(ComponentStore& store, ComponentNode* node) {
    node->next = store.freeList;
    store.freeList = node;
    --store.liveCount;
}

ComponentNode* InsertComponent(ComponentStore& store, ComponentNode* line, ComponentNode* prev,
                               ComponentNode* next, const Rect& rect) {
    ComponentNode* node = AllocNode(store, rect, 0, NODE_COMPONENT, prev, next, line, nullptr);
    if (node == nullptr) return nullptr;
    SpliceIn(line->firstChild, node);
    ++store.componentCount;
    return node;
}

ComponentNode* InsertLine(ComponentStore& store, ComponentNode* block, ComponentNode* prev,
                          ComponentNode* next, const Rect& rect) {
    ComponentNode* node = AllocNode(store, rect, 0, NODE_LINE, prev, next, block, nullptr);
    if (node == nullptr) return nullptr;
    node->reserved2 = 0;
    SpliceIn(block->firstChild, node);
    ++store.lineCount;
    return node;
}

ComponentNode* InsertBlock(ComponentStore& store, ComponentNode* prev, ComponentNode* next,
                           const Rect& rect) {
    ComponentNode* node = AllocNode(store, rect, 0, NODE_BLOCK, prev, next, nullptr, nullptr);
    if (node == nullptr) return nullptr;
    SpliceIn(store.firstBlock, node);
    ++store.blockCount;
    return node;
}

void DeleteComponent(ComponentStore& store, ComponentNode* node) {
    Unlink(node->parent->firstChild, node);
    FreeNode(store, node);
    --store.componentCount;
}

void DeleteLine(ComponentStore& store, ComponentNode* node) {
    Unlink(node->parent->firstChild, node);
    while (node->firstChild != nullptr) DeleteComponent(store, node->firstChild);
    FreeNode(store, node);
    --store.lineCount;
}

void DeleteBlock(ComponentStore& store, ComponentNode* node) {
    Unlink(store.firstBlock, node);
    while (node->firstChild != nullptr) DeleteLine(store, node->firstChild);
    FreeNode(store, node);
    --store.blockCount;
}

void RebuildLineBoxes(ComponentStore& store, ComponentNode* block) {
    ForEachChild(*block, [&](ComponentNode* line) {
        if (line->firstChild == nullptr) {
            DeleteLine(store, line);
            return;
        }
        Rect bounds = kUnionStart;
        for (ComponentNode* node = line->firstChild; node != nullptr; node = node->next) {
            bounds = Union(bounds, RectOf(*node));
            node->kind = NODE_COMPONENT;
            node->parent = line;
        }
        SetRect(*line, bounds);
        line->kind = NODE_LINE;
    });
}

}  // namespace tavrix::store
