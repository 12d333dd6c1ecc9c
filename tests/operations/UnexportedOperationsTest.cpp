// SPDX-License-Identifier: MIT
// Operations of the library's classes that their rules define and no export calls.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <tuple>
#include <vector>

#include "binarize/OtsuBinarizer.h"
#include "geometry/RotationTool.h"
#include "image/DibImage.h"
#include "support/HostImage.h"

namespace tavrix {
namespace {

using test::HostImage;

template <class Record>
auto Sides(const Record& record) {
    return std::tuple(record.left, record.top, record.right, record.bottom);
}

TEST(RotationTool, MapsRectangles) {
    const ImagePtr image = DibImage::New(100, 60, 1);
    RotationTool tool(image.get());
    const BlockRect rect{10, 40, 20, 30, 7};
    const struct {
        std::uint16_t code;
        BlockRect rect, expected;
    } cases[] = {
        {0, rect, rect},
        {1, rect, {30, 90, 40, 80, 7}},
        {2, rect, {80, 30, 90, 20, 7}},
        {3, rect, {20, 20, 30, 10, 7}},
        {4, rect, rect},
        {0, {20, 30, 10, 40, 7}, rect},                    // sides put in order
        {1, {-32700, 5, 3, 2, 0}, {2, 97, 5, -32736, 0}},  // 100 + 32700 wraps
    };
    for (const auto& [code, given, expected] : cases) {
        BlockRect mapped = given;
        EXPECT_TRUE(tool.RotateRect(&mapped, code));
        EXPECT_EQ(Sides(mapped), Sides(expected)) << code;
        EXPECT_EQ(mapped.tag, given.tag);
        ComponentNode node{};
        std::tie(node.left, node.top, node.right, node.bottom) = Sides(given);
        EXPECT_TRUE(tool.RotateNodeRect(&node, code));
        EXPECT_EQ(Sides(node), Sides(expected)) << code;
    }
}

TEST(RotationTool, TurnsAndFlipsWholeImages) {
    const int w = 45, h = 13;
    const HostImage host = HostImage::Drawn(w, h, 1, 3);
    const ImagePtr image = DibImage::Borrow(host.Handle());
    RotationTool tool(image.get());
    const auto expect = [&](const ImagePtr& result, bool transposed, auto sourceOf) {
        ASSERT_NE(result, nullptr);
        ASSERT_EQ(std::pair(result->Width(), result->Height()),
                  transposed ? std::pair(h, w) : std::pair(w, h));
        for (int y = 0; y < result->Height(); ++y) {
            for (int x = 0; x < result->Width(); ++x) {
                const auto [sourceX, sourceY] = sourceOf(x, y);
                ASSERT_EQ(result->GetPixel(x, y), image->GetPixel(sourceX, sourceY)) << x << ',' << y;
            }
        }
    };
    expect(tool.RotateOneBit(*image, 0), false, [](int x, int y) { return std::pair(x, y); });
    expect(tool.RotateOneBit(*image, 90), true, [](int x, int y) { return std::pair(w - 1 - y, x); });
    expect(tool.RotateOneBit(*image, 180), false,
           [](int x, int y) { return std::pair(w - 1 - x, h - 1 - y); });
    expect(tool.RotateOneBit(*image, 270), true, [](int x, int y) { return std::pair(y, h - 1 - x); });
    expect(tool.FlipOneBit(1, *image), false, [](int x, int y) { return std::pair(x, h - 1 - y); });
    const ImagePtr mirrored = tool.FlipOneBit(2, *image);
    expect(mirrored, false, [](int x, int y) { return std::pair(w - 1 - x, y); });
    for (int y = 0; y < h; ++y) {  // what lies past the width stays
        EXPECT_EQ(mirrored->Row(y)[w / 8] & 0xFF >> w % 8, image->Row(y)[w / 8] & 0xFF >> w % 8);
        EXPECT_EQ(mirrored->Row(y)[w / 8 + 1], image->Row(y)[w / 8 + 1]);
    }
    EXPECT_EQ(tool.RotateOneBit(*image, 45), nullptr);
    EXPECT_EQ(tool.FlipOneBit(3, *image), nullptr);
}

TEST(DibImage, CreatesInPlaceOfTheBlockBefore) {
    const HostImage host = HostImage::Drawn(5, 9, 8);
    ImagePtr image = DibImage::Borrow(host.Handle());
    const HGLOBAL borrowed = image->handle;
    ASSERT_TRUE(image->Create(40, 30, 8));
    EXPECT_EQ(GlobalFlags(borrowed), 1u);  // the host's lock
    const HGLOBAL first = image->handle;
    ASSERT_TRUE(image->Create(4000, 3000, 1));
    const HGLOBAL second = image->handle;
    EXPECT_TRUE(first == second || GlobalFlags(first) == GMEM_INVALID_HANDLE);
    EXPECT_FALSE(image->Create(32767, 32767, 24));  // too large for a block
    EXPECT_EQ(GlobalFlags(second), static_cast<unsigned>(GMEM_INVALID_HANDLE));
    EXPECT_EQ(image->handle, nullptr);
}

TEST(DibImage, ReadsAndWritesSinglePixels) {
    for (const int bitCount : {1, 8, 24}) {
        const HostImage host = HostImage::Drawn(5, 9, bitCount);
        const ImagePtr image = DibImage::Borrow(host.Handle());
        const int columns = bitCount == 24 ? 15 : 5, outside = bitCount == 1 ? 1 : 0;
        const std::vector<std::uint8_t> before = host.Bytes();
        for (const auto& [x, y] : {std::pair{-1, 0}, {columns, 0}, {0, -1}, {0, 9}}) {
            EXPECT_EQ(image->GetPixel(x, y), outside);
            for (const int value : {0, 1}) image->SetPixel(x, y, value);
        }
        EXPECT_EQ(host.Bytes(), before);
        for (int y = 0; y < 9; ++y) {
            for (int x = 0; x < columns; ++x) {
                const std::uint8_t* row = host.Record().bits + image->RowBytes() * y;
                const int old = bitCount == 1 ? row[x / 8] >> (7 - x % 8) & 1 : row[x];
                EXPECT_EQ(image->GetPixel(x, y), old);
                image->SetPixel(x, y, bitCount == 1 ? 1 - old : 0x1FF - old);
                EXPECT_EQ(image->GetPixel(x, y), bitCount == 1 ? 1 - old : 255 - old);
                image->SetPixel(x, y, bitCount == 1 ? 5 * old : 0x300 + old);
            }
        }
        EXPECT_EQ(host.Bytes(), before);
    }
}

// Pages that are counted by single pixels, by pairs, and by pairs in turns; every third row is mostly plain.
TEST(Binarizer, CountsEveryStepthPixel) {
    for (const auto& [width, height] : {std::pair{31, 11}, {611, 450}, {1221, 901}}) {
        const HostImage host = HostImage::Drawn(width, height, 8);
        const ImagePtr image = DibImage::Borrow(host.Handle());
        for (int y = 0; y < height; y += 3) std::memset(image->Row(y), y % 2 * 255, width * 3 / 4);
        OtsuBinarizer binarizer(image.get());
        for (const int step : {1, 2, 3}) {
            std::uint32_t expected[256] = {};
            for (int y = 0; y < height; y += step) {
                for (int x = 0; x < width; x += step) ++expected[image->Row(y)[x]];
            }
            binarizer.ComputeHistogram(step);
            EXPECT_TRUE(std::equal(expected, expected + 256, binarizer.histogram)) << width << ' ' << step;
        }
    }
}

}  // namespace
}  // namespace tavrix
