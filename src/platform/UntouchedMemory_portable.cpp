// SPDX-License-Identifier: MIT
#include <sys/mman.h>

#include "platform/UntouchedMemory.h"

namespace tavrix::platform {

UntouchedMemory::UntouchedMemory(std::size_t bytes)
    : start(mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)), size(bytes) {
    if (start == MAP_FAILED) start = nullptr;
}

UntouchedMemory::~UntouchedMemory() {
    if (start != nullptr) munmap(start, size);
}

}  // namespace tavrix::platform
