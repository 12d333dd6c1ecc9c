// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstring>
#include <utility>

#include "image/DibImage.h"
#include "image/PixelKernels.h"
#include "support/HostImage.h"
#include "support/KernelVariants.h"

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

TEST(DibImage, ReadsAndWritesSinglePixels) {
    std::mt19937 random(5);
    for (const int bitCount : {1, 8, 24}) {
        const HostImage host = HostImage::Random(9, 3, bitCount, random);
        DibImage image(host.Handle());
        const int columns = bitCount == 24 ? 27 : 9;
        const std::vector<std::uint8_t> before = host.Bytes();
        for (const auto& [x, y] : {std::pair{-1, 0}, {columns, 0}, {0, -1}, {0, 3}}) {
            image.SetPixel(x, y, 1);
            image.SetPixel(x, y, 0);
        }
        EXPECT_EQ(host.Bytes(), before);
        for (int y = 0; y < 3; ++y) {
            for (int x = 0; x < columns; ++x) {
                const int old = bitCount == 1 ? host.Bit(x, y) : host.Row(y)[x];
                EXPECT_EQ(image.GetPixel(x, y), old);
                image.SetPixel(x, y, 0x1FF - old);
                EXPECT_EQ(image.GetPixel(x, y), bitCount == 1 ? 1 : 255 - old);
                image.SetPixel(x, y, bitCount == 1 ? old : 0x300 + old);
                EXPECT_EQ(image.GetPixel(x, y), old);
            }
        }
        EXPECT_EQ(host.Bytes(), before);
    }
}

TEST(DibImage, LocksAHostsBlockWhileItLives) {
    const HostImage host(3, 3, 8);
    {
        DibImage image(host.Handle());
        EXPECT_EQ(GlobalFlags(host.Handle()) & GMEM_LOCKCOUNT, 2u);
        image.Release();
        EXPECT_EQ(GlobalFlags(host.Handle()) & GMEM_LOCKCOUNT, 1u);
    }
    EXPECT_EQ(GlobalFlags(host.Handle()) & GMEM_LOCKCOUNT, 1u);
    { const DibImage borrowed(host.Record().header, host.Record().palette, host.Record().bits); }
    EXPECT_EQ(GlobalFlags(host.Handle()) & GMEM_LOCKCOUNT, 1u);
}

TEST(DibImage, RefusesToCreateWhatMemoryCannotHold) {
    DibImage image;
    EXPECT_FALSE(image.Create(kMaxSide, kMaxSide, 24));
    EXPECT_EQ(image.handle, nullptr);
    EXPECT_EQ(image.bits, nullptr);
}

TEST(DibImage, BlankImageTakesHeaderAndTableOfAnother) {
    std::mt19937 random(6);
    for (const int bitCount : {1, 8, 24}) {
        const HostImage host = HostImage::Random(13, 4, bitCount, random);
        const DibImage source(host.Handle()), blank(&source);
        std::vector<std::uint8_t> expected = host.Bytes();
        std::fill(expected.end() - host.Header().biSizeImage, expected.end(), std::uint8_t{0});
        const auto* block = reinterpret_cast<const std::uint8_t*>(blank.header);
        EXPECT_EQ(std::vector<std::uint8_t>(block, block + expected.size()), expected);
        EXPECT_EQ(blank.bits - block, expected.size() - host.Header().biSizeImage);
    }
}

TEST(DibImage, CopiesForTheHostAreWholeAndLockedOnce) {
    std::mt19937 random(7);
    for (const int bitCount : {1, 8, 24}) {
        for (const int height : {0, 3}) {
            const HostImage host = HostImage::Random(13, height, bitCount, random);
            const DibImage image(host.Handle());
            DibRecord record{};
            HGLOBAL handle = nullptr;
            ASSERT_TRUE(image.ExportToRecord(&record));
            ASSERT_TRUE(image.ExportToHandle(&handle));
            EXPECT_EQ(GlobalFlags(handle), 1u);
            EXPECT_EQ(GlobalFlags(GlobalHandle(record.header)), 1u);
            EXPECT_EQ(HostImage(record).Bytes(), host.Bytes());
            const DibImage copy(handle);
            EXPECT_EQ(HostImage({copy.header, copy.palette, copy.bits}).Bytes(), host.Bytes());
        }
    }
}

