// SPDX-License-Identifier: MIT
#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <new>
#include <unordered_map>

#include "platform/GlobalMemory.h"

#ifdef __linux__
#include <sys/mman.h>
#endif

#if defined(__SANITIZE_ADDRESS__)
#define TAVRIX_POISONS
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TAVRIX_POISONS
#endif
#endif
#ifdef TAVRIX_POISONS
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(start, bytes) static_cast<void>(start)
#endif

namespace tavrix::platform {
namespace {

// A block's data starts at a multiple of kAlignment. The handle of a fixed block is that address. The handle
// of a movable one is kHandleOffset past a multiple: a number that is not given out again, so that the
// handle of a freed block names nothing even when its memory is in use once more.
constexpr std::uintptr_t kAlignment = 64;
constexpr std::uintptr_t kHandleOffset = 16;
constexpr unsigned kMaxShownLocks = GMEM_LOCKCOUNT;

struct Block {
    HGLOBAL handle;
    void* memory;  // as the C library gave it; null for a discarded block
    void* data;
    std::size_t size;
    unsigned locks;
};

// Blocks by handle and by data address, which are the same for fixed ones, spread over several maps so that
// threads seldom wait for each other. What stands under a movable block's data address is a copy that only
// tells the handle.
struct Shard {
    std::mutex mutex;
    std::unordered_map<std::uintptr_t, Block> blocks;
};

std::uintptr_t NumberOf(const void* pointer) {
    return reinterpret_cast<std::uintptr_t>(pointer);
}

bool IsMovable(HGLOBAL handle) {
    return NumberOf(handle) % kAlignment == kHandleOffset;
}

Shard& ShardOf(std::uintptr_t key) {
    // Never destroyed: hosts may free blocks while the process ends.
    using Shards = std::array<Shard, 32>;
    alignas(Shards) static unsigned char storage[sizeof(Shards)];
    static auto& shards = *new (storage) Shards;
    return shards[(key / kAlignment * 0x9E3779B1u >> 16) % shards.size()];
}

// False when the key is taken.
bool Enter(std::uintptr_t key, const Block& block) {
    Shard& shard = ShardOf(key);
    const std::lock_guard guard(shard.mutex);
    return shard.blocks.emplace(key, block).second;
}

void Strike(std::uintptr_t key) {
    Shard& shard = ShardOf(key);
    const std::lock_guard guard(shard.mutex);
    shard.blocks.erase(key);
}

// Gives the block a handle of its own and enters it. Numbers come round again in a 32-bit process only, after
// 67 million blocks; those still in use are passed over.
void EnterMovable(Block& block) {
    static constinit std::atomic<std::uintptr_t> next{kAlignment + kHandleOffset};
    do {
        block.handle = reinterpret_cast<HGLOBAL>(next.fetch_add(kAlignment, std::memory_order_relaxed));
    } while (!Enter(NumberOf(block.handle), block));
    if (block.data == nullptr) return;
    try {
        Enter(NumberOf(block.data), block);
    } catch (...) {
        Strike(NumberOf(block.handle));
        throw;
    }
}

// Runs action(block) under the lock of the block that the handle names; otherwise gives none.
template <class Result, class Action>
Result WithBlock(HGLOBAL handle, Result none, Action action) {
    Shard& shard = ShardOf(NumberOf(handle));
    const std::lock_guard guard(shard.mutex);
    const auto found = shard.blocks.find(NumberOf(handle));
    return found == shard.blocks.end() || found->second.handle != handle ? none : action(found->second);
}

// What a new block holds.
enum class Content { kZeros, kAnything };

// Asks for large pages under a large block that is going to be written whole: the faults of small ones take
// three times as long as writing them.
void AskForLargePages([[maybe_unused]] const Block& block) {
#ifdef __linux__
    constexpr std::uintptr_t kLargePage = std::uintptr_t{1} << 21;
    if (block.size < kLargePage) return;
    const std::uintptr_t first = (NumberOf(block.data) + kLargePage - 1) / kLargePage * kLargePage;
    const std::uintptr_t end = (NumberOf(block.data) + block.size) / kLargePage * kLargePage;
    if (first < end) madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);
#endif
}

// Memory for a block, its data fenced in where a sanitizer watches.
bool Reserve(std::size_t bytes, Content content, Block& block) {
    if (bytes > SIZE_MAX - kAlignment) return false;
    block.memory =
        content == Content::kZeros ? std::calloc(1, bytes + kAlignment) : std::malloc(bytes + kAlignment);
    if (block.memory == nullptr) return false;
    const std::uintptr_t start = NumberOf(block.memory);
    const std::uintptr_t data = (start + kAlignment - 1) / kAlignment * kAlignment;
    block.data = reinterpret_cast<void*>(data);
    if (content == Content::kAnything) AskForLargePages(block);
    ASAN_POISON_MEMORY_REGION(block.memory, data - start);
    ASAN_POISON_MEMORY_REGION(reinterpret_cast<char*>(data) + bytes, start + kAlignment - data);
    return true;
}

HGLOBAL Alloc(bool isMovable, std::size_t bytes, Content content) try {
    Block block{nullptr, nullptr, nullptr, bytes, 0};
    if (isMovable && bytes == 0) {
        EnterMovable(block);  // discarded: a handle without memory
        return block.handle;
    }
    if (!Reserve(bytes, content, block)) return nullptr;
    try {
        if (isMovable) {
            EnterMovable(block);
        } else {
            block.handle = block.data;
            Enter(NumberOf(block.data), block);
        }
    } catch (...) {
        std::free(block.memory);
        return nullptr;
    }
    return block.handle;
} catch (...) {
    return nullptr;
}

}  // namespace

