// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "components/StoreSupport.h"
#include "support/HostImage.h"
#include "tavrix/tavrix.h"

namespace tavrix {
namespace {

using test::HostImage;

constexpr GroupingOptions kOneLine{0, 0, 1};

auto Sides(const TrueLineRect& rect) {
    return std::make_tuple(rect.left, rect.top, rect.right, rect.bottom);
}
const auto kNone = std::make_tuple(0, 0, 0, 0);

// Hollow letters, `pitch` columns from one to the next.
void DrawText(const HostImage& image, int left, int bottom, int count, int w, int h, int pitch) {
    for (int i = 0; i < count; ++i, left += pitch) {
        for (int y = 0; y < h; ++y) {
            for (int x = 0; x < w; ++x) {
                const bool isInside = x > 2 && x < w - 3 && y > 2 && y < h - 3;
                if (!isInside) image.SetBit(left + x, bottom + y, false);
            }
        }
    }
}

// A name above two lines of small text, a rule and a speck.
HostImage Card() {
    HostImage card = HostImage::FromRows(std::vector<std::string>(600, std::string(1000, '.')));
    DrawText(card, 200, 400, 12, 30, 48, 40);
    DrawText(card, 250, 100, 30, 10, 14, 14);
    DrawText(card, 250, 130, 30, 10, 14, 14);
    DrawText(card, 100, 300, 1, 700, 3, 1);
    DrawText(card, 900, 500, 1, 1, 1, 1);
    return card;
}

TEST(FindTrueLineRect, FindsTheNameOfACard) {
    const HostImage card = Card();
    EXPECT_EQ(Sides(FindTrueLineRect(&card.Record(), &kOneLine)), std::make_tuple(200, 447, 669, 400));
    const HostImage blank = HostImage::FromRows(std::vector<std::string>(60, std::string(100, '.')));
    EXPECT_EQ(Sides(FindTrueLineRect(&blank.Record(), &kOneLine)), kNone);
}

TEST(FindTrueLineRect, RefusesWhatIsNoImageOrHasNoOptions) {
    const HostImage card = Card();
    const HostImage gray(100, 100, 8);
    EXPECT_EQ(Sides(FindTrueLineRect(nullptr, &kOneLine)), kNone);
    EXPECT_EQ(Sides(FindTrueLineRect(&card.Record(), nullptr)), kNone);
    EXPECT_EQ(Sides(FindTrueLineRect(&gray.Record(), &kOneLine)), kNone);
}

TEST(Grouping, KeepsAllLinesOfACardWhenAsked) {
    const HostImage card = Card();
    test::Store s;
    ASSERT_EQ(Extract_Eight_Connected_Components(card.Record(), &s, 1, 0, 0), 1);
    const auto before = test::Contents(s);
    EXPECT_EQ(Grouping(card.Record(), &s, nullptr, 3, 0, 0), 0);
    EXPECT_EQ(test::Contents(s), before);
    const GroupingOptions allLines{TAVRIX_SELECT_ALL_LINES, 0, 0};
    EXPECT_EQ(Grouping(card.Record(), &s, &allLines, 3, 0, 0), 1);
    std::vector<std::size_t> counts;
    for (const ComponentNode* line : test::Children(s.firstBlock)) {
        counts.push_back(test::Children(line).size());
    }
    EXPECT_EQ(counts, (std::vector<std::size_t>{12, 30, 30}));
    EXPECT_EQ(s.firstBlock->pixelCount, 1002u);
}

}  // namespace
}  // namespace tavrix
