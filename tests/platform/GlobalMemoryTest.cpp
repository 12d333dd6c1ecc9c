// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <thread>
#include <vector>

#include "tavrix/global_memory.h"

namespace tavrix {
namespace {

TEST(GlobalMemory, GivesZeroedBlocksThatAreFoundByAddress) {
    for (const unsigned kind : {GHND, GPTR, GMEM_MOVEABLE, GMEM_FIXED}) {
        for (const std::size_t bytes : {1, 15, 16, 17, 64, 1000, 1 << 20}) {
            const HGLOBAL handle = GlobalAlloc(kind, bytes);
            ASSERT_NE(handle, nullptr) << bytes;
            auto* data = static_cast<std::uint8_t*>(GlobalLock(handle));
            ASSERT_NE(data, nullptr);
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(data) % 16, 0u);
            EXPECT_TRUE(std::all_of(data, data + bytes, [](std::uint8_t byte) { return byte == 0; }));
            std::memset(data, 0xFF, bytes);
            EXPECT_EQ(GlobalHandle(data), handle);
            EXPECT_EQ(GlobalSize(handle), bytes);
            EXPECT_EQ(GlobalHandle(data + 1), nullptr);
            EXPECT_EQ(GlobalFree(handle), nullptr);
        }
    }
    EXPECT_EQ(GlobalAlloc(GHND, SIZE_MAX), nullptr);
}

TEST(GlobalMemory, CountsLocksOfMovableBlocks) {
    const HGLOBAL handle = GlobalAlloc(GHND, 10);
    void* data = GlobalLock(handle);
    EXPECT_NE(data, handle);
    EXPECT_EQ(GlobalLock(handle), data);
    EXPECT_EQ(GlobalFlags(handle), 2u);
    EXPECT_EQ(GlobalUnlock(handle), 1);
    EXPECT_EQ(GlobalUnlock(handle), 0);
    EXPECT_EQ(GlobalUnlock(handle), 0);  // one too many
    EXPECT_EQ(GlobalFlags(handle), 0u);
    EXPECT_EQ(GlobalLock(handle), data);  // never moves
    for (int i = 0; i < 300; ++i) GlobalLock(handle);
    EXPECT_EQ(GlobalFlags(handle), unsigned{GMEM_LOCKCOUNT});
    for (int i = 0; i < 300; ++i) EXPECT_EQ(GlobalUnlock(handle), 1);
    EXPECT_EQ(GlobalUnlock(handle), 0);      // all 301 were counted
    EXPECT_EQ(GlobalFree(handle), nullptr);  // locked or not

    const HGLOBAL fixed = GlobalAlloc(GPTR, 10);
    EXPECT_EQ(GlobalLock(fixed), fixed);
    EXPECT_EQ(GlobalFlags(fixed), 0u);
    EXPECT_EQ(GlobalUnlock(fixed), 1);
    EXPECT_EQ(GlobalFree(fixed), nullptr);
}

TEST(GlobalMemory, GivesADiscardedBlockForNoBytes) {
    const HGLOBAL handle = GlobalAlloc(GHND, 0);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(GlobalLock(handle), nullptr);
    EXPECT_EQ(GlobalUnlock(handle), 0);
    EXPECT_EQ(GlobalFlags(handle), unsigned{GMEM_DISCARDED});
    EXPECT_EQ(GlobalFree(handle), nullptr);
    EXPECT_EQ(GlobalFlags(handle), unsigned{GMEM_INVALID_HANDLE});
    const HGLOBAL fixed = GlobalAlloc(GPTR, 0);
    EXPECT_EQ(GlobalLock(fixed), fixed);
    EXPECT_EQ(GlobalFree(fixed), nullptr);
}

TEST(GlobalMemory, RefusesTheHandleOfAFreedBlockWhenItsMemoryIsInUseAgain) {
    constexpr int kBlocks = 100;
    std::map<void*, HGLOBAL> stale;
    std::vector<HGLOBAL> held;
    for (int i = 0; i < kBlocks; ++i) held.push_back(GlobalAlloc(GHND, 1000));
    for (const HGLOBAL handle : held) stale[GlobalLock(handle)] = handle;
    for (const HGLOBAL handle : held) GlobalFree(handle);
    int reused = 0;
    for (HGLOBAL& handle : held) {
        handle = GlobalAlloc(GHND, 1000);
        const auto former = stale.find(GlobalLock(handle));
        if (former == stale.end()) continue;
        ++reused;
        EXPECT_EQ(GlobalHandle(former->first), handle);
        EXPECT_EQ(GlobalLock(former->second), nullptr);
        EXPECT_EQ(GlobalFree(former->second), former->second);
    }
    for (const HGLOBAL handle : held) EXPECT_EQ(GlobalFree(handle), nullptr);
#ifndef __SANITIZE_ADDRESS__  // which keeps freed memory back for long
    EXPECT_GT(reused, 0);
#endif
}

TEST(GlobalMemory, RefusesWhatIsNoHandle) {
    const HGLOBAL movable = GlobalAlloc(GHND, 10), fixed = GlobalAlloc(GPTR, 10);
    const HGLOBAL stale = GlobalAlloc(GHND, 10);
    void* data = GlobalLock(movable);
    GlobalFree(stale);
    std::vector<char> foreign(100);
    char* const inside = static_cast<char*>(fixed);
    const std::vector<void*> noHandles = {nullptr,
                                          stale,
                                          data,
                                          inside - 16,
                                          inside + 1,
                                          foreign.data(),
                                          reinterpret_cast<void*>(64),
                                          reinterpret_cast<void*>(UINTPTR_MAX)};
    for (void* handle : noHandles) {
        SCOPED_TRACE(handle);
        EXPECT_EQ(GlobalLock(handle), nullptr);
        EXPECT_EQ(GlobalUnlock(handle), 0);
        EXPECT_EQ(GlobalSize(handle), 0u);
        EXPECT_EQ(GlobalFlags(handle), unsigned{GMEM_INVALID_HANDLE});
        EXPECT_EQ(GlobalFree(handle), handle);
        EXPECT_EQ(GlobalHandle(handle), handle == data ? movable : nullptr);
    }
    EXPECT_EQ(GlobalHandle(movable), nullptr);
    EXPECT_EQ(GlobalFlags(movable), 1u);
    GlobalFree(movable);
    GlobalFree(fixed);
}

TEST(GlobalMemory, ServesThreads) {
    std::vector<std::thread> threads;
    for (unsigned seed = 0; seed < 4; ++seed) {
        threads.emplace_back([seed] {
            std::vector<HGLOBAL> held;
            for (unsigned i = 0; i < 2000; ++i) {
                held.push_back(GlobalAlloc(i % 2 != 0 ? GHND : GPTR, 40));
                auto* data = static_cast<unsigned*>(GlobalLock(held.back()));
                *data = seed * 10000 + i;
                EXPECT_EQ(GlobalHandle(data), held.back());
                const auto first = seed * 10000 + i - (held.size() - 1);
                EXPECT_EQ(*static_cast<unsigned*>(GlobalLock(held.front())), first);
                if (held.size() < 50) continue;
                for (const HGLOBAL handle : held) EXPECT_EQ(GlobalFree(handle), nullptr);
                held.clear();
            }
            for (const HGLOBAL handle : held) GlobalFree(handle);
        });
    }
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace tavrix
