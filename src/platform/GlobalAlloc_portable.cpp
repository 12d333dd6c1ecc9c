// SPDX-License-Identifier: MIT
#include <array>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <new>
#include <unordered_map>

#include "tavrix/global_memory.h"

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(start, bytes) static_cast<void>(start)
#endif

namespace {

// A block's data starts at a multiple of kAlignment. The handle of a fixed block is that address, the
// handle of a movable one lies kHandleOffset bytes before it, so that the two kinds never meet.
constexpr std::uintptr_t kAlignment = 64;
constexpr std::uintptr_t kHandleOffset = 16;
constexpr unsigned kMaxLocks = 255;

struct Block {
    void* memory;  // what calloc gave
    std::size_t size;
    unsigned locks;
    bool movable;
};

// Blocks by data address, spread over several maps so that threads seldom wait for each other.
struct Shard {
    std::mutex mutex;
    std::unordered_map<std::uintptr_t, Block> blocks;
};

Shard& ShardOf(std::uintptr_t data) {
    // Never destroyed: hosts may free blocks while the process ends.
    using Shards = std::array<Shard, 32>;
    alignas(Shards) static unsigned char storage[sizeof(Shards)];
    static auto& shards = *new (storage) Shards;
    return shards[(data / kAlignment * 0x9E3779B1u >> 16) % shards.size()];
}

std::uintptr_t DataOf(HGLOBAL handle) {
    const auto value = reinterpret_cast<std::uintptr_t>(handle);
    return value % kAlignment == 0 ? value : value + kHandleOffset;
}

// Runs action(block, data) under the lock of the block that the handle names; otherwise gives none.
template <class Result, class Action>
Result WithBlock(HGLOBAL handle, Result none, Action action) {
    const std::uintptr_t data = DataOf(handle);
    Shard& shard = ShardOf(data);
    const std::lock_guard guard(shard.mutex);
    const auto found = shard.blocks.find(data);
    const bool asMovable = data != reinterpret_cast<std::uintptr_t>(handle);
    if (found == shard.blocks.end() || found->second.movable != asMovable) return none;
    return action(found->second, data);
}

}  // namespace

extern "C" {

HGLOBAL GlobalAlloc(unsigned flags, std::size_t bytes) try {
    if (bytes > SIZE_MAX - kAlignment - kHandleOffset) return nullptr;
    void* memory = std::calloc(1, bytes + kAlignment + kHandleOffset);
    if (memory == nullptr) return nullptr;
    const auto start = reinterpret_cast<std::uintptr_t>(memory) + kHandleOffset;
    const std::uintptr_t data = (start + kAlignment - 1) / kAlignment * kAlignment;
    // The sanitizer knows calloc's block, which is larger than the host's.
    ASAN_POISON_MEMORY_REGION(memory, data - reinterpret_cast<std::uintptr_t>(memory));
    ASAN_POISON_MEMORY_REGION(reinterpret_cast<char*>(data) + bytes,
                              reinterpret_cast<std::uintptr_t>(memory) + kAlignment + kHandleOffset - data);
    const bool movable = (flags & GMEM_MOVEABLE) != 0;
    Shard& shard = ShardOf(data);
    try {
        const std::lock_guard guard(shard.mutex);
        shard.blocks.insert_or_assign(data, Block{memory, bytes, 0, movable});
    } catch (...) {
        std::free(memory);
        return nullptr;
    }
    return reinterpret_cast<HGLOBAL>(movable ? data - kHandleOffset : data);
} catch (...) {
    return nullptr;
}

void* GlobalLock(HGLOBAL handle) {
    return WithBlock(handle, static_cast<void*>(nullptr), [](Block& block, std::uintptr_t data) {
        if (block.movable && block.locks < kMaxLocks) ++block.locks;
        return reinterpret_cast<void*>(data);
    });
}

int GlobalUnlock(HGLOBAL handle) {
    return WithBlock(handle, 0, [](Block& block, std::uintptr_t) {
        if (!block.movable) return 1;
        if (block.locks > 0) --block.locks;
        return block.locks > 0 ? 1 : 0;
    });
}

HGLOBAL GlobalFree(HGLOBAL handle) {
    void* memory = WithBlock(handle, static_cast<void*>(nullptr), [](Block& block, std::uintptr_t data) {
        void* found = block.memory;
        ShardOf(data).blocks.erase(data);
        return found;
    });
    if (memory == nullptr) return handle;
    std::free(memory);
    return nullptr;
}

HGLOBAL GlobalHandle(const void* address) {
    const auto data = reinterpret_cast<std::uintptr_t>(address);
    Shard& shard = ShardOf(data);
    const std::lock_guard guard(shard.mutex);
    const auto found = shard.blocks.find(data);
    if (found == shard.blocks.end()) return nullptr;
    return reinterpret_cast<HGLOBAL>(found->second.movable ? data - kHandleOffset : data);
}

std::size_t GlobalSize(HGLOBAL handle) {
    return WithBlock(handle, std::size_t{0}, [](Block& block, std::uintptr_t) { return block.size; });
}

unsigned GlobalFlags(HGLOBAL handle) {
    return WithBlock(handle, static_cast<unsigned>(GMEM_INVALID_HANDLE),
                     [](Block& block, std::uintptr_t) { return block.locks; });
}

}  // extern "C"
