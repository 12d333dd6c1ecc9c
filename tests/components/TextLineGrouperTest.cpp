// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "components/PlainTextLines.h"
#include "components/StoreSupport.h"
#include "image/DibImage.h"
#include "lines/HeightHistogram.h"
#include "lines/LineNodes.h"
#include "lines/TextLineGrouper.h"
#include "support/HostImage.h"

namespace tavrix {
namespace {

using store::Box;
using test::Contents;
using test::HostImage;
using test::Store;

constexpr GroupingOptions kOneLine{0, 0, 0};
constexpr GroupingOptions kAllLines{TAVRIX_SELECT_ALL_LINES, 0, 0};

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

ComponentNode* AddBlock(Store& s) {
    return store::InsertBlock(s, nullptr, s.firstBlock, {});
}

// A line of the boxes in their order, fitted to them, at the head of a block.
ComponentNode* AddLine(Store& s, ComponentNode* block, const std::vector<Box>& boxes) {
    ComponentNode* line = store::InsertLine(s, block, nullptr, block->firstChild, {});
    ComponentNode* last = nullptr;
    for (const Box& box : boxes) {
        last = store::InsertComponent(s, line, last, nullptr, box);
        last->pixelCount = 7;
        lines::SetBox(*line, last->prev == nullptr ? box : lines::UnionOf(lines::BoxOf(*line), box));
    }
    return line;
}

// The left sides of a node's children in list order.
std::vector<int> LeftsOf(const ComponentNode* parent) {
    std::vector<int> lefts;
    for (const ComponentNode* child : test::Children(parent)) lefts.push_back(child->left);
    return lefts;
}

struct Regime {
    const char* name;
    int width, height, count, minSide, maxSide;
    int pitch;  // rows between base lines, 0: anywhere
};

const Regime kRegimes[] = {
    {"few", 120, 90, 25, 2, 30, 0},      {"dots", 220, 220, 400, 2, 6, 0},
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
    for (int round = 0; round < 15; ++round) {
        const std::vector<Box> boxes = RandomBoxes(GetParam(), random);
        Store fast;
        Store plain;
        for (Store* s : {&fast, &plain}) AddLine(*s, AddBlock(*s), boxes);
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
                         [](const auto& regime) { return std::string(regime.param.name); });

TEST(TextLineGrouper, CutsWideComponentsAsTheRulesPut) {
    std::mt19937 random(6);
    const auto pick = [&](int low, int high) { return std::uniform_int_distribution<>(low, high)(random); };
    for (int round = 0; round < 200; ++round) {
        // Strokes and thin bridges, in a picture that some boxes reach out of.
        const HostImage picture = HostImage::Random(pick(60, 200), 50, 1, random, round % 2 * 0.02);
        for (int i = 0; i < 30; ++i) {
            const bool bridge = i % 3 == 0;
            const Box ink = At(pick(0, 190), pick(0, 45), bridge ? pick(8, 60) : pick(2, 6),
                               bridge ? pick(1, 3) : pick(10, 40));
            for (int y = ink.bottom; y <= std::min<int>(ink.top, 49); ++y) {
                for (int x = ink.left; x <= std::min<int>(ink.right, picture.Width() - 1); ++x) {
                    picture.SetBit(x, y, false);
                }
            }
        }
        const DibRecord& record = picture.Record();
        DibImage image(record.header, record.palette, record.bits);
        const TextLineGrouper grouper(&image, &kOneLine, 0);
        Store fast;
        Store plain;
        std::vector<Box> boxes;
        for (int i = 0; i < 5; ++i) {
            boxes.push_back(At(pick(-5, 150), pick(-5, 20), pick(1, 12) * pick(1, 12), pick(8, 45)));
        }
        for (Store* s : {&fast, &plain}) AddLine(*s, AddBlock(*s), boxes);
        grouper.SplitWideComponents(fast);
        plain::SplitWideComponents(plain, image);
        ASSERT_EQ(Contents(fast), Contents(plain)) << "round " << round;
    }
}

TEST(TextLineGrouper, MeasuresTheHeightOfTheText) {
    const std::uint16_t counts[] = {1, 5, 0, 0, 0, 0, 6, 0, 0, 5, 1};
    EXPECT_EQ(BestWindow(counts, 0, 5), 0);
    EXPECT_EQ(BestWindow(counts, 4, 5), 1);
    EXPECT_EQ(BestWindow(counts, 10, 5), 6);  // the last window with 11
    EXPECT_EQ(BestWindow(counts + 1, 9, 5), 5);
    const Page page(2000, 500);
    Store s;
    ComponentNode* line = AddLine(s, AddBlock(s), {});
    line->top = 99;
    EXPECT_EQ(page.grouper.EstimateTextHeight(s), 100);  // nothing to count
    for (int i = 0; i < 33; ++i)
        store::InsertComponent(s, line, nullptr, line->firstChild, At(50 * i, 0, 15, i % 11 == 0 ? 60 : 20));
    store::InsertComponent(s, line, nullptr, line->firstChild, At(0, 0, 9, 500));  // beyond the counters
    EXPECT_EQ(page.grouper.EstimateTextHeight(s), 21);
}

TEST(TextLineGrouper, RemovesMarksNearTheRightEdgeOfLargeType) {
    // Typical height 21 of 60 rows.
    std::vector<Box> boxes;
    for (int i = 0; i < 12; ++i) boxes.push_back(At(20 * i, 0, 15, 20));
    const std::vector<Box> kept{At(800, 0, 40, 50), At(805, 0, 40, 42), At(806, 0, 43, 13),
                                At(807, 0, 42, 12), At(876, 0, 14, 26), At(877, 0, 20, 28)};
    const std::vector<Box> marks{At(810, 0, 40, 43), At(811, 0, 43, 12), At(878, 0, 19, 27)};
    boxes.insert(boxes.end(), kept.begin(), kept.end());
    boxes.insert(boxes.end(), marks.begin(), marks.end());
    for (const int height : {60, 70}) {  // 10 * 21 is more than 3 * 60, not than 3 * 70
        const Page page(1000, height);
        Store s;
        const ComponentNode* line = AddLine(s, AddBlock(s), boxes);
        page.grouper.RemoveEdgeMarks(s);
        EXPECT_EQ(LeftsOf(line).size(), height == 60 ? 18u : 21u);
        EXPECT_EQ(LeftsOf(line).back(), height == 60 ? 877 : 878);
    }
}

TEST(TextLineGrouper, MergesFragmentsButNotDots) {
    const struct {
        Box below, above;
        bool merges;
    } cases[] = {
        {At(0, 0, 10, 20), At(2, 23, 6, 4), true},  {At(0, 0, 10, 20), At(2, 24, 6, 4), false},
        {At(0, 0, 10, 20), At(2, 23, 4, 4), false},  // tiny
        {At(0, 0, 20, 20), At(9, 21, 20, 4), true}, {At(0, 0, 20, 20), At(10, 21, 20, 4), false},
        {At(0, 0, 8, 20), At(6, 21, 8, 5), true},  // any overlap does for narrow pieces
    };
    for (const auto& c : cases) {
        const Page page(100, 100);
        Store s;
        const ComponentNode* line = AddLine(s, AddBlock(s), {c.below, c.above});
        page.grouper.MergeColumnFragments(s);
        EXPECT_EQ(LeftsOf(line).size(), c.merges ? 1u : 2u) << c.above.left << ", " << c.above.bottom;
    }
}

// A row of like components, as a line for the tournament.
struct Row {
    int left, bottom, count, w, h, pitch;
    int laterHeight = 0;  // of the second half of the components, if another
    int rise = 0;         // rows from each component to the next
};

std::vector<Box> BoxesOf(const Row& row) {
    std::vector<Box> boxes;
    for (int i = 0; i < row.count; ++i) {
        const bool later = row.laterHeight != 0 && 2 * i >= row.count;
        boxes.push_back(
            At(row.left + i * row.pitch, row.bottom + i * row.rise, row.w, later ? row.laterHeight : row.h));
    }
    return boxes;
}

// Two lines, the second one in a block of its own when it begins left of the first; which one is kept?
struct Match {
    const char* name;
    Row best, candidate;
    bool candidateWins;
    GroupingOptions options = kOneLine;
    std::uint32_t extra = 0;
};

// On a page of 1000 x 600.
const Match kMatches[] = {
    {"not big", {600, 300, 5, 40, 60, 50}, {10, 285, 12, 15, 25, 80}, false},
    {"big enough", {600, 300, 5, 40, 60, 50}, {10, 285, 12, 15, 28, 80}, true},
    {"short label", {100, 300, 20, 20, 40, 40}, {300, 300, 5, 30, 60, 40}, false},
    {"no short label", {100, 300, 20, 20, 40, 40}, {300, 300, 10, 30, 60, 40}, true},
    {"wide label", {100, 300, 12, 16, 40, 12}, {150, 300, 5, 30, 60, 40}, true},
    {"nearly as wide, taller", {100, 300, 12, 16, 40, 18}, {150, 300, 5, 30, 60, 40}, true},
    {"nearly as wide, no taller", {100, 300, 12, 24, 60, 17}, {150, 300, 5, 30, 60, 40}, false},
    {"display type", {0, 200, 40, 8, 15, 20, 0, 3}, {300, 10, 2, 100, 160, 120}, true},
    {"too large for display", {0, 200, 40, 8, 15, 20, 0, 4}, {300, 10, 2, 120, 299, 120}, false},
    {"short best, larger type", {600, 300, 5, 40, 60, 50}, {100, 10, 12, 20, 50, 50}, true},
    {"short best, in the middle", {600, 300, 5, 40, 60, 50}, {100, 285, 12, 15, 28, 50}, true},
    {"short best, at the bottom", {600, 300, 5, 40, 60, 50}, {100, 10, 12, 15, 28, 50}, false},
    {"right of large type", {0, 300, 12, 20, 35, 25}, {400, 300, 12, 24, 60, 25}, false},
    {"right of small type", {0, 300, 12, 20, 33, 25}, {400, 270, 12, 24, 60, 25}, true},
    {"right part, farther", {100, 200, 12, 20, 40, 25}, {350, 100, 12, 24, 60, 25}, false},
    {"right part, nearer", {100, 200, 12, 20, 40, 25}, {350, 300, 12, 24, 60, 25}, true},
    {"smaller left, larger right", {100, 200, 14, 20, 40, 30}, {150, 280, 14, 24, 33, 30, 57}, true},
    {"smaller left, right too small", {100, 200, 14, 20, 40, 30}, {150, 280, 14, 24, 33, 30, 50}, false},
    {"far smaller left", {100, 200, 14, 20, 40, 30}, {150, 280, 14, 24, 30, 30, 60}, false},
    {"alike, nearer", {100, 200, 12, 20, 40, 25}, {200, 280, 12, 20, 40, 25}, true},
    {"alike, farther", {100, 200, 12, 20, 40, 25}, {200, 10, 12, 20, 40, 25}, false},
    {"alike, on the right", {100, 200, 12, 20, 40, 25}, {350, 280, 12, 20, 40, 25}, false},
    {"alike, smaller right", {100, 200, 14, 20, 40, 25}, {200, 280, 14, 20, 40, 25, 33}, false},
    {"few on the right", {100, 200, 14, 20, 45, 60, 35}, {510, 280, 8, 20, 43, 40}, false},
    {"few on the left", {100, 200, 14, 20, 45, 60, 35}, {480, 280, 8, 20, 43, 40}, true},
    {"wholly left", {600, 300, 12, 20, 40, 25}, {100, 10, 12, 20, 36, 25}, true},
    {"measured at the right", {100, 200, 12, 20, 40, 25}, {200, 280, 12, 20, 40, 25, 0, 20}, false},
    {"measured at the left",
     {100, 200, 12, 20, 40, 25},
     {200, 280, 12, 20, 40, 25, 0, 20},
     true,
     kOneLine,
     0x25},
};

TEST(TextLineGrouper, HoldsATournament) {
    for (const Match& match : kMatches) {
        Page page(1000, 600, &match.options, match.extra);
        Store s;
        const bool apart = match.candidate.left < match.best.left;
        ComponentNode* second = apart ? AddBlock(s) : nullptr;
        ComponentNode* first = AddBlock(s);
        AddLine(s, first, BoxesOf(match.best));
        AddLine(s, apart ? second : first, BoxesOf(match.candidate));
        page.grouper.selectFlags = match.options.selectFlags;
        page.grouper.SelectTrueLine(s);
        ASSERT_EQ(s.lineCount, 1u) << match.name;
        const ComponentNode* line = first->firstChild != nullptr ? first->firstChild : second->firstChild;
        EXPECT_EQ(line->left, (match.candidateWins ? match.candidate : match.best).left) << match.name;
        if (line->parent == first) {
            EXPECT_EQ(line->pixelCount, s.componentCount) << match.name;
            EXPECT_GE(line->lineHeight, 15u) << match.name;
        }
    }
}

TEST(TextLineGrouper, JoinsPiecesSideBySideWhenAsked) {
    const GroupingOptions join{TAVRIX_SELECT_JOIN_PIECES | TAVRIX_SELECT_ALL_LINES, 0, 0};
    for (const int rise : {14, 15}) {  // over a gap of 50 columns
        Page page(1000, 600, &join);
        Store s;
        ComponentNode* block = AddBlock(s);
        AddLine(s, block, {At(169, 100 + rise, 30, 30)});
        AddLine(s, block, {At(100, 100, 20, 30)});
        page.grouper.selectFlags = join.selectFlags;
        page.grouper.SelectTrueLine(s);
        EXPECT_EQ(LeftsOf(block), rise == 14 ? std::vector<int>{100} : (std::vector<int>{100, 169}));
    }
}

TEST(TextLineGrouper, CleansLinesOfVeryLargeType) {
    // Letters of 20 x 40 in a line of character height 40, on a page of 1000 x 130 where that is not big
    // (3 * 40 <= 130) or x 119 where it is; one more component that goes or stays.
    const struct {
        const char* name;
        Box more;
        bool stays, staysInBig;
    } cases[] = {
        {"rule", At(600, 50, 161, 20), false, false},
        {"shorter rule", At(600, 50, 160, 20), true, false},
        {"short rule", At(600, 50, 120, 20), true, true},
        {"long stroke", At(440, 20, 8, 73), false, false},
        {"stroke that goes with its neighbour", At(440, 20, 8, 58), true, true},
        {"stroke far from its neighbour", At(461, 20, 10, 61), false, false},
        {"stroke that is not long", At(461, 20, 8, 52), true, true},
        {"stroke above its neighbour", At(440, 41, 10, 61), false, false},
        {"in the lower border", At(440, 0, 30, 73), false, false},
        {"text in the lower border", At(440, 0, 30, 60), true, true},
        {"next word in the border", At(560, 0, 30, 80), true, true},
        {"narrow in the left border", At(0, 20, 30, 40), false, false},
        {"wide in the left border", At(0, 20, 31, 40), true, true},
    };
    for (const auto& c : cases) {
        for (const int height : {130, 119}) {
            Page page(1000, height);
            Store s;
            std::vector<Box> boxes{c.more};
            for (int i = 0; i < 13; ++i) boxes.push_back(At(100 + 26 * i, 20, 20, 40));
            std::sort(boxes.begin(), boxes.end(), [](const Box& a, const Box& b) { return a.left < b.left; });
            ComponentNode* line = AddLine(s, AddBlock(s), boxes);
            line->lineHeight = 40;
            page.grouper.CleanTrueLine(s);
            EXPECT_EQ(s.componentCount == boxes.size(), height == 130 ? c.stays : c.staysInBig)
                << c.name << " on " << height << " rows";
        }
    }
}

TEST(TextLineGrouper, RefusesWhatIsNotThere) {
    Page noOptions(100, 100, nullptr);
    Store s;
    AddLine(s, AddBlock(s), {At(10, 10, 20, 20)});
    const auto before = Contents(s);
    EXPECT_FALSE(noOptions.grouper.Run(s));
    EXPECT_EQ(Contents(s), before);
    Page page(100, 100);
    Store empty;
    EXPECT_FALSE(page.grouper.Run(empty));
    AddBlock(empty);
    EXPECT_FALSE(page.grouper.Run(empty));  // the block has no line
    AddLine(empty, AddBlock(empty), {})->right = 50;
    EXPECT_FALSE(page.grouper.Run(empty));
    EXPECT_EQ(empty.liveCount, 0u);
}

TEST(TextLineGrouper, LeavesChainsTogetherThatAFullStoreHasNoLinesFor) {
    Page page(4000, 4000, &kAllLines);
    Store s;
    std::vector<Box> boxes;
    for (int i = 0; i < TAVRIX_STORE_CAPACITY - 2; ++i) {
        boxes.push_back(At(i % 160 * 24, i / 160 * 9 % 3990, 7 + i % 2, 8));
    }
    AddLine(s, AddBlock(s), boxes);
    ASSERT_EQ(s.liveCount, 65535u);
    EXPECT_TRUE(page.grouper.Run(s));
    EXPECT_EQ(s.liveCount, s.blockCount + s.lineCount + s.componentCount);
    EXPECT_EQ(s.lineCount, 1u);
    EXPECT_EQ(s.componentCount, 160u);  // one over each column of the page
}

}  // namespace
}  // namespace tavrix
