// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "support/HostImage.h"

namespace tavrix {
namespace {

using test::HostImage;

TEST(RotateGrayImage, TurnsAQuarterClockwise) {
    std::mt19937 random(1);
    for (int width = 0; width <= 70; ++width) {
        const int height = width * 13 % 75;
        const HostImage source = HostImage::Random(width, height, 8, random);
        source.Record().palette[3] = {1, 2, 3, 4};
        const auto before = source.Bytes();
        DibRecord record{};
        ASSERT_EQ(RotateGrayImage(source.Handle(), width % 2 != 0 ? 90 : 90 + 65536, &record), 1);
        const HostImage result(record);
        ASSERT_EQ(result.Width(), height);
        ASSERT_EQ(result.Height(), width);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                ASSERT_EQ(result.Row(width - 1 - x)[y], source.Row(y)[x]) << x << ',' << y;
            }
        }
        EXPECT_EQ(result.Record().palette[3].rgbRed, 3) << "the gray ramp";
        EXPECT_EQ(result.Header().biYPelsPerMeter, 101600);
        EXPECT_EQ(source.Bytes(), before);
        EXPECT_EQ(GlobalFlags(source.Handle()) & GMEM_LOCKCOUNT, 1u) << "only the test's own lock";
    }
}

TEST(RotateGrayImage, RefusesOtherAnglesAndDepths) {
    const HostImage gray(8, 8, 8), bits(8, 8, 1), colour(8, 8, 24);
    DibRecord record{};
    for (const int angle : {0, 180, 270, -90, 91}) {
        EXPECT_EQ(RotateGrayImage(gray.Handle(), angle, &record), -1) << angle;
    }
    EXPECT_EQ(RotateGrayImage(bits.Handle(), 90, &record), -1);
    EXPECT_EQ(RotateGrayImage(colour.Handle(), 90, &record), -1);
    EXPECT_EQ(RotateGrayImage(nullptr, 90, &record), -1);
    EXPECT_EQ(RotateGrayImage(gray.Handle(), 90, nullptr), -1);
    EXPECT_EQ(record.header, nullptr);
    EXPECT_EQ(GlobalFlags(gray.Handle()) & GMEM_LOCKCOUNT, 1u);
}

}  // namespace
}  // namespace tavrix
