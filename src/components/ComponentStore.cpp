// SPDX-License-Identifier: MIT
#include "components/ComponentStore.h"

#include <algorithm>
#include <cstddef>

#include "platform/GlobalMemory.h"

namespace tavrix::store {

// The layout that 32-bit hosts share.
static_assert(sizeof(void*) != 4 ||
              (sizeof(ComponentNode) == 124 && offsetof(ComponentNode, pixelCount) == 100 &&
               sizeof(ComponentStore) == 40));

namespace {

// A side of this value (0xFFFF) stands for "not set" where MoveToParent widens a parent.
constexpr std::int16_t kUnset = -1;
// Where minimum searches over coordinates start.
constexpr std::int16_t kFarSide = 9999;

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

template <bool skipUnset>
void WidenParent(ComponentNode& parent, const ComponentNode& node) {
    if (node.kind == 0) return;
    if (!skipUnset || node.left != kUnset) parent.left = std::min(parent.left, node.left);
    if (!skipUnset || node.bottom != kUnset) parent.bottom = std::min(parent.bottom, node.bottom);
    parent.right = std::max(parent.right, node.right);
    parent.top = std::max(parent.top, node.top);
}

template <bool skipUnset>
void Move(ComponentNode* oldParent, ComponentNode* node, ComponentNode* newParent) {
    const bool wasEmpty = newParent->firstChild == nullptr;
    if (node->prev != nullptr) node->prev->next = node->next;
    if (node->next != nullptr) node->next->prev = node->prev;
    if (oldParent->firstChild == node) oldParent->firstChild = node->next;

    node->next = newParent->firstChild;
    node->prev = nullptr;
    node->parent = newParent;
    newParent->firstChild = node;
    if (node->next != nullptr) node->next->prev = node;

    if (!wasEmpty) {
        WidenParent<skipUnset>(*newParent, *node);
    } else if (node->kind != 0) {
        newParent->left = node->left;
        newParent->right = node->right;
        newParent->top = node->top;
        newParent->bottom = node->bottom;
    }
}

// Merges two lists that end in null, through their next links alone.
template <class GoesFirst>
ComponentNode* Merge(ComponentNode* front, ComponentNode* back, GoesFirst backGoesFirst) {
    ComponentNode* head = nullptr;
    ComponentNode** link = &head;
    while (front != nullptr && back != nullptr) {
        ComponentNode*& taken = backGoesFirst(*back, *front) ? back : front;
        *link = taken;
        link = &taken->next;
        taken = taken->next;
    }
    *link = front != nullptr ? front : back;
    return head;
}

// Merge sort without memory of its own: runs[i] holds a sorted run of 2^i children or none.
// backGoesFirst(b, f) says whether b, the later one in the list, goes before f.
template <class GoesFirst>
ComponentNode* MergeSort(ComponentNode* list, GoesFirst backGoesFirst) {
    constexpr int kRuns = 17;  // 2^17 > TAVRIX_STORE_CAPACITY
    ComponentNode* runs[kRuns] = {};
    while (list != nullptr) {
        ComponentNode* run = list;
        list = list->next;
        run->next = nullptr;
        int i = 0;
        for (; i < kRuns - 1 && runs[i] != nullptr; ++i) {
            run = Merge(runs[i], run, backGoesFirst);
            runs[i] = nullptr;
        }
        runs[i] = runs[i] != nullptr ? Merge(runs[i], run, backGoesFirst) : run;
    }
    ComponentNode* sorted = nullptr;
    for (ComponentNode* run : runs) {
        if (run != nullptr) sorted = Merge(run, sorted, backGoesFirst);
    }
    return sorted;
}

// The sorts are defined as selection sorts that move one child after another to the parent's head: each
// child gets the parent link and widens the parent, whatever the order.
template <bool skipUnset, class GoesFirst>
void Sort(ComponentNode* parent, GoesFirst backGoesFirst) {
    parent->firstChild = MergeSort(parent->firstChild, backGoesFirst);
    ComponentNode* prev = nullptr;
    for (ComponentNode* node = parent->firstChild; node != nullptr; prev = node, node = node->next) {
        node->prev = prev;
        node->parent = parent;
        WidenParent<skipUnset>(*parent, *node);
    }
}

// Left as the main and right as the second key, in one number.
int KeyOf(const ComponentNode& node) {
    return node.left * 65536 + (node.right + 32768);
}

}  // namespace

bool Create(ComponentStore& store, std::uint32_t initialCount, std::uint32_t growStep) {
    if (store.state == TAVRIX_STORE_ALLOCATED) Release(store);
    store = {};
    store.nodes = static_cast<ComponentNode*>(
        platform::AllocFixed(std::size_t{TAVRIX_STORE_CAPACITY} * sizeof(ComponentNode)));
    if (store.nodes == nullptr) return false;
    store.freeList = store.nodes;
    store.state = TAVRIX_STORE_ALLOCATED;
    store.growStep = growStep;
    store.threadedCount = initialCount;
    Thread(store, 0, initialCount);
    return true;
}

void Release(ComponentStore& store) {
    if (store.nodes != nullptr) platform::Free(platform::HandleOf(store.nodes));
    store = {};
}

ComponentNode* AllocNode(ComponentStore& store, const Box& box, std::uint16_t tag, std::uint32_t kind,
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
    node->left = box.left;
    node->top = box.top;
    node->right = box.right;
    node->bottom = box.bottom;
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
                               ComponentNode* next, const Box& box) {
    ComponentNode* node = AllocNode(store, box, 0, NODE_COMPONENT, prev, next, line, nullptr);
    if (node == nullptr) return nullptr;
    SpliceIn(line->firstChild, node);
    ++store.componentCount;
    return node;
}

ComponentNode* InsertLine(ComponentStore& store, ComponentNode* block, ComponentNode* prev,
                          ComponentNode* next, const Box& box) {
    ComponentNode* node = AllocNode(store, box, 0, NODE_LINE, prev, next, block, nullptr);
    if (node == nullptr) return nullptr;
    node->reserved2 = 0;
    SpliceIn(block->firstChild, node);
    ++store.lineCount;
    return node;
}

ComponentNode* InsertBlock(ComponentStore& store, ComponentNode* prev, ComponentNode* next, const Box& box) {
    ComponentNode* node = AllocNode(store, box, 0, NODE_BLOCK, prev, next, nullptr, nullptr);
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

void MoveToParent(ComponentNode* oldParent, ComponentNode* node, ComponentNode* newParent) {
    Move<true>(oldParent, node, newParent);
}

void MoveToParentPlain(ComponentNode* oldParent, ComponentNode* node, ComponentNode* newParent) {
    Move<false>(oldParent, node, newParent);
}

void SortChildren(ComponentNode* parent, bool ascending) {
    if (ascending) {
        Sort<true>(parent, [](const ComponentNode& back, const ComponentNode& front) {
            return KeyOf(back) <= KeyOf(front);
        });
    } else {
        Sort<true>(parent, [](const ComponentNode& back, const ComponentNode& front) {
            return KeyOf(back) >= KeyOf(front);
        });
    }
}

void SortChildrenByLeft(ComponentNode* parent, bool ascending) {
    if (ascending) {
        Sort<false>(parent, [](const ComponentNode& back, const ComponentNode& front) {
            return back.left < front.left;
        });
    } else {
        Sort<false>(parent, [](const ComponentNode& back, const ComponentNode& front) {
            return back.left > front.left;
        });
    }
}

void RebuildLineBoxes(ComponentStore& store, ComponentNode* block) {
    for (ComponentNode *line = block->firstChild, *following; line != nullptr; line = following) {
        following = line->next;
        if (line->firstChild == nullptr) {
            DeleteLine(store, line);
            continue;
        }
        Box box{kFarSide, 0, 0, kFarSide};
        for (ComponentNode* node = line->firstChild; node != nullptr; node = node->next) {
            box.left = std::min(box.left, node->left);
            box.bottom = std::min(box.bottom, node->bottom);
            box.right = std::max(box.right, node->right);
            box.top = std::max(box.top, node->top);
            node->kind = NODE_COMPONENT;
            node->parent = line;
        }
        line->left = box.left;
        line->bottom = box.bottom;
        line->right = box.right;
        line->top = box.top;
        line->kind = NODE_LINE;
    }
}

}  // namespace tavrix::store
