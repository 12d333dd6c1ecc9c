// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "image/DibImage.h"
#include "support/HostImage.h"

namespace tavrix {
namespace {

using test::HostImage;

TEST(DibImage, CreatesBlankImagesWithTableAndResolution) {
    DibImage gray;
    ASSERT_TRUE(gray.Create(13, 2, 8));
    EXPECT_EQ(gray.header->biSizeImage, 32u);
    EXPECT_EQ(gray.header->biXPelsPerMeter, 101600);
    EXPECT_EQ(gray.palette[200].rgbGreen, 200);
    DibImage oneBit;
    ASSERT_TRUE(oneBit.Create(33, 1, 1));
    EXPECT_EQ(oneBit.RowBytes(), 8u);
    EXPECT_EQ(oneBit.palette[0].rgbRed, 0);
    EXPECT_EQ(oneBit.palette[1].rgbRed, 255);
}

TEST(DibImage, PixelsOutsideReadWhiteIn1BitAndZeroElsewhere) {
    const HostImage bits(9, 2, 1), gray(9, 2, 8);
    const DibImage one(bits.Handle()), eight(gray.Handle());
    EXPECT_EQ(one.GetPixel(-1, 0), 1);
    EXPECT_EQ(one.GetPixel(0, 2), 1);
    EXPECT_EQ(eight.GetPixel(-1, 0), 0);
}

// The two packing rules differ for the value 1.
TEST(DibImage, PacksByItsTwoRules) {
    for (int width = 1; width <= 70; ++width) {
        std::mt19937 random(width);
        const HostImage host = HostImage::Random(width, 3, 8, random);
        for (int x = 0; x < width; x += 3) host.Row(1)[x] = static_cast<std::uint8_t>(x % 3 + x % 2);
        DibImage image(host.Handle());
        DibRecord record{};
        ASSERT_TRUE(image.ExportOneBit(&record, true));
        const HostImage exported(record);
        DibImage packed;
        ASSERT_TRUE(packed.Create(width, 3, 8));
        ASSERT_TRUE(packed.PackToOneBit(image));
        for (int y = 0; y < 3; ++y) {
            for (int x = 0; x < static_cast<int>(packed.RowBytes()) * 8; ++x) {
                const bool inside = x < width;
                EXPECT_EQ(exported.Bit(x, y), inside && host.Row(y)[x] != 0) << x << ',' << y;
                EXPECT_EQ(packed.Row(y)[x / 8] >> (7 - x % 8) & 1, inside && host.Row(y)[x] > 1)
                    << x << ',' << y;
            }
        }
    }
}

}  // namespace
}  // namespace tavrix
