// SPDX-License-Identifier: MIT
#include "components/NodeMoves.h"

#include <algorithm>
#include <cstdint>

#include "image/Rect.h"

namespace tavrix::store {
namespace {

// A side of this value (0xFFFF) stands for "not set" where MoveToParent widens a parent.
constexpr std::int16_t kUnset = -1;

// Widens a parent's rectangle over a child's; with skipUnset a side of kUnset does not lower it.
template <bool skipUnset>
void WidenParent(ComponentNode& parent, const ComponentNode& node) {
    if (node.kind == 0) return;
    if (!skipUnset || node.left != kUnset) parent.left = std::min(parent.left, node.left);
    if (!skipUnset || node.bottom != kUnset) parent.bottom = std::min(parent.bottom, node.bottom);
    parent.right = std::max(parent.right, node.right);
    parent.top = std::max(parent.top, node.top);
}

}  // namespace

void MoveToParent(ComponentNode* oldParent, ComponentNode* node, ComponentNode* newParent) {
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
        WidenParent<true>(*newParent, *node);
    } else if (node->kind != 0) {
        SetRect(*newParent, RectOf(*node));
    }
}

namespace {

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

void SortChildren(ComponentNode* parent) {
    Sort<true>(parent, [](const ComponentNode& back, const ComponentNode& front) {
        return KeyOf(back) <= KeyOf(front);
    });
}

void SortChildrenByLeft(ComponentNode* parent) {
    Sort<false>(parent,
                [](const ComponentNode& back, const ComponentNode& front) { return back.left < front.left; });
}

}  // namespace tavrix::store
