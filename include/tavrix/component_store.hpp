// SPDX-License-Identifier: MIT
//
// A component store for hosts in C++17 or later: makes and frees the memory that tavrix.h describes, and
// walks the tree.
//
//     tavrix::host::Store store;
//     Extract_Eight_Connected_Components(image, store.get(), 1, 0, 0);
//     for (const ComponentNode& block : store.blocks())
//         for (const ComponentNode& line : tavrix::host::Children(block))
//             for (const ComponentNode& component : tavrix::host::Children(line)) ...
//
// A range does not survive the deletion of the node that it stands on.
#ifndef TAVRIX_COMPONENT_STORE_HPP
#define TAVRIX_COMPONENT_STORE_HPP

#if __cplusplus < 201703L && (!defined(_MSVC_LANG) || _MSVC_LANG < 201703L)
#error "tavrix/component_store.hpp needs C++17 (tavrix.h does not): -std=c++17, /std:c++17"
#endif

#include <tavrix/tavrix.h>

#include <cstddef>
#include <iterator>
#include <new>
#include <utility>

namespace tavrix::host {

// Siblings from a first node on, in list order.
class NodeRange {
  public:
    class Iterator {
      public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = ComponentNode;
        using difference_type = std::ptrdiff_t;
        using pointer = ComponentNode*;
        using reference = ComponentNode&;

        explicit Iterator(ComponentNode* start = nullptr) : node(start) {}
        reference operator*() const { return *node; }
        pointer operator->() const { return node; }
        Iterator& operator++() {
            node = node->next;
            return *this;
        }
        Iterator operator++(int) {
            Iterator before = *this;
            ++*this;
            return before;
        }
        friend bool operator==(Iterator a, Iterator b) { return a.node == b.node; }
        friend bool operator!=(Iterator a, Iterator b) { return a.node != b.node; }

      private:
        ComponentNode* node;
    };

    explicit NodeRange(ComponentNode* firstNode) : first(firstNode) {}
    Iterator begin() const { return Iterator(first); }
    Iterator end() const { return Iterator(); }
    bool empty() const { return first == nullptr; }

  private:
    ComponentNode* first;
};

// The lines of a block or the components of a line.
inline NodeRange Children(const ComponentNode& node) {
    return NodeRange(node.firstChild);
}

// A store with its node block, ready for Extract_Eight_Connected_Components. Throws std::bad_alloc.
class Store {
  public:
    Store() : store{} {
        store.nodes = static_cast<ComponentNode*>(
            GlobalAlloc(GPTR, std::size_t{TAVRIX_STORE_CAPACITY} * sizeof(ComponentNode)));
        if (store.nodes == nullptr) throw std::bad_alloc();
        store.freeList = store.nodes;
        store.state = TAVRIX_STORE_ALLOCATED;
        store.growStep = TAVRIX_STORE_GROW_STEP;
        store.threadedCount = TAVRIX_STORE_INITIAL_COUNT;
        // The block is zeroed, so the last slot's next is null already.
        for (int i = 1; i < TAVRIX_STORE_INITIAL_COUNT; ++i) store.nodes[i - 1].next = store.nodes + i;
    }
    ~Store() {
        if (store.nodes != nullptr) GlobalFree(GlobalHandle(store.nodes));
    }
    Store(Store&& other) noexcept : store(std::exchange(other.store, {})) {}
    Store& operator=(Store&& other) noexcept {
        std::swap(store, other.store);
        return *this;
    }
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    ComponentStore* get() { return &store; }
    const ComponentStore& header() const { return store; }
    NodeRange blocks() const { return NodeRange(store.firstBlock); }

  private:
    ComponentStore store;
};

}  // namespace tavrix::host

#endif
