// SPDX-License-Identifier: MIT
#include "platform/GlobalMemory.h"

namespace tavrix::platform {

HGLOBAL AllocMovable(std::size_t bytes) {
    return GlobalAlloc(GHND, bytes);
}
HGLOBAL AllocUncleared(std::size_t bytes) {
    return GlobalAlloc(GMEM_MOVEABLE, bytes);
}
HGLOBAL AllocFixed(std::size_t bytes) {
    return GlobalAlloc(GPTR, bytes);
}
void* Lock(HGLOBAL handle) {
    return GlobalLock(handle);
}
bool Unlock(HGLOBAL handle) {
    return GlobalUnlock(handle) != 0;
}
bool Free(HGLOBAL handle) {
    return GlobalFree(handle) == nullptr;
}
HGLOBAL HandleOf(const void* address) {
    return GlobalHandle(address);
}
std::size_t SizeOf(HGLOBAL handle) {
    return GlobalSize(handle);
}

}  // namespace tavrix::platform
