// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "tavrix/tavrix.h"

namespace tavrix {

// A new movable block for an image of the host's, locked once: the parts of the block. Header and colour
// table are zeroed; the caller writes every byte of the pixel rows. All null when memory runs out.
[[nodiscard]] DibRecord NewHostBlock(unsigned bitCount, std::size_t pixelBytes);

// Unlocks and frees such a block when it cannot be handed over.
void FreeHostBlock(HGLOBAL handle);

}  // namespace tavrix
