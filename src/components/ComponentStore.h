// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "tavrix/tavrix.h"

// Operations on the tree of blocks, lines and components that hosts share with the library (layout:
// tavrix.h). Links, list order, counters and the order of the free list are seen by hosts. No operation
// checks its node arguments.
namespace tavrix::store {

// Allocates the node block and threads initialCount slots (1 .. TAVRIX_STORE_CAPACITY); releases the one
// before. False when memory runs out; nodes is then null.
bool Create(ComponentStore& store, std::uint32_t initialCount = TAVRIX_STORE_INITIAL_COUNT,
            std::uint32_t growStep = TAVRIX_STORE_GROW_STEP);
// Frees the node block and clears the header.
void Release(ComponentStore& store);

// The four sides of a node or of an insert, in the order of the node's fields.
struct Box {
    std::int16_t left = 0;
    std::int16_t top = 0;
    std::int16_t right = 0;
    std::int16_t bottom = 0;
};

// A node from the free list, its links as given, or null when all slots are in use (or there are none).
ComponentNode* AllocNode(ComponentStore& store, const Box& box, std::uint16_t tag, std::uint32_t kind,
                         ComponentNode* prev, ComponentNode* next, ComponentNode* parent,
                         ComponentNode* firstChild);
void FreeNode(ComponentStore& store, ComponentNode* node);

// A new node spliced in between prev and next (either may be null: without prev it becomes the first
// child), or null when the store is full. The parent's rectangle stays.
ComponentNode* InsertComponent(ComponentStore& store, ComponentNode* line, ComponentNode* prev,
                               ComponentNode* next, const Box& box);
ComponentNode* InsertLine(ComponentStore& store, ComponentNode* block, ComponentNode* prev,
                          ComponentNode* next, const Box& box);
ComponentNode* InsertBlock(ComponentStore& store, ComponentNode* prev, ComponentNode* next, const Box& box);

void DeleteComponent(ComponentStore& store, ComponentNode* node);
void DeleteLine(ComponentStore& store, ComponentNode* node);
void DeleteBlock(ComponentStore& store, ComponentNode* node);

// Detaches node from oldParent and makes it the first child of newParent (which may be the same),
// widening newParent's rectangle, where a side of -1 does not lower it. The first child's rectangle is
// copied.
void MoveToParent(ComponentNode* oldParent, ComponentNode* node, ComponentNode* newParent);
// The same without the rule for -1.
void MoveToParentPlain(ComponentNode* oldParent, ComponentNode* node, ComponentNode* newParent);

// Sorts children by left, then right. Children with equal keys end in reverse of their earlier order.
void SortChildren(ComponentNode* parent, bool ascending);
// Sorts children by left alone; children with equal keys keep their order.
void SortChildrenByLeft(ComponentNode* parent, bool ascending);

// Fits every line of the block to its components and deletes lines without any.
void RebuildLineBoxes(ComponentStore& store, ComponentNode* block);

// Width and height of a node or a box, as the unsigned 16-bit numbers that the rules compare.
template <class Rectangle>
std::uint16_t WidthOf(const Rectangle& box) {
    return static_cast<std::uint16_t>(box.right - box.left + 1);
}
template <class Rectangle>
std::uint16_t HeightOf(const Rectangle& box) {
    return static_cast<std::uint16_t>(box.top - box.bottom + 1);
}
// Centre, truncated toward zero.
inline int CentreX(const ComponentNode& node) {
    return (node.left + node.right) / 2;
}
inline int CentreY(const ComponentNode& node) {
    return (node.top + node.bottom) / 2;
}

}  // namespace tavrix::store
