// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "tavrix/tavrix.h"

namespace tavrix::fuzz {

// Requires that the links form one tree of three levels whose nodes lie in the node block, that no node is
// both in the tree and free, and that the counters agree with it. spareSlots: threaded slots that the caller
// took out of use.
void CheckStore(const ComponentStore& store, std::uint32_t spareSlots);

}  // namespace tavrix::fuzz
