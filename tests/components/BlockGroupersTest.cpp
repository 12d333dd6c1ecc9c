// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "PlainGrouping.h"
#include "StoreSupport.h"
#include "support/HostImage.h"

namespace tavrix {
namespace {

using test::Contents;
using test::HostImage;
using test::Store;

using Random = std::mt19937;

int Below(Random& random, int bound) {
    return static_cast<int>(random() % static_cast<unsigned>(std::max(bound, 1)));
}

// Boxes of one kind of page: 0 specks, 1 characters in rows, 2 characters in columns, 3 any size, 4 bars,
// 5 a few sizes on a raster, so that gaps are often equal.
store::Box RandomBox(Random& random, int kind, int width, int height) {
    int w = 1 + Below(random, 4), h = 1 + Below(random, 4);
    int x = Below(random, width), y = Below(random, height);
    if (kind == 1 || kind == 2) {
        w = 6 + Below(random, 12);
        h = 10 + Below(random, 8);
        (kind == 1 ? y : x) = Below(random, 8) * (kind == 1 ? height : width) / 8 + Below(random, 3);
    } else if (kind == 3) {
        w = 1 + Below(random, 1 + Below(random, width));
        h = 1 + Below(random, 1 + Below(random, height));
    } else if (kind == 4) {
        (random() % 2 != 0 ? w : h) = 20 + Below(random, width);
    } else if (kind == 5) {
        w = h = 4 + 4 * Below(random, 3);
        x = x / 40 * 40;
        y = y / 40 * 40;
    }
    return {static_cast<std::int16_t>(x), static_cast<std::int16_t>(std::min(y + h, height) - 1),
            static_cast<std::int16_t>(std::min(x + w, width) - 1), static_cast<std::int16_t>(y)};
}

// One line of the page's size with boxes in the order of a scan, sometimes more lines and blocks.
void FillStore(ComponentStore& s, Random& random, int width, int height) {
    const int kind = Below(random, 6);
    const int count = Below(random, 120), lines = random() % 4 == 0 ? 3 : 1,
              blocks = random() % 5 == 0 ? 3 : 1;
    std::vector<store::Box> boxes;
    for (int i = 0; i < count; ++i)
        boxes.push_back(RandomBox(random, random() % 10 == 0 ? 3 : kind, width, height));
    if (random() % 4 != 0) {
        std::sort(boxes.begin(), boxes.end(), [](const store::Box& a, const store::Box& b) {
            return a.bottom != b.bottom ? a.bottom < b.bottom : a.left < b.left;
        });
    }
    const store::Box page{0, static_cast<std::int16_t>(height - 1), static_cast<std::int16_t>(width - 1), 0};
    std::vector<ComponentNode*> all;
    for (int b = 0; b < blocks; ++b) {
        ComponentNode* block = store::InsertBlock(s, nullptr, s.firstBlock, {});
        for (int l = 0; l < lines; ++l)
            all.push_back(store::InsertLine(s, block, nullptr, block->firstChild, page));
    }
    for (std::size_t i = boxes.size(); i-- > 0;) {
        ComponentNode* line = all[boxes.size() == 1 ? 0 : i * all.size() / boxes.size()];
        store::InsertComponent(s, line, nullptr, line->firstChild, boxes[i])->tag =
            static_cast<std::uint16_t>(i);
    }
}

// Groups both stores, once more what the first grouping made, and compares.
void CompareGroupings(Store& expected, Store& found, std::uint32_t seed) {
    for (ComponentStore* s : {&expected, &found}) {
        Random random(seed);
        FillStore(*s, random, 20 + static_cast<int>(seed % 479), 20 + static_cast<int>(seed % 307));
    }
    const HostImage image(20 + static_cast<int>(seed % 479), 20 + static_cast<int>(seed % 307), 1);
    const bool aligned = seed % 2 != 0;
    for (int times = 0; times < 2; ++times) {
        const bool result = (aligned ? test::GroupAlignedPlainly : test::GroupOrientedPlainly)(
            expected, image.Width(), image.Height());
        EXPECT_EQ(Grouping(image.Record(), &found, nullptr, aligned, 0, 0), result);
        ASSERT_EQ(Contents(found), Contents(expected)) << "seed " << seed << " time " << times;
    }
}

TEST(BlockGroupers, FollowTheDefinitionOnRandomBoxes) {
    Store expected, found;
    for (std::uint32_t seed = 0; seed < 3000; ++seed) {
        CompareGroupings(expected, found, seed);
        for (ComponentStore* s : {&expected, &found}) {
            while (s->firstBlock != nullptr) store::DeleteBlock(*s, s->firstBlock);
        }
    }
}

// A component of five columns does not count for one whose centre lies on its last column: by that one vote
// the text is horizontal and the components stay apart.
TEST(BlockGroupers, VotesNeedTheCentreInside) {
    Store s;
    ComponentNode* block = store::InsertBlock(s, nullptr, nullptr, {});
    ComponentNode* line = store::InsertLine(s, block, nullptr, nullptr, {0, 99, 99, 0});
    store::InsertComponent(s, line, nullptr, nullptr, {22, 4, 26, 0});
    store::InsertComponent(s, line, nullptr, line->firstChild, {20, 19, 24, 10});
    const HostImage image(200, 200, 1);
    ASSERT_EQ(Grouping(image.Record(), &s, nullptr, 0, 0, 0), 1);
    EXPECT_EQ(s.blockCount, 3u);
}

TEST(BlockGroupers, KeepTheBlocksMadeSoFarWhenTheStoreIsFull) {
    for (std::uint32_t seed = 0; seed < 24; ++seed) {
        Store expected, found;
        for (Store* s : {&expected, &found}) {
            s->threadedCount = TAVRIX_STORE_CAPACITY;
            s->nodes[120 + 5 * seed].next = nullptr;
        }
        CompareGroupings(expected, found, seed);
    }
}

}  // namespace
}  // namespace tavrix
