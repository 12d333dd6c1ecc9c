// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "StoreSupport.h"
#include "components/ComponentExtractor.h"
#include "support/HostImage.h"

namespace tavrix {
namespace {

using test::Contents;
using test::HostImage;
using test::Store;

struct PlainRun {
    int first, last;
    ComponentNode* component;
};

// The definition: runs of a row joined to those of the row before, every merge written to all runs at once.
void ExtractPlainly(const HostImage& image, ComponentStore& s) {
    ComponentNode* block = store::InsertBlock(s, nullptr, nullptr, {});
    ComponentNode* line = store::InsertLine(s, block, nullptr, nullptr, {});
    ComponentNode* tail = nullptr;
    std::vector<PlainRun> previous, current;
    for (int y = 0; y < image.Height(); ++y) {
        previous.swap(current);
        current.clear();
        const auto row = static_cast<std::int16_t>(y);
        for (int x = 0; x < image.Width(); ++x) {
            if (image.Bit(x, y) != 0) continue;
            const int start = x;
            while (x < image.Width() && image.Bit(x, y) == 0) ++x;
            const auto left = static_cast<std::int16_t>(start), right = static_cast<std::int16_t>(x - 1);
            ComponentNode* component = nullptr;
            for (std::size_t i = 0; i < previous.size(); ++i) {
                ComponentNode* other = previous[i].component;
                if (previous[i].first > x || previous[i].last + 1 < start || other == component) continue;
                if (component == nullptr) {
                    component = other;
                    continue;
                }
                ComponentNode* keeper = component;
                if (other->bottom < keeper->bottom) std::swap(keeper, other);
                keeper->left = std::min(keeper->left, other->left);
                keeper->right = std::max(keeper->right, other->right);
                keeper->pixelCount += other->pixelCount;
                for (auto* runs : {&previous, &current}) {
                    for (PlainRun& run : *runs) {
                        if (run.component == other) run.component = keeper;
                    }
                }
                if (tail == other) tail = other->prev;
                store::DeleteComponent(s, other);
                component = keeper;
            }
            if (component != nullptr) {
                component->top = row;
                component->left = std::min(component->left, left);
                component->right = std::max(component->right, right);
            } else {
                component = store::InsertComponent(s, line, tail, nullptr, {left, row, right, row});
                if (component == nullptr) continue;
                tail = component;
            }
            component->pixelCount += static_cast<std::uint32_t>(x - start);
            current.push_back({start, x - 1, component});
        }
    }
    line->right = static_cast<std::int16_t>(image.Width() - 1);
    line->top = static_cast<std::int16_t>(image.Height() - 1);
}

// Takes nodes out of the store until few are left.
void LeaveFree(ComponentStore& s, std::uint32_t few) {
    while (s.liveCount < TAVRIX_STORE_CAPACITY - few)
        store::AllocNode(s, {}, 0, 0, nullptr, nullptr, nullptr, nullptr);
}

void Extract(const HostImage& image, ComponentStore& s) {
    ASSERT_EQ(Extract_Eight_Connected_Components(image.Record(), &s, 1, 0, 0), 1);
}

void CompareExtractions(const HostImage& image, Store& expected, Store& found) {
    ExtractPlainly(image, expected);
    Extract(image, found);
    ASSERT_EQ(Contents(found), Contents(expected)) << image.Width() << 'x' << image.Height();
    for (ComponentStore* s : {&expected, &found}) store::DeleteBlock(*s, s->firstBlock);
}

// Some rows are like the one before.
HostImage RandomPicture(int width, int height, std::mt19937& random, double black) {
    HostImage image = HostImage::Random(width, height, 1, random, black);
    for (int y = 1; y < height; ++y) {
        if (random() % 3 == 0) std::copy_n(image.Row(y - 1), image.RowBytes(), image.Row(y));
    }
    return image;
}

TEST(ComponentExtractor, FollowsTheDefinitionOnRandomPictures) {
    std::mt19937 random(11);
    Store expected, found;
    for (int width = 1; width <= 130; ++width) {
        for (const double black : {0.02, 0.1, 0.35, 0.5, 0.9}) {
            const int height = 1 + static_cast<int>(random() % 60);
            CompareExtractions(RandomPicture(width, height, random, black), expected, found);
        }
    }
    for (const double black : {0.05, 0.3, 0.45}) {  // thousands of components that end on the way
        CompareExtractions(RandomPicture(500, 400, random, black), expected, found);
    }
}

TEST(ComponentExtractor, FollowsTheDefinitionInAlmostFullStores) {
    std::mt19937 random(12);
    for (unsigned left = 2; left < 60; left += 6) {
        Store expected, found;
        for (ComponentStore* s : {&expected, &found}) LeaveFree(*s, left);
        CompareExtractions(RandomPicture(100, 40, random, 0.35), expected, found);
    }
}

int FloodFill(const HostImage& image, int x, int y, store::Box& box) {
    std::vector<std::pair<int, int>> stack{{x, y}};
    int count = 0;
    while (!stack.empty()) {
        const auto [px, py] = stack.back();
        stack.pop_back();
        if (px < 0 || py < 0 || px >= image.Width() || py >= image.Height() || image.Bit(px, py) != 0)
            continue;
        image.SetBit(px, py, true);
        ++count;
        box.left = std::min(box.left, static_cast<std::int16_t>(px));
        box.right = std::max(box.right, static_cast<std::int16_t>(px));
        box.bottom = std::min(box.bottom, static_cast<std::int16_t>(py));
        box.top = std::max(box.top, static_cast<std::int16_t>(py));
        for (int k = 0; k < 9; ++k) stack.emplace_back(px + k % 3 - 1, py + k / 3 - 1);
    }
    return count;
}

TEST(ComponentExtractor, FindsWhatAFloodFillFinds) {
    std::mt19937 random(5);
    for (const int width : {1, 8, 63, 64, 65, 700}) {
        const HostImage image = HostImage::Random(width, 90, 1, random, 0.3);
        Store s;
        Extract(image, s);
        std::size_t index = 0;
        const auto components = test::Children(s.firstBlock->firstChild);
        for (int y = 0; y < image.Height(); ++y) {
            for (int x = 0; x < width; ++x) {
                if (image.Bit(x, y) != 0) continue;
                store::Box box{32767, 0, 0, 32767};
                const int count = FloodFill(image, x, y, box);
                ASSERT_LT(index, components.size());
                const ComponentNode& node = *components[index++];
                EXPECT_EQ(node.pixelCount, static_cast<std::uint32_t>(count));
                EXPECT_EQ((std::vector<int>{node.left, node.top, node.right, node.bottom}),
                          (std::vector<int>{box.left, box.top, box.right, box.bottom}));
            }
        }
        EXPECT_EQ(index, components.size());
    }
}

// The slots of merged components serve later ones, and runs without a node are dropped.
TEST(ComponentExtractor, FillsAStoreToItsLastSlot) {
    HostImage image(1200, 250, 1);
    for (int y = 0; y < 250; ++y) {
        for (int x = 0; x < 1200; ++x) image.SetBit(x, y, x % 2 != 0 || y % 2 != 0);
    }
    Store s;
    Extract(image, s);
    EXPECT_EQ(s.liveCount, 65535u);
    EXPECT_EQ(test::Children(s.firstBlock->firstChild).size(), 65533u);
    EXPECT_EQ(s.nodes[65534].bottom, 65532 / 600 * 2);
}

TEST(ComponentExtractor, GrowsBoxesInsideTheImage) {
    const HostImage image = HostImage::FromRows({"..........", "..##......", "..........", ".......#.."});
    struct Case {
        int growX, growY;
        std::vector<int> first, second;  // left, top, right, bottom
    };
    for (const Case& c : {Case{1, 1, {1, 2, 4, 0}, {6, 3, 8, 2}}, Case{5, 2, {0, 3, 8, 0}, {2, 3, 9, 1}},
                          Case{65536, -1, {2, 0, 3, 2}, {7, 2, 7, 4}}}) {
        Store s;
        ASSERT_EQ(Extract_Eight_Connected_Components(image.Record(), &s, 2, c.growX, c.growY), 1);
        const auto nodes = test::Children(s.firstBlock->firstChild);
        ASSERT_EQ(nodes.size(), 2u);
        EXPECT_EQ((std::vector<int>{nodes[0]->left, nodes[0]->top, nodes[0]->right, nodes[0]->bottom}),
                  c.first);
        EXPECT_EQ((std::vector<int>{nodes[1]->left, nodes[1]->top, nodes[1]->right, nodes[1]->bottom}),
                  c.second);
    }
}

TEST(ComponentExtractor, HandlesBlankImagesFullStoresAndRefusals) {
    const HostImage blank = HostImage::FromRows({"...", "..."}), gray(3, 2, 8), none(0, 0, 1);
    Store s;
    for (const int mode : {0, 3, -1, 65537}) {
        EXPECT_EQ(Extract_Eight_Connected_Components(blank.Record(), &s, mode, 0, 0), 0);
    }
    EXPECT_EQ(Extract_Eight_Connected_Components(gray.Record(), &s, 1, 0, 0), 0);
    EXPECT_EQ(Extract_Eight_Connected_Components(blank.Record(), nullptr, 1, 0, 0), 0);
    EXPECT_EQ(s.liveCount, 0u);
    Extract(blank, s);
    EXPECT_EQ(s.liveCount, 2u);
    EXPECT_EQ(s.firstBlock->firstChild->right, 2);
    EXPECT_EQ(s.firstBlock->right, 0);
    Extract(none, s);
    EXPECT_EQ(s.firstBlock->firstChild->top, -1);
    LeaveFree(s, 1);
    Extract(blank, s);
    EXPECT_EQ(s.firstBlock->firstChild, nullptr);  // no room for the line
    ComponentStore unallocated{};
    Extract(blank, unallocated);
    EXPECT_EQ(unallocated.firstBlock, nullptr);
}

}  // namespace
}  // namespace tavrix
