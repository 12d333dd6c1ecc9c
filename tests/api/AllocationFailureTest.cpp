// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/mman.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

#include "api/ExportCalls.h"
#include "image/DibLayout.h"
#include "support/HostImage.h"
#include "tavrix/component_store.hpp"
#include "tavrix/message_handler.h"

extern "C" {
void* __real_malloc(std::size_t bytes);
void* __wrap_malloc(std::size_t bytes);
}

// Counts the allocations of the code under test and their bytes, and lets chosen ones fail. The functions of
// the system by which memory comes and goes are redirected by the linker.
namespace {

std::atomic<bool> counting{false};
std::atomic<int> countdown{0};  // allocations until one fails
std::atomic<bool> failsOnwards{false};
std::atomic<int> failed{0};
std::atomic<int> live{0};  // blocks of operator new
std::atomic<long> bytesInUse{0}, mostBytes{0};

void* Counted(void* memory) {
    if (memory == nullptr) return nullptr;
    bytesInUse += static_cast<long>(malloc_usable_size(memory));
    mostBytes = std::max(mostBytes.load(), bytesInUse.load());
    return memory;
}
void Uncount(void* memory) {
    bytesInUse -= static_cast<long>(malloc_usable_size(memory));
}

bool Fails() {
    if (!counting) return false;
    const int left = --countdown;
    const bool fails = left == 0 || (left < 0 && failsOnwards);
    failed += fails ? 1 : 0;
    return fails;
}

void* Allocate(std::size_t bytes, std::size_t alignment) {
    if (Fails()) throw std::bad_alloc();
    const std::size_t rounded = (bytes + alignment) / alignment * alignment;
    void* memory = alignment <= alignof(std::max_align_t) ? __real_malloc(bytes + 1)
                                                          : std::aligned_alloc(alignment, rounded);
    if (memory == nullptr) throw std::bad_alloc();
    ++live;
    return Counted(memory);
}

void Deallocate(void* memory) noexcept {
    if (memory == nullptr) return;
    --live;
    std::free(memory);
}

}  // namespace

