// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "tavrix/tavrix.h"

namespace tavrix {

// A new zeroed, movable block for an image of the host's, locked once: the parts of the block, where the
// caller writes header, colour table and pixel rows. All null when memory runs out.
[[nodiscard]] DibRecord NewHostBlock(unsigned bitCount, std::size_t pixelBytes);

// Unlocks and frees such a block when it cannot be handed over.
void FreeHostBlock(HGLOBAL handle);

}  // namespace tavrix
