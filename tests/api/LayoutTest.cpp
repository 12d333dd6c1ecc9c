// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "binarize/Binarizer.h"
#include "components/ComponentExtractor.h"
#include "components/ComponentGrouper.h"
#include "components/ComponentNoiseFilter.h"
#include "geometry/RotationTool.h"
#include "image/DibImage.h"
#include "image/ImageTool.h"
#include "lines/TextLineGrouper.h"
#include "tavrix/tavrix.h"

// Classes with virtual operations are not of standard layout, but every compiler we build with has their
// fields where offsetof says.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

namespace tavrix {
namespace {

// What hosts share with the library: fixed in 32-bit programs, the same fields in the same order elsewhere.
static_assert(sizeof(BITMAPINFOHEADER) == 40 && sizeof(RGBQUAD) == 4);
static_assert(sizeof(BlockRect) == 10 && sizeof(LogoRect) == 10 && sizeof(TrueLineRect) == 16);
static_assert(sizeof(GroupingOptions) == 6 && offsetof(GroupingOptions, splitFlags) == 4);
static_assert(offsetof(ComponentNode, left) == 4 && offsetof(ComponentNode, tag) == 12);
static_assert(offsetof(ComponentNode, kind) == 16 && offsetof(ComponentNode, reserved32) == 32);
static_assert(offsetof(ComponentNode, pixelCount) == 100 && offsetof(ComponentNode, lineHeight) == 104);

#define EXPECT_SIZE32(type, bytes) static_assert(sizeof(void*) != 4 || sizeof(type) == (bytes))
#define EXPECT_OFFSET32(type, field, bytes) \
    static_assert(sizeof(void*) != 4 || offsetof(type, field) == (bytes))

EXPECT_SIZE32(DibRecord, 12);
EXPECT_SIZE32(ComponentNode, 124);
EXPECT_OFFSET32(ComponentNode, prev, 108);
EXPECT_OFFSET32(ComponentNode, next, 112);
EXPECT_OFFSET32(ComponentNode, parent, 116);
EXPECT_OFFSET32(ComponentNode, firstChild, 120);
EXPECT_SIZE32(ComponentStore, 40);
EXPECT_OFFSET32(ComponentStore, firstBlock, 8);
EXPECT_OFFSET32(ComponentStore, state, 12);
EXPECT_OFFSET32(ComponentStore, componentCount, 36);

EXPECT_SIZE32(DibImage, 24);
EXPECT_OFFSET32(DibImage, header, 4);
EXPECT_OFFSET32(DibImage, palette, 8);
EXPECT_OFFSET32(DibImage, bits, 12);
EXPECT_OFFSET32(DibImage, handle, 16);
EXPECT_OFFSET32(DibImage, ownsHandle, 20);

EXPECT_SIZE32(ImageTool, 16);
EXPECT_OFFSET32(ImageTool, image, 4);
EXPECT_OFFSET32(ImageTool, groupingOptions, 8);
EXPECT_OFFSET32(ImageTool, groupingValue, 12);

EXPECT_SIZE32(TextLineGrouper, 40);
EXPECT_OFFSET32(TextLineGrouper, image, 4);
EXPECT_OFFSET32(TextLineGrouper, width, 8);
EXPECT_OFFSET32(TextLineGrouper, rowBytes, 12);
EXPECT_OFFSET32(TextLineGrouper, height, 16);
EXPECT_OFFSET32(TextLineGrouper, bitCount, 20);
EXPECT_OFFSET32(TextLineGrouper, options, 24);
EXPECT_OFFSET32(TextLineGrouper, extra, 28);
EXPECT_OFFSET32(TextLineGrouper, selectFlags, 32);
EXPECT_OFFSET32(TextLineGrouper, splitFlags, 36);

EXPECT_SIZE32(Binarizer, 28 + 256 + 1024);
EXPECT_OFFSET32(Binarizer, image, 4);
EXPECT_OFFSET32(Binarizer, width, 8);
EXPECT_OFFSET32(Binarizer, rowBytes, 12);
EXPECT_OFFSET32(Binarizer, palette, 16);
EXPECT_OFFSET32(Binarizer, height, 20);
EXPECT_OFFSET32(Binarizer, bitCount, 24);
EXPECT_OFFSET32(Binarizer, intensity, 28);
EXPECT_OFFSET32(Binarizer, histogram, 284);

// The tools of components and rotation have the same fields after their tables.
template <class Tool>
constexpr bool HasToolFields() {
    return sizeof(void*) != 4 ||
           (sizeof(Tool) == 24 && offsetof(Tool, image) == 4 && offsetof(Tool, width) == 8 &&
            offsetof(Tool, rowBytes) == 12 && offsetof(Tool, height) == 16 && offsetof(Tool, bitCount) == 20);
}
static_assert(HasToolFields<ComponentExtractor>() && HasToolFields<ComponentNoiseFilter>() &&
              HasToolFields<ComponentGrouper>() && HasToolFields<RotationTool>());

// The place of a virtual operation in the table, where a virtual destructor takes two places (it is split
// in two by the C++ ABI of GCC): a pointer to a virtual member holds 1 + its offset in bytes.
template <class Member>
std::size_t SlotOf(Member member) {
    std::uintptr_t offset = 0;
    std::memcpy(&offset, &member, sizeof offset);
    return (offset - 1) / sizeof(void*);
}

TEST(Layout, VirtualOperationsKeepTheirOrder) {
    EXPECT_EQ(SlotOf(&Binarizer::BinarizeBlock), 0u);
    EXPECT_EQ(SlotOf(&Binarizer::Binarize), 3u);
    EXPECT_EQ(SlotOf(&ComponentExtractor::Run), 0u);
    EXPECT_EQ(SlotOf(&ComponentNoiseFilter::Run), 0u);
    EXPECT_EQ(SlotOf(&ComponentGrouper::Run), 0u);
    EXPECT_EQ(SlotOf(&RotationTool::RotateNodeRect), 0u);
    EXPECT_EQ(SlotOf(&RotationTool::RotateBlock), 1u);
    EXPECT_EQ(SlotOf(&RotationTool::RotateOneBit), 2u);
    EXPECT_EQ(SlotOf(&RotationTool::RotateRect), 5u);
}

}  // namespace
}  // namespace tavrix
