// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <random>
#include <tuple>

#include "StoreSupport.h"
#include "components/ComponentStore.h"

namespace tavrix {
namespace {

using test::Children;
using test::Contents;
using test::Store;

auto Sides(const ComponentNode* node) {
    return std::make_tuple(node->left, node->top, node->right, node->bottom);
}
auto Counters(const ComponentStore& s) {
    return std::make_tuple(s.liveCount, s.blockCount, s.lineCount, s.componentCount);
}

TEST(ComponentStore, ThreadsSlotsLazilyAndEndsAtItsCapacity) {
    Store s;
    ComponentNode* line =
        store::InsertLine(s, store::InsertBlock(s, nullptr, nullptr, {}), nullptr, nullptr, {});
    for (int i = 2; i < TAVRIX_STORE_CAPACITY; ++i) {
        const std::uint32_t threaded = s.threadedCount;
        ComponentNode* node = store::InsertComponent(s, line, nullptr, line->firstChild, {});
        ASSERT_EQ(s.Slot(node), i);
        if (i == 1000) {
            EXPECT_EQ(threaded, 1000u);
            EXPECT_EQ(s.threadedCount, 1500u);
        }
    }
    EXPECT_EQ(s.threadedCount, 65535u);
    EXPECT_EQ(Counters(s), std::make_tuple(65535u, 1u, 1u, 65533u));
    EXPECT_EQ(store::InsertComponent(s, line, nullptr, line->firstChild, {}), nullptr);
    ComponentNode* victim = s.nodes + 30000;
    store::DeleteComponent(s, victim);
    EXPECT_EQ(store::InsertComponent(s, line, nullptr, line->firstChild, {}), victim);
    EXPECT_EQ(store::InsertComponent(s, line, nullptr, line->firstChild, {}), nullptr);
    store::DeleteBlock(s, s.firstBlock);
    EXPECT_EQ(s.firstBlock, nullptr);
    EXPECT_EQ(Counters(s), std::make_tuple(0u, 0u, 0u, 0u));
    EXPECT_EQ(s.Slot(s.freeList), 0);        // the block goes last,
    EXPECT_EQ(s.Slot(s.freeList->next), 1);  // its line before it
}

TEST(ComponentStore, SplicesAndUnlinks) {
    Store s;
    ComponentNode* last = store::InsertBlock(s, nullptr, nullptr, {});
    ComponentNode* first = store::InsertBlock(s, nullptr, last, {});
    ComponentNode* middle = store::InsertBlock(s, first, last, {1, 2, 3, 4});
    EXPECT_EQ(s.firstBlock, first);
    EXPECT_EQ(first->next, middle);
    EXPECT_EQ(last->prev, middle);
    EXPECT_EQ(Sides(middle), std::make_tuple(1, 2, 3, 4));
    middle->pixelCount = 9;
    store::DeleteBlock(s, first);
    EXPECT_EQ(s.firstBlock, middle);
    EXPECT_EQ(middle->prev, nullptr);
    store::DeleteBlock(s, middle);
    EXPECT_EQ(store::InsertBlock(s, last, nullptr, {}), middle);
    EXPECT_EQ(middle->pixelCount, 0u);
}

TEST(ComponentStore, MovesWidenTheNewParent) {
    struct Case {
        store::Box parent;
        bool hasChild;
        store::Box moved;
        store::Box expected, expectedPlain;
    };
    const Case cases[] = {
        {{0, 90, 90, 0}, false, {5, 9, 8, 7}, {5, 9, 8, 7}, {5, 9, 8, 7}},
        {{10, 20, 30, 15}, true, {5, 25, 40, 3}, {5, 25, 40, 3}, {5, 25, 40, 3}},
        {{10, 20, 30, 15}, true, {-1, 20, 30, -1}, {10, 20, 30, 15}, {-1, 20, 30, -1}},
        {{10, 20, 30, 15}, true, {-2, 20, 30, -3}, {-2, 20, 30, -3}, {-2, 20, 30, -3}},
        {{10, 20, 30, 15}, true, {12, 18, 20, 16}, {10, 20, 30, 15}, {10, 20, 30, 15}},
    };
    for (const Case& c : cases) {
        for (const bool plain : {false, true}) {
            Store s;
            ComponentNode* block = store::InsertBlock(s, nullptr, nullptr, {});
            ComponentNode* to = store::InsertLine(s, block, nullptr, nullptr, c.parent);
            ComponentNode* from = store::InsertLine(s, block, to, nullptr, {});
            if (c.hasChild) store::InsertComponent(s, to, nullptr, nullptr, c.parent);
            ComponentNode* node = store::InsertComponent(s, from, nullptr, nullptr, c.moved);
            (plain ? store::MoveToParentPlain : store::MoveToParent)(from, node, to);
            const store::Box& box = plain ? c.expectedPlain : c.expected;
            EXPECT_EQ(Sides(to), std::make_tuple(box.left, box.top, box.right, box.bottom));
            EXPECT_EQ(Children(to).front(), node);
            EXPECT_EQ(from->firstChild, nullptr);
        }
    }
}

// The sort's definition: the extreme child of those not yet moved goes to the parent's head.
void SelectionSort(ComponentNode* parent, bool ascending, bool byLeft) {
    const int sign = ascending ? 1 : -1;
    for (ComponentNode* cursor = parent->firstChild; cursor != nullptr;) {
        ComponentNode* pick = cursor;
        for (ComponentNode* node = cursor->next; node != nullptr; node = node->next) {
            const int beyondLeft = sign * (node->left - pick->left);
            const int beyondRight = sign * (node->right - pick->right);
            if (beyondLeft > 0 || (beyondLeft == 0 && (byLeft || beyondRight > 0))) pick = node;
        }
        if (pick == cursor) cursor = cursor->next;
        (byLeft ? store::MoveToParentPlain : store::MoveToParent)(parent, pick, parent);
    }
}

TEST(ComponentStore, SortsLikeASelectionSort) {
    std::mt19937 random(3);
    Store sorted, expected;
    for (int count = 0; count < 140; ++count) {
        for (int kind = 0; kind < 4; ++kind) {
            const bool ascending = kind % 2 == 0, byLeft = kind / 2 == 0;
            const int range = count % 3 == 0 ? 4 : 200;
            const auto start = random();
            for (Store* s : {&sorted, &expected}) {
                std::mt19937 same(start);
                const auto side = [&] { return static_cast<std::int16_t>(same() % range - 2); };
                ComponentNode* line = store::InsertLine(*s, store::InsertBlock(*s, nullptr, nullptr, {}),
                                                        nullptr, nullptr, {50, 0, 0, 50});
                for (int i = 0; i < count; ++i) {
                    const store::Box box{side(), side(), side(), side()};
                    store::InsertComponent(*s, line, nullptr, line->firstChild, box)->kind = same() % 5 != 0;
                }
            }
            SelectionSort(expected.firstBlock->firstChild, ascending, byLeft);
            (byLeft ? store::SortChildrenByLeft : store::SortChildren)(sorted.firstBlock->firstChild,
                                                                       ascending);
            ASSERT_EQ(Contents(sorted), Contents(expected)) << count << ' ' << kind;
            for (ComponentStore* s : {&sorted, &expected}) store::DeleteBlock(*s, s->firstBlock);
        }
    }
}

TEST(ComponentStore, RebuildsLineBoxesAndDropsEmptyLines) {
    Store s;
    ComponentNode* block = store::InsertBlock(s, nullptr, nullptr, {});
    store::InsertLine(s, block, nullptr, nullptr, {});
    ComponentNode* line = store::InsertLine(s, block, block->firstChild, nullptr, {0, 99, 99, 0});
    store::InsertComponent(s, line, nullptr, nullptr, {20, 8, 24, 5})->kind = 0;
    store::InsertComponent(s, line, nullptr, line->firstChild, {10, 7, 12, 6})->parent = block;
    store::RebuildLineBoxes(s, block);
    EXPECT_EQ(block->firstChild, line);
    EXPECT_EQ(Sides(line), std::make_tuple(10, 8, 24, 5));
    for (const ComponentNode* node : Children(line)) EXPECT_EQ(node->kind, std::uint32_t{NODE_COMPONENT});
    EXPECT_EQ(Counters(s), std::make_tuple(4u, 1u, 1u, 2u));
}

TEST(ComponentStore, GivesNoNodeWithoutItsBlock) {
    ComponentStore s{};
    EXPECT_EQ(store::InsertBlock(s, nullptr, nullptr, {}), nullptr);
    store::Release(s);
    ASSERT_TRUE(store::Create(s, 1, 0));
    EXPECT_NE(store::InsertBlock(s, nullptr, nullptr, {}), store::InsertBlock(s, nullptr, nullptr, {}));
    ASSERT_TRUE(store::Create(s));  // releases the first block
    store::Release(s);
    EXPECT_EQ(s.nodes, nullptr);
    store::Release(s);
}

}  // namespace
}  // namespace tavrix
