// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <tavrix/component_store.hpp>
#include <tuple>
#include <vector>

#include "StoreSupport.h"
#include "support/HostImage.h"

namespace tavrix {
namespace {

using test::HostImage;
using test::Store;

struct Line {
    int width, height;                       // of the line; its left is its index
    std::vector<std::pair<int, int>> sizes;  // of its components
};

// The index of the chosen line, or -1.
int LogoAmong(const std::vector<Line>& lines) {
    const HostImage image(1000, 600, 1);
    Store s;
    for (std::size_t i = lines.size(); i-- > 0;) {
        ComponentNode* block = store::InsertBlock(s, nullptr, s.firstBlock, {});
        const auto box = [i](int w, int h) {
            return store::Box{static_cast<std::int16_t>(i), static_cast<std::int16_t>(h - 1),
                              static_cast<std::int16_t>(static_cast<int>(i) + w - 1), 0};
        };
        ComponentNode* line =
            store::InsertLine(s, block, nullptr, nullptr, box(lines[i].width, lines[i].height));
        for (const auto& [w, h] : lines[i].sizes)
            store::InsertComponent(s, line, nullptr, line->firstChild, box(w, h));
    }
    const LogoRect logo = FindCardLogo(image.Record(), s);
    EXPECT_EQ(logo.reserved, 0);
    if (logo.right == 0 && logo.top == 0) return -1;
    EXPECT_EQ(logo.right, logo.left + lines[static_cast<std::size_t>(logo.left)].width - 1);
    return logo.left;
}

TEST(FindCardLogo, TakesTheLineOfTheLargestQualifyingComponent) {
    EXPECT_EQ(LogoAmong({}), -1);
    EXPECT_EQ(LogoAmong({{100, 50, {{30, 30}}}, {100, 50, {{40, 40}}}, {100, 50, {{40, 40}}}}), 1);
    EXPECT_EQ(LogoAmong({{700, 50, {{600, 50}}}, {100, 50, {{9, 9}}}}), 1);
    EXPECT_EQ(LogoAmong({{700, 50, {{599, 50}, {6, 6}}}, {100, 50, {{9, 9}}}}), 0);
    EXPECT_EQ(LogoAmong({{501, 50, {{40, 40}}}, {100, 50, {{9, 9}}}}), 1);  // a lone component
    EXPECT_EQ(LogoAmong({{500, 300, {{40, 40}}}, {100, 50, {{9, 9}}}}), 0);
    EXPECT_EQ(LogoAmong({{500, 301, {{40, 40}, {5, 100}}}, {100, 50, {{9, 9}}}}), 1);
    EXPECT_EQ(LogoAmong({{100, 100, {{5, 100}, {100, 5}}}}), -1);
    std::vector<Line> many(150, Line{100, 50, {{9, 9}}});
    many[140].sizes = {{10, 10}};
    EXPECT_EQ(LogoAmong(many), 140);
}

TEST(FindCardLogo, RefusesOtherDepths) {
    const HostImage gray(100, 60, 8);
    const LogoRect logo = FindCardLogo(gray.Record(), Store());
    EXPECT_EQ(std::make_tuple(logo.left, logo.top, logo.right, logo.bottom, logo.reserved),
              std::make_tuple(0, 0, 0, 0, 0));
}

// A host's way through the exports, on a store of its own making.
TEST(HostStore, WalksFromExtractionToTheLogo) {
    std::vector<std::string> rows(80, std::string(120, '.'));
    const auto draw = [&](int left, int bottom, int size) {
        for (int y = bottom; y < bottom + size; ++y) rows[y].replace(left, size, std::string(size, '#'));
    };
    for (int i = 0; i < 5; ++i) draw(10 + 8 * i, 10, 6);
    draw(80, 50, 20);
    draw(0, 40, 2);
    const HostImage image = HostImage::FromRows(rows);

    host::Store store;
    ASSERT_EQ(Extract_Eight_Connected_Components(image.Record(), store.get(), 1, 0, 0), 1);
    EXPECT_EQ(store.header().componentCount, 7u);
    ASSERT_EQ(Noise_Filter1(image.Record(), store.get(), 3, 3, 0), 1);
    ASSERT_EQ(Grouping(image.Record(), store.get(), nullptr, 2, 0, 0), 0);
    ASSERT_EQ(Grouping(image.Record(), store.get(), nullptr, 1, 0, 0), 1);
    const host::Store moved = std::move(store);
    std::vector<std::vector<int>> blocks;
    for (const ComponentNode& block : moved.blocks()) {
        for (const ComponentNode& line : host::Children(block)) {
            blocks.push_back({line.left, line.top, line.right, line.bottom});
            for (const ComponentNode& component : host::Children(line))
                blocks.back().push_back(component.left);
        }
    }
    EXPECT_EQ(blocks,
              (std::vector<std::vector<int>>{{10, 15, 47, 10, 42, 34, 26, 18, 10}, {80, 69, 99, 50, 80}}));
    const LogoRect logo = FindCardLogo(image.Record(), moved.header());
    EXPECT_EQ(std::make_tuple(logo.left, logo.top, logo.right, logo.bottom), std::make_tuple(80, 69, 99, 50));
}

}  // namespace
}  // namespace tavrix
