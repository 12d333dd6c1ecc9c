// SPDX-License-Identifier: MIT
#include <windows.h>

#include "platform/UntouchedMemory.h"

namespace tavrix::platform {

UntouchedMemory::UntouchedMemory(std::size_t bytes)
    : start(VirtualAlloc(nullptr, bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE)), size(bytes) {}

UntouchedMemory::~UntouchedMemory() {
    if (start != nullptr) VirtualFree(start, 0, MEM_RELEASE);
}

}  // namespace tavrix::platform
