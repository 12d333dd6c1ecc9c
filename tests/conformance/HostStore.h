// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <vector>

#include "GlobalMemory.h"
#include "tavrix/tavrix.h"

namespace tavrix::conformance {

// A rectangle by its lowest left corner and its size.
struct Box {
    int left;
    int bottom;
    int width;
    int height;
};

// A component store as a host makes it. Blocks and lines go to the end of their lists.
class HostStore {
  public:
    HostStore();
    ~HostStore() { GlobalFree(GlobalHandle(header.nodes)); }
    HostStore(const HostStore&) = delete;
    HostStore& operator=(const HostStore&) = delete;

    ComponentNode* AddBlock();
    // A line of components of these boxes, in their order, fitted to them.
    void AddLine(ComponentNode* block, const std::vector<Box>& boxes);
    // Leaves so many nodes that the library may take, in a store that cannot grow.
    void LeaveFree(int count);

    ComponentStore header{};

  private:
    ComponentNode* Take(ComponentNode*& list, ComponentNode* parent, std::uint32_t kind, const Box& box);
};

}  // namespace tavrix::conformance