void* operator new(std::size_t bytes) {
    return Allocate(bytes, 1);
}
void* operator new(std::size_t bytes, std::align_val_t alignment) {
    return Allocate(bytes, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept try {
    return Allocate(bytes, 1);
} catch (...) {
    return nullptr;
}
void operator delete(void* memory) noexcept {
    Deallocate(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    Deallocate(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    Deallocate(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
    Deallocate(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    Deallocate(memory);
}

extern "C" {
void* __wrap_malloc(std::size_t bytes) {
    return Fails() ? nullptr : Counted(__real_malloc(bytes));
}
void* __real_calloc(std::size_t count, std::size_t bytes);
void* __wrap_calloc(std::size_t count, std::size_t bytes);
void* __wrap_calloc(std::size_t count, std::size_t bytes) {
    return Fails() ? nullptr : Counted(__real_calloc(count, bytes));
}
// Costs nothing before it is touched.
void* __real_mmap(void* address, std::size_t bytes, int protection, int flags, int file, off_t offset);
void* __wrap_mmap(void* address, std::size_t bytes, int protection, int flags, int file, off_t offset);
void* __wrap_mmap(void* address, std::size_t bytes, int protection, int flags, int file, off_t offset) {
    return Fails() ? MAP_FAILED : __real_mmap(address, bytes, protection, flags, file, offset);
}
void __real_free(void* memory);
void __wrap_free(void* memory);
void __wrap_free(void* memory) {
    if (memory != nullptr) Uncount(memory);
    __real_free(memory);
}
}

namespace tavrix::test {
namespace {

bool IsConsistent(const ComponentNode* first, const ComponentNode* parent, unsigned& nodes) {
    const ComponentNode* prev = nullptr;
    for (const ComponentNode* node = first; node != nullptr; prev = node, node = node->next) {
        ++nodes;
        if (node->parent != parent || node->prev != prev) return false;
        if (node->kind != NODE_COMPONENT && !IsConsistent(node->firstChild, node, nodes)) return false;
    }
    return true;
}

class AllocationFailure : public testing::TestWithParam<ExportCall> {
  protected:
    // The tables of global memory grow and stay; here before anything is counted.
    static void SetUpTestSuite() {
        std::vector<HGLOBAL> handles(5000);
        for (HGLOBAL& handle : handles) handle = GlobalAlloc(GHND, 40);
        for (const HGLOBAL handle : handles) GlobalFree(handle);
        TavrixSetMessageHandler([](const char*, void*) {}, nullptr);
    }

    // Lets the n-th allocation fail (or all from there on). True when the call made fewer.
    bool Try(int bitCount, int n, bool onwards) {
        const ExportCall& call = GetParam();
        const HostImage image = HostImage::Drawn(60, 34, bitCount);
        host::Store store;
        if (call.Is(kNeedsTree)) Extract_Eight_Connected_Components(image.Record(), store.get(), 1, 0, 0);
        DibRecord marker{};
        marker.bits = reinterpret_cast<std::uint8_t*>(&marker);
        DibRecord result = marker;

        const int liveBefore = live;
        failed = 0;
        countdown = n;
        failsOnwards = onwards;
        counting = true;
        const bool accepted = call({image.Handle(), image.Record(), store.get()}, &result);
        counting = false;

        const bool written = std::memcmp(&result, &marker, sizeof marker) != 0;
        const bool replaced = written && GlobalHandle(image.Record().header) == nullptr;
        if (written) {
            EXPECT_TRUE(accepted) << "refused, but the record was written";
            EXPECT_EQ(GlobalFree(GlobalHandle(result.header)), nullptr);
        }
        if (!replaced) {
            EXPECT_EQ(GlobalFlags(image.Handle()), 1u);
            const BITMAPINFOHEADER& header = image.Header();
            EXPECT_TRUE(header.biBitCount == bitCount || (bitCount == 8 && header.biBitCount == 1));
            EXPECT_EQ(header.biSizeImage, RowBytesOf(header.biBitCount, header.biWidth) * header.biHeight);
        }
        unsigned nodes = 0;
        const ComponentStore& seen = store.header();
        EXPECT_TRUE(IsConsistent(seen.firstBlock, nullptr, nodes));
        EXPECT_EQ(seen.liveCount, nodes);
        EXPECT_EQ(seen.blockCount + seen.lineCount + seen.componentCount, nodes);
        EXPECT_LE(live, liveBefore) << "leak";  // a replaced image is gone
        return failed == 0;
    }
};

TEST_P(AllocationFailure, EndsInARefusalOrAResultAndLeaksNothing) {
    constexpr int kMostAllocations = 5000;
    for (const int bitCount : {1, 8, 24}) {
        if (!GetParam().Takes(bitCount)) continue;
        EXPECT_TRUE(Try(bitCount, kMostAllocations, false));  // caches and first-time allocations
        for (const bool onwards : {false, true}) {
            int n = 1;
            while (n < kMostAllocations && !Try(bitCount, n, onwards) && !HasFailure()) ++n;
            EXPECT_LT(n, kMostAllocations);
            if (HasFailure()) {
                ADD_FAILURE() << bitCount << " bits, allocation " << n
                              << (onwards ? " and all after it" : "");
                return;
            }
        }
    }
}

// Bytes a pixel above the host's picture, the result left out: methods that analyse the page need a plane,
// others rows, and colour pictures a gray copy. A quarter of a megabyte more counts pairs of pixels.
TEST(Memory, OfEveryModeIsBounded) {
    constexpr int kWidth = 1100, kHeight = 900;
    for (const int bitCount : {8, 24}) {
        for (const unsigned seed : {0, 3}) {  // as printed, and under noise
            for (int mode = 0; mode <= 9; ++mode) {
                const HostImage picture = HostImage::Drawn(kWidth, kHeight, bitCount, seed);
                const long before = bytesInUse;
                mostBytes = before;
                DibRecord result{};
                ASSERT_EQ(Binarized(picture.Handle(), &result, mode), 1);
                const auto resultBytes = static_cast<long>(GlobalSize(GlobalHandle(result.header)));
                const bool analyses = mode == 5 || mode == 8 || mode == 9;
                EXPECT_LT(static_cast<double>(mostBytes - before - resultBytes) / (kWidth * kHeight),
                          (analyses ? 1.3 : 0.3) + (bitCount == 24 ? 1 : 0))
                    << bitCount << " bits, mode " << mode;
                GlobalFree(GlobalHandle(result.header));
                EXPECT_LT(bytesInUse - before, 4096) << "kept after mode " << mode;
            }
        }
    }
}

TEST(Memory, IsNotTouchedForATurnThatIsTooLarge) {
    const struct {
        int width, height, bitCount;                        // of the picture, which is not touched either
    } tooLarge[] = {{30000, 20000, 1}, {32767, 5200, 24}};  // a side of 35,355; a block of 2.1 GB
    for (const auto& [width, height, bitCount] : tooLarge) {
        const HostImage picture(width, height, bitCount);
        const long before = bytesInUse;
        mostBytes = before;
        DibRecord result{};
        EXPECT_EQ(RotateImageFree(picture.Handle(), 45, 0, &result), -1);
        EXPECT_LT(mostBytes - before, 4096);
    }
}

INSTANTIATE_TEST_SUITE_P(Exports, AllocationFailure, testing::ValuesIn(ExportCalls()), TestNameOf);

}  // namespace
}  // namespace tavrix::test