HGLOBAL AllocMovable(std::size_t bytes) {
    return Alloc(true, bytes, Content::kZeros);
}

HGLOBAL AllocUncleared(std::size_t bytes) {
    return Alloc(true, bytes, Content::kAnything);
}

HGLOBAL AllocFixed(std::size_t bytes) {
    return Alloc(false, bytes, Content::kZeros);
}

void* Lock(HGLOBAL handle) {
    return WithBlock(handle, static_cast<void*>(nullptr), [](Block& block) {
        if (IsMovable(block.handle) && block.data != nullptr) ++block.locks;
        return block.data;
    });
}

bool Unlock(HGLOBAL handle) {
    return WithBlock(handle, false, [](Block& block) {
        if (!IsMovable(block.handle)) return true;
        if (block.locks > 0) --block.locks;
        return block.locks > 0;
    });
}

bool Free(HGLOBAL handle) {
    const Block none{};
    const Block freed = WithBlock(handle, none, [](Block& block) {
        const Block copy = block;
        ShardOf(NumberOf(copy.handle)).blocks.erase(NumberOf(copy.handle));
        return copy;
    });
    if (freed.handle == nullptr) return false;
    if (freed.data != nullptr && freed.data != freed.handle) Strike(NumberOf(freed.data));
    std::free(freed.memory);
    return true;
}

HGLOBAL HandleOf(const void* address) {
    Shard& shard = ShardOf(NumberOf(address));
    const std::lock_guard guard(shard.mutex);
    const auto found = shard.blocks.find(NumberOf(address));
    return found == shard.blocks.end() || found->second.data != address ? nullptr : found->second.handle;
}

std::size_t SizeOf(HGLOBAL handle) {
    return WithBlock(handle, std::size_t{0}, [](Block& block) { return block.size; });
}

unsigned FlagsOf(HGLOBAL handle) {
    return WithBlock(handle, static_cast<unsigned>(GMEM_INVALID_HANDLE), [](Block& block) {
        if (block.data == nullptr) return static_cast<unsigned>(GMEM_DISCARDED);
        return block.locks < kMaxShownLocks ? block.locks : kMaxShownLocks;
    });
}

}  // namespace tavrix::platform

// The exports. The library itself calls the functions above, so that it works on its own blocks even where
// the program brings functions of these names.
extern "C" {

HGLOBAL GlobalAlloc(unsigned flags, std::size_t bytes) {
    return (flags & GMEM_MOVEABLE) != 0 ? tavrix::platform::AllocMovable(bytes)
                                        : tavrix::platform::AllocFixed(bytes);
}
void* GlobalLock(HGLOBAL handle) {
    return tavrix::platform::Lock(handle);
}
int GlobalUnlock(HGLOBAL handle) {
    return tavrix::platform::Unlock(handle) ? 1 : 0;
}
HGLOBAL GlobalFree(HGLOBAL handle) {
    return tavrix::platform::Free(handle) ? nullptr : handle;
}
HGLOBAL GlobalHandle(const void* address) {
    return tavrix::platform::HandleOf(address);
}
std::size_t GlobalSize(HGLOBAL handle) {
    return tavrix::platform::SizeOf(handle);
}
unsigned GlobalFlags(HGLOBAL handle) {
    return tavrix::platform::FlagsOf(handle);
}

}  // extern "C"
