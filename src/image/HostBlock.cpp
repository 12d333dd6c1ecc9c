// SPDX-License-Identifier: MIT
#include "image/HostBlock.h"

#include "image/DibLayout.h"
#include "platform/GlobalMemory.h"

namespace tavrix {

DibRecord NewHostBlock(unsigned bitCount, std::size_t pixelBytes) {
    void* block = platform::Lock(platform::AllocMovable(BlockBytesOf(bitCount, pixelBytes)));
    return block != nullptr ? PartsOf(block, bitCount) : DibRecord{};
}

void FreeHostBlock(HGLOBAL handle) {
    platform::Unlock(handle);
    platform::Free(handle);
}

}  // namespace tavrix
