// SPDX-License-Identifier: MIT
#pragma once

#include "tavrix/tavrix.h"

// Moving nodes of a store from parent to parent and putting children in order. Hosts see the links and
// rectangles that come out.
namespace tavrix::store {

// Detaches node from oldParent and makes it the first child of newParent (which may be the same),
// widening newParent's rectangle, where a side of -1 does not lower it. The first child's rectangle is
// copied.
void MoveToParent(ComponentNode* oldParent, ComponentNode* node, ComponentNode* newParent);

// Sorts children by ascending left, then right. Children with equal keys end in reverse of their earlier
// order. The parent's rectangle is widened over them, as MoveToParent does.
void SortChildren(ComponentNode* parent);
// Sorts children by left alone; children with equal keys keep their order. A side of -1 widens as well.
void SortChildrenByLeft(ComponentNode* parent);

}  // namespace tavrix::store
