// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "tavrix/tavrix.h"

// Global memory, where images and node blocks live: the system's own on Windows, ours elsewhere.
// Blocks are zeroed unless it says otherwise. Handles and addresses that name no block give null, 0 or
// nothing.
namespace tavrix::platform {

[[nodiscard]] HGLOBAL AllocMovable(std::size_t bytes);    // GHND
[[nodiscard]] HGLOBAL AllocUncleared(std::size_t bytes);  // movable, of any content
[[nodiscard]] HGLOBAL AllocFixed(std::size_t bytes);      // GPTR: the handle is the address
void* Lock(HGLOBAL handle);
bool Unlock(HGLOBAL handle);  // true while locks remain or for a fixed block
bool Free(HGLOBAL handle);    // false for a handle that is none
HGLOBAL HandleOf(const void* address);
std::size_t SizeOf(HGLOBAL handle);

}  // namespace tavrix::platform
