// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "image/DibImage.h"
#include "support/HostImage.h"
#include "support/Messages.h"

namespace tavrix {
namespace {

using test::HostImage;

std::vector<std::uint8_t> BytesOfFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::uint32_t LongAt(const std::vector<std::uint8_t>& bytes, std::size_t offset) {
    return bytes[offset] | bytes[offset + 1] << 8 | bytes[offset + 2] << 16 | bytes[offset + 3] << 24;
}

// The file header, then header, colour table with cleared reserved bytes, and rows as they are in memory.
TEST(WriteBmp, WritesFileHeaderThenTheImageAsItIs) {
    const std::string path = testing::TempDir() + "tavrix_write_bmp_" + std::to_string(getpid()) + ".bmp";
    std::mt19937 random(4);
    const struct {
        int width, height, bitCount;
        std::uint32_t pixelOffset, fileBytes;
    } cases[] = {{13, 2, 8, 1078, 1110}, {33, 3, 1, 62, 86}, {5, 2, 24, 54, 86}, {0, 0, 8, 1078, 1078}};
    for (const auto& [width, height, bitCount, pixelOffset, fileBytes] : cases) {
        const HostImage host = HostImage::Random(width, height, bitCount, random);
        for (std::uint32_t i = 0; i < host.Header().biClrUsed; ++i) {
            host.Record().palette[i].rgbReserved = static_cast<std::uint8_t>(i + 1);
        }
        ASSERT_TRUE(DibImage(host.Handle()).WriteBmp(path.c_str()));
        const std::vector<std::uint8_t> file = BytesOfFile(path);
        ASSERT_EQ(file.size(), fileBytes);
        EXPECT_EQ(file[0], 'B');
        EXPECT_EQ(file[1], 'M');
        EXPECT_EQ(LongAt(file, 2), fileBytes);
        EXPECT_EQ(LongAt(file, 6), 0u);
        EXPECT_EQ(LongAt(file, 10), pixelOffset);
        for (std::uint32_t i = 0; i < host.Header().biClrUsed; ++i) host.Record().palette[i].rgbReserved = 0;
        EXPECT_EQ(std::vector<std::uint8_t>(file.begin() + 14, file.end()), host.Bytes());
    }
    // A count of colours that no table of the format has: none is written.
    const HostImage host(4, 1, 8);
    DibImage image(host.Handle());
    host.Header().biClrUsed = 257;
    ASSERT_TRUE(image.WriteBmp(path.c_str()));
    EXPECT_EQ(BytesOfFile(path).size(), 58u);
    std::filesystem::remove(path);
}

TEST(WriteBmp, IsSilentWhenTheFolderIsNotThere) {
    const HostImage host(4, 4, 8);
    EXPECT_FALSE(DibImage(host.Handle()).WriteBmp("/no such folder/test.bmp"));
}

TEST(WriteBmp, ShowsAMessageWhenWritingFails) {
    const HostImage host(4, 4, 8);
    const test::Messages messages;
    EXPECT_FALSE(DibImage(host.Handle()).WriteBmp("/dev/full"));
    EXPECT_EQ(messages.texts, std::vector<std::string>{"Write BMP error"});
}

}  // namespace
}  // namespace tavrix
