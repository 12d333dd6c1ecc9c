// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "support/HostImage.h"

namespace tavrix {
namespace {

using test::HostImage;
using Rows = std::vector<std::string>;

Rows Turned(const HostImage& source, const BlockRect& block, int code) {
    const int w = block.right - block.left + 1, h = block.top - block.bottom + 1;
    const bool transposed = code == 1 || code == 3 || code == 5;
    Rows rows(transposed ? w : h, std::string(transposed ? h : w, '?'));
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const char pixel = source.Bit(block.left + x, block.bottom + y) ? '.' : '#';
            switch (code) {
                case 1: rows[w - 1 - x][y] = pixel; break;
                case 2: rows[h - 1 - y][w - 1 - x] = pixel; break;
                case 3: rows[x][h - 1 - y] = pixel; break;
                case 4: rows[h - 1 - y][x] = pixel; break;
                case 5: rows[w - 1 - x][h - 1 - y] = pixel; break;
                default: rows[y][x] = pixel; break;
            }
        }
    }
    return rows;
}

void CheckBlock(const HostImage& source, const BlockRect& block, const BlockRect& clipped, int code) {
    const auto before = source.Bytes();
    DibRecord record{};
    ASSERT_EQ(RotateImageBlock(source.Record(), block, code, &record), 1);
    const HostImage result(record);
    EXPECT_EQ(GlobalFlags(result.Handle()) & GMEM_LOCKCOUNT, 2u) << "locked once, and once by the test";
    ASSERT_EQ(result.Rows(), Turned(source, clipped, code & 0xFFFF))
        << "code " << code << ", columns " << block.left << " to " << block.right;
    for (int y = 0; y < result.Height(); ++y) {
        for (int x = result.Width(); x < static_cast<int>(result.RowBytes()) * 8; ++x) {
            ASSERT_EQ(result.Bit(x, y), 0) << "padding bit " << x;
        }
    }
    EXPECT_EQ(result.Header().biXPelsPerMeter, 101600);
    EXPECT_EQ(result.Header().biClrUsed, 2u);
    EXPECT_EQ(result.Record().palette[1].rgbBlue, 255);
    EXPECT_EQ(source.Bytes(), before);
}

TEST(RotateImageBlock, CutsAndTurnsAtEveryBitOffset) {
    std::mt19937 random(1);
    const HostImage source = HostImage::Random(150, 41, 1, random);
    for (std::int16_t left = 0; left < 34; ++left) {
        for (const int width : {1, 2, 7, 8, 9, 31, 32, 33, 64, 65, 100, 116}) {
            const auto right = static_cast<std::int16_t>(left + width - 1);
            for (int code = 0; code <= 6; ++code) {
                const auto bottom = static_cast<std::int16_t>(code + left % 3);
                const BlockRect block{left, static_cast<std::int16_t>(left + 7), right, bottom, 0};
                CheckBlock(source, block, block, code);
            }
        }
    }
}

TEST(RotateImageBlock, TurnsWholeImagesOfEveryWidth) {
    std::mt19937 random(2);
    for (std::int16_t width = 1; width <= 130; ++width) {
        const auto height = static_cast<std::int16_t>(1 + width * 7 % 71);
        const HostImage source = HostImage::Random(width, height, 1, random);
        const BlockRect all{0, static_cast<std::int16_t>(height - 1), static_cast<std::int16_t>(width - 1), 0,
                            9};
        for (const int code : {0, 1, 2, 3, 4, 5, 6, 0x10001, -1}) CheckBlock(source, all, all, code);
    }
}

TEST(RotateImageBlock, ClipsBlocksAndRefusesThoseOutside) {
    std::mt19937 random(3);
    const HostImage source = HostImage::Random(50, 20, 1, random);
    CheckBlock(source, {-5, 25, 60, -1, 0}, {0, 19, 49, 0, 0}, 1);
    CheckBlock(source, {45, 32767, 32767, 18, 0}, {45, 19, 49, 18, 0}, 5);
    const BlockRect outside[] = {{50, 10, 60, 5, 0}, {-9, 10, -1, 5, 0}, {5, 25, 9, 20, 0},
                                 {5, -1, 9, -3, 0},  {9, 10, 8, 5, 0},   {-32768, 32767, -32768, 0, 0}};
    for (const BlockRect& block : outside) {
        DibRecord record{};
        EXPECT_EQ(RotateImageBlock(source.Record(), block, 0, &record), -1) << block.left << ',' << block.top;
        EXPECT_EQ(record.header, nullptr);
    }
}

TEST(RotateImageBlock, UpsideDownBlockIsBlack) {
    const HostImage source = HostImage::FromRows({".....", ".....", "....."});
    for (const int code : {0, 1}) {
        DibRecord record{};
        ASSERT_EQ(RotateImageBlock(source.Record(), {1, 0, 3, 1, 0}, code, &record), 1);
        const HostImage result(record);
        EXPECT_EQ(result.Rows(), code == 0 ? (Rows{"###", "###"}) : (Rows{"##", "##", "##"}));
    }
}

TEST(RotateImageBlock, RefusesOtherDepthsAndNull) {
    const HostImage gray(8, 8, 8), bits(8, 8, 1);
    DibRecord record{};
    EXPECT_EQ(RotateImageBlock(gray.Record(), {0, 7, 7, 0, 0}, 0, &record), -1);
    EXPECT_EQ(RotateImageBlock(DibRecord{}, {0, 7, 7, 0, 0}, 0, &record), -1);
    EXPECT_EQ(RotateImageBlock(bits.Record(), {0, 7, 7, 0, 0}, 0, nullptr), -1);
    EXPECT_EQ(record.header, nullptr);
}

}  // namespace
}  // namespace tavrix
