// SPDX-License-Identifier: MIT
#include "image/HostBlock.h"

#include <cstring>

#include "image/DibLayout.h"
#include "platform/GlobalMemory.h"

namespace tavrix {

DibRecord NewHostBlock(unsigned bitCount, std::size_t pixelBytes) {
    void* block = platform::Lock(platform::AllocUncleared(BlockBytesOf(bitCount, pixelBytes)));
    if (block == nullptr) return {};
    std::memset(block, 0, BlockBytesOf(bitCount, 0));
    return PartsOf(block, bitCount);
}

void FreeHostBlock(HGLOBAL handle) {
    platform::Unlock(handle);
    platform::Free(handle);
}

}  // namespace tavrix
