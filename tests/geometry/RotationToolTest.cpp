// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <memory>
#include <tuple>

#include "geometry/RotationTool.h"
#include "image/DibImage.h"
#include "support/HostImage.h"

namespace tavrix {
namespace {

using test::HostImage;

auto Sides(const BlockRect& rect) {
    return std::tuple(rect.left, rect.top, rect.right, rect.bottom, rect.tag);
}

TEST(RotationTool, MapsRectangles) {
    DibImage image;
    ASSERT_TRUE(image.Create(100, 60, 1));
    RotationTool tool(&image);
    const BlockRect rect{10, 40, 20, 30, 7};
    struct Case {
        std::uint16_t code;
        BlockRect rect, expected;
    };
    const Case cases[] = {
        {0, rect, rect},
        {1, rect, {30, 90, 40, 80, 7}},
        {2, rect, {80, 30, 90, 20, 7}},
        {3, rect, {20, 20, 30, 10, 7}},
        {4, rect, rect},
        {5, rect, rect},
        {999, rect, rect},
        {0, {20, 30, 10, 40, 7}, rect},                    // sides put in order
        {1, {-32700, 5, 3, 2, 0}, {2, 97, 5, -32736, 0}},  // 100 + 32700 wraps
    };
    for (const Case& each : cases) {
        BlockRect mapped = each.rect;
        EXPECT_TRUE(tool.RotateRect(&mapped, each.code));
        EXPECT_EQ(Sides(mapped), Sides(each.expected)) << "code " << each.code;
        ComponentNode node{};
        std::tie(node.left, node.top, node.right, node.bottom) =
            std::tuple(each.rect.left, each.rect.top, each.rect.right, each.rect.bottom);
        node.tag = static_cast<std::uint16_t>(each.rect.tag);
        node.kind = NODE_LINE;
        EXPECT_TRUE(tool.RotateNodeRect(&node, each.code));
        EXPECT_EQ(Sides({node.left, node.top, node.right, node.bottom, static_cast<std::int16_t>(node.tag)}),
                  Sides(each.expected));
        EXPECT_EQ(node.kind, NODE_LINE);
    }
}

// The image of a host image's rows, owned.
std::unique_ptr<DibImage> CopyOf(const HostImage& host) {
    const DibImage wrapped(host.Handle());
    auto copy = std::make_unique<DibImage>(&wrapped);
    copy->CopyBitsFrom(wrapped);
    return copy;
}

std::vector<std::string> RowsOf(const DibImage& image) {
    std::vector<std::string> rows(image.Height());
    for (int y = 0; y < image.Height(); ++y) {
        for (int x = 0; x < image.Width(); ++x) rows[y] += image.GetPixel(x, y) ? '.' : '#';
    }
    return rows;
}

TEST(RotationTool, TurnsAndFlipsWholeImages) {
    const HostImage host = HostImage::FromRows({"#..", ".##"});
    const auto whole = CopyOf(host);
    RotationTool turner(whole.get());
    using Rows = std::vector<std::string>;
    const auto turned = [&](int angle) {
        const std::unique_ptr<DibImage> result(turner.RotateOneBit(CopyOf(host).release(), angle));
        return RowsOf(*result);
    };
    EXPECT_EQ(turned(0), (Rows{"#..", ".##"}));
    EXPECT_EQ(turned(90), (Rows{".#", ".#", "#."}));
    EXPECT_EQ(turned(180), (Rows{"##.", "..#"}));
    EXPECT_EQ(turned(270), (Rows{".#", "#.", "#."}));
    const auto flipped = [&](int mode) {
        const std::unique_ptr<DibImage> result(turner.FlipOneBit(mode, CopyOf(host).release()));
        EXPECT_EQ(result->header->biXPelsPerMeter, host.Header().biXPelsPerMeter) << "the header is kept";
        return RowsOf(*result);
    };
    EXPECT_EQ(flipped(1), (Rows{".##", "#.."}));
    EXPECT_EQ(flipped(2), (Rows{"..#", "##."}));
    // Refusals leave the image.
    const auto image = CopyOf(host);
    EXPECT_EQ(turner.RotateOneBit(image.get(), 45), nullptr);
    EXPECT_EQ(turner.FlipOneBit(3, image.get()), nullptr);
    EXPECT_EQ(RowsOf(*image), host.Rows());
}

}  // namespace
}  // namespace tavrix