TEST(DibImage, GrayIsTheRoundedSumInDoubleForEveryColour) {
    constexpr int kWidth = 256;
    std::vector<std::uint8_t> row(3 * kWidth), gray(kWidth), expected(kWidth);
    for (int blueGreen = 0; blueGreen < 256 * 256; ++blueGreen) {
        const int blue = blueGreen / 256, green = blueGreen % 256;
        for (int red = 0; red < 256; ++red) {
            row[3 * red] = static_cast<std::uint8_t>(blue);
            row[3 * red + 1] = static_cast<std::uint8_t>(green);
            row[3 * red + 2] = static_cast<std::uint8_t>(red);
            expected[red] = static_cast<std::uint8_t>(0.299 * red + 0.587 * green + 0.114 * blue + 0.5);
        }
        test::OnVariants(TAVRIX_VARIANTS(PixelKernels, grayRow), [&](auto* grayRow) {
            grayRow(row.data(), kWidth, gray.data());
            ASSERT_EQ(gray, expected) << "blue " << blue << ", green " << green;
        });
    }
}

TEST(DibImage, ConvertsRowsOfEveryLengthToGray) {
    std::mt19937 random(8);
    for (int width = 0; width <= 100; ++width) {
        const HostImage host = HostImage::Random(width, 2, 24, random);
        const DibImage image(host.Handle());
        DibImage gray;
        ASSERT_TRUE(gray.Create(width, 2, 8));
        ASSERT_TRUE(image.ConvertToGray(gray));
        for (int y = 0; y < 2; ++y) {
            for (int x = 0; x < width; ++x) {
                const std::uint8_t* pixel = host.Row(y) + 3 * x;
                const double level = 0.299 * pixel[2] + 0.587 * pixel[1] + 0.114 * pixel[0] + 0.5;
                ASSERT_EQ(gray.Row(y)[x], static_cast<int>(level)) << x << " of " << width;
            }
            for (unsigned x = width; x < gray.RowBytes(); ++x) ASSERT_EQ(gray.Row(y)[x], 0) << "padding";
        }
    }
}

TEST(DibImage, PacksInEveryVariantAlikeAndNotBeyondTheRow) {
    std::mt19937 random(9);
    for (int width = 0; width <= 140; ++width) {
        for (const int limit : {0, 1, 127, 254, 255}) {
            std::vector<std::uint8_t> row(width);
            for (std::uint8_t& value : row) value = static_cast<std::uint8_t>(random() % 3 + limit - 1);
            std::vector<std::uint8_t> expected((width + 7) / 8 + 1);
            expected.back() = 0xA5;
            for (int x = 0; x < width; ++x) {
                if (row[x] > limit) expected[x / 8] |= static_cast<std::uint8_t>(0x80 >> x % 8);
            }
            test::OnVariants(TAVRIX_VARIANTS(PixelKernels, packAbove), [&](auto* packAbove) {
                std::vector<std::uint8_t> packed(expected.size(), 0xA5);
                packAbove(row.data(), width, static_cast<std::uint8_t>(limit), packed.data());
                ASSERT_EQ(packed, expected) << width << " above " << limit;
            });
        }
    }
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
        BITMAPINFOHEADER header = host.Header();
        header.biBitCount = 1;
        header.biSizeImage = static_cast<std::uint32_t>(3 * RowBytesOf(1, width));
        header.biClrUsed = 2;
        EXPECT_EQ(std::memcmp(&exported.Header(), &header, kHeaderBytes), 0);
        EXPECT_EQ(packed.header->biSizeImage, header.biSizeImage);
        EXPECT_EQ(packed.header->biXPelsPerMeter, 101600);
        for (const RGBQUAD* table : {exported.Record().palette, packed.palette}) {
            EXPECT_EQ(std::memcmp(table, "\0\0\0\0\xFF\xFF\xFF", 8), 0);
        }
        // A packed image is exported as it is.
        DibRecord copy{};
        ASSERT_TRUE(packed.ExportOneBit(&copy, false));
        const HostImage copied(copy);
        EXPECT_EQ(std::memcmp(copy.header, packed.header, kHeaderBytes), 0);
        EXPECT_EQ(std::memcmp(copy.palette, packed.palette, TableBytesOf(1)), 0);
        EXPECT_EQ(std::memcmp(copy.bits, packed.bits, header.biSizeImage), 0);
    }
}

}  // namespace
}  // namespace tavrix
