// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

#include "image/Rect.h"
#include "tavrix/tavrix.h"

// The memory of a store, and the nodes in its tree of blocks, lines and components, which hosts share with
// the library (layout: tavrix.h). Links, list order, counters and the order of the free list are seen by
// hosts. No operation checks its node arguments.
namespace tavrix::store {

// Of all slots.
inline constexpr std::size_t kBytes = std::size_t{TAVRIX_STORE_CAPACITY} * sizeof(ComponentNode);
// Makes an empty store in zeroed memory for all slots, of which it threads initialCount (1 ..
// TAVRIX_STORE_CAPACITY) and touches no other.
void Lay(ComponentStore& store, ComponentNode* nodes, std::uint32_t initialCount = TAVRIX_STORE_INITIAL_COUNT,
         std::uint32_t growStep = TAVRIX_STORE_GROW_STEP);
// Allocates the node block and threads initialCount slots (1 .. TAVRIX_STORE_CAPACITY); releases the one
// before. False when memory runs out; nodes is then null.
[[nodiscard]] bool Create(ComponentStore& store, std::uint32_t initialCount = TAVRIX_STORE_INITIAL_COUNT,
                          std::uint32_t growStep = TAVRIX_STORE_GROW_STEP);
// Frees the node block and clears the header.
void Release(ComponentStore& store);

// A node from the free list, its links as given, or null when all slots are in use (or there are none).
ComponentNode* AllocNode(ComponentStore& store, const Rect& rect, std::uint16_t tag, std::uint32_t kind,
                         ComponentNode* prev, ComponentNode* next, ComponentNode* parent,
                         ComponentNode* firstChild);
void FreeNode(ComponentStore& store, ComponentNode* node);

// A new node spliced in between prev and next (either may be null: without prev it becomes the first
// child), or null when the store is full. It belongs to the store. The parent's rectangle stays.
ComponentNode* InsertComponent(ComponentStore& store, ComponentNode* line, ComponentNode* prev,
                               ComponentNode* next, const Rect& rect);
ComponentNode* InsertLine(ComponentStore& store, ComponentNode* block, ComponentNode* prev,
                          ComponentNode* next, const Rect& rect);
ComponentNode* InsertBlock(ComponentStore& store, ComponentNode* prev, ComponentNode* next, const Rect& rect);

// Give a node and all below it back to the free list. The parent's rectangle stays.
void DeleteComponent(ComponentStore& store, ComponentNode* node);
void DeleteLine(ComponentStore& store, ComponentNode* node);
void DeleteBlock(ComponentStore& store, ComponentNode* node);

// Fits every line of the block to its components and deletes lines without any.
void RebuildLineBoxes(ComponentStore& store, ComponentNode* block);

}  // namespace tavrix::store
