// SPDX-License-Identifier: MIT
// What hosts share with the library: fixed in 32-bit programs, the same fields in the same order elsewhere.
// Compiling is the test.
#include <cstddef>

#include "tavrix/tavrix.h"

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
EXPECT_OFFSET32(ComponentStore, freeList, 4);
EXPECT_OFFSET32(ComponentStore, firstBlock, 8);
EXPECT_OFFSET32(ComponentStore, state, 12);
EXPECT_OFFSET32(ComponentStore, liveCount, 24);
EXPECT_OFFSET32(ComponentStore, componentCount, 36);
