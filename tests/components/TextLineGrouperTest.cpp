// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "components/HeightHistogram.h"
#include "components/LineNodes.h"
#include "components/PlainTextLines.h"
#include "components/StoreSupport.h"
#include "components/TextLineGrouper.h"
#include "image/DibImage.h"
#include "support/HostImage.h"

namespace tavrix {
namespace {

using store::Box;
using test::Contents;
using test::HostImage;
using test::Store;

constexpr GroupingOptions kOneLine{0, 0, 0};
constexpr GroupingOptions kAllLines{TAVRIX_SELECT_ALL_LINES, 0, 0};
constexpr GroupingOptions kAllLinesSplit{TAVRIX_SELECT_ALL_LINES, 0, 1};

// A grouper around an image of its own.
struct Page {
    explicit Page(int width, int height, const GroupingOptions* options = &kOneLine, std::uint32_t extra = 0)
        : Page(HostImage::FromRows(std::vector<std::string>(
                   static_cast<std::size_t>(height), std::string(static_cast<std::size_t>(width), '.'))),
               options, extra) {}
    explicit Page(HostImage picture, const GroupingOptions* options = &kOneLine, std::uint32_t extra = 0)
        : host(std::move(picture)),
          image(host.Record().header, host.Record().palette, host.Record().bits),
          grouper(&image, options, extra) {}

    HostImage host;
    DibImage image;
    TextLineGrouper grouper;
};

// A box by its lowest left corner and its size.
Box At(int left, int bottom, int width, int height) {
    return {static_cast<std::int16_t>(left), static_cast<std::int16_t>(bottom + height - 1),
            static_cast<std::int16_t>(left + width - 1), static_cast<std::int16_t>(bottom)};
}

// A block with one line of the boxes, as extraction leaves it. Returns the line.
ComponentNode* AddPageLine(Store& s, const Page& page, const std::vector<Box>& boxes) {
    ComponentNode* block = store::InsertBlock(s, nullptr, s.firstBlock, {});
    ComponentNode* line =
        store::InsertLine(s, block, nullptr, nullptr, At(0, 0, page.image.Width(), page.image.Height()));
    ComponentNode* last = nullptr;
    for (const Box& box : boxes) {
        last = store::InsertComponent(s, line, last, nullptr, box);
        last->pixelCount = 7;
    }
    return line;
}

// The boxes of a line's components in list order.
std::vector<std::vector<int>> BoxesOf(const ComponentNode* line) {
    std::vector<std::vector<int>> boxes;
    for (const ComponentNode* n : lines::ChildrenOf(*line)) {
        boxes.push_back({n->left, n->bottom, store::WidthOf(*n), store::HeightOf(*n)});
    }
    return boxes;
}
using Boxes = std::vector<std::vector<int>>;

struct Regime {
    const char* name;
    int width, height, count, minSide, maxSide;
    int pitch;  // rows between base lines, 0: anywhere
};

const Regime kRegimes[] = {
    {"few", 120, 90, 25, 2, 30, 0},      {"dots", 300, 300, 700, 2, 6, 0},
    {"text", 900, 300, 300, 3, 28, 40},  {"type", 1400, 160, 160, 12, 60, 75},
    {"narrow", 60, 3000, 400, 2, 25, 0}, {"wide", 4000, 60, 400, 2, 40, 30},
    {"mixed", 700, 700, 400, 2, 90, 0},  {"fragments", 800, 250, 500, 2, 22, 50},
};

std::vector<Box> RandomBoxes(const Regime& regime, std::mt19937& random) {
    const auto pick = [&](int low, int high) { return std::uniform_int_distribution<>(low, high)(random); };
    std::vector<Box> boxes;
    for (int i = 0; i < regime.count; ++i) {
        // Most sides are small.
        const int w = pick(regime.minSide, pick(regime.minSide, regime.maxSide));
        const int h = pick(regime.minSide, pick(regime.minSide, regime.maxSide));
        const int x = pick(0, regime.width - w);
        int y = pick(0, regime.height - h);
        if (regime.pitch != 0) y = std::min(y / regime.pitch * regime.pitch + pick(0, 12), regime.height - h);
        boxes.push_back(At(x, y, w, h));
    }
    return boxes;
}

class RandomLines : public testing::TestWithParam<Regime> {};

TEST_P(RandomLines, BuildAsTheRulesPut) {
    std::mt19937 random(20260);
    const Page page(GetParam().width, GetParam().height);
    for (int round = 0; round < 25; ++round) {
        const std::vector<Box> boxes = RandomBoxes(GetParam(), random);
        Store fast;
        Store plain;
        for (Store* s : {&fast, &plain}) AddPageLine(*s, page, boxes);
        const auto expectEqual = [&](const char* step) {
            ASSERT_EQ(Contents(fast), Contents(plain)) << "after " << step << " in round " << round;
        };
        if (round % 3 != 0) {  // else lines are built from boxes that overlap
            page.grouper.MergeOverlappingComponents(fast);
            plain::MergeOverlappingComponents(plain);
            ASSERT_NO_FATAL_FAILURE(expectEqual("MergeOverlappingComponents"));
        }
        store::SortChildren(fast.firstBlock->firstChild, true);
        store::SortChildren(plain.firstBlock->firstChild, true);
        if (round % 2 != 0) {
            page.grouper.MergeColumnFragments(fast);
            plain::MergeColumnFragments(plain);
            ASSERT_NO_FATAL_FAILURE(expectEqual("MergeColumnFragments"));
        }
        page.grouper.ChainIntoLines(fast);
        plain::MergeColumnFragments(plain);
        page.grouper.RemoveEdgeMarks(plain);
        plain::ChainAndSplit(plain);
        for (ComponentNode* line : lines::ChildrenOf(*plain.firstBlock)) {
            plain::MergeByColumnProjection(plain, line);
        }
        for (ComponentNode* line : lines::ChildrenOf(*plain.firstBlock)) store::SortChildren(line, true);
        ASSERT_NO_FATAL_FAILURE(expectEqual("ChainIntoLines"));
        page.grouper.MergeLinePairs(fast);
        plain::MergeLinePairs(plain, GetParam().width);
        ASSERT_NO_FATAL_FAILURE(expectEqual("MergeLinePairs"));
    }
}

INSTANTIATE_TEST_SUITE_P(TextLineGrouper, RandomLines, testing::ValuesIn(kRegimes),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace tavrix
