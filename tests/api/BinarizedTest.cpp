// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstring>

#include "binarize/GrayPictures.h"
#include "image/DibImage.h"
#include "image/DibLayout.h"
#include "image/ImageTool.h"
#include "support/Messages.h"

namespace tavrix {
namespace {

using test::Content;
using test::GrayPicture;
using test::HostImage;
using test::Messages;

constexpr DibRecord kUntouched{nullptr, nullptr, nullptr};
constexpr const char* kUnknownMode = "非接受之二值化格式";

unsigned LocksOf(HGLOBAL handle) {
    return GlobalFlags(handle) & GMEM_LOCKCOUNT;
}

unsigned LocksOf(const DibRecord& record) {
    return LocksOf(GlobalHandle(record.header));
}

HostImage CopyOf(const HostImage& host) {
    HostImage copy(host.Width(), host.Height(), host.Header().biBitCount);
    const std::vector<std::uint8_t> bytes = host.Bytes();
    std::memcpy(copy.Record().header, bytes.data(), bytes.size());
    return copy;
}

// '#' where a pixel of an 8-bit image is 0.
std::vector<std::string> ZerosOf(const HostImage& gray) {
    std::vector<std::string> rows;
    for (int y = 0; y < gray.Height(); ++y) {
        rows.emplace_back();
        for (int x = 0; x < gray.Width(); ++x) rows.back() += gray.Row(y)[x] == 0 ? '#' : '.';
    }
    return rows;
}

// What a method leaves of an 8-bit image.
std::vector<std::string> RowsByMethod(const HostImage& host, std::uint32_t id) {
    const HostImage copy = CopyOf(host);
    DibImage image(copy.Handle());
    EXPECT_TRUE(ImageTool(&image).BinarizeByMethod(id));
    return ZerosOf(copy);
}

void ExpectOneBitOf(const HostImage& result, const HostImage& source) {
    BITMAPINFOHEADER header = source.Header();
    header.biBitCount = 1;
    header.biClrUsed = 2;
    header.biSizeImage = static_cast<std::uint32_t>(RowBytesOf(1, header.biWidth) * header.biHeight);
    EXPECT_EQ(std::memcmp(&result.Header(), &header, kHeaderBytes), 0);
    EXPECT_EQ(std::memcmp(result.Record().palette, "\0\0\0\0\xFF\xFF\xFF", 8), 0);
}

using Export = decltype(&Binarized);
constexpr Export kExports[] = {Binarized, Binarized_Separate_Block};

constexpr struct {
    std::int32_t mode;
    std::uint32_t methodId;
} kThresholdModes[] = {{0, 2}, {1, 0}, {2, 3}, {3, 1}, {4, 4}, {6, 6}};

TEST(Binarized, ModesRunTheirMethodsInPlace) {
    for (const Export binarize : kExports) {
        for (const auto& [mode, methodId] : kThresholdModes) {
            const HostImage host = GrayPicture(83, 40, Content::kText);
            host.Header().biXPelsPerMeter = 7874;
            host.Header().biClrImportant = 17;
            const std::vector<std::string> expected = RowsByMethod(host, methodId);
            DibRecord record = kUntouched;
            ASSERT_EQ(binarize(host.Handle(), &record, mode), 1);
            EXPECT_EQ(LocksOf(record), binarize == Binarized ? 0u : 1u);
            EXPECT_EQ(LocksOf(host.Handle()), 1u);
            const HostImage result(record);
            EXPECT_EQ(result.Rows(), expected) << "mode " << mode;
            EXPECT_EQ(ZerosOf(host), expected) << "mode " << mode;
            ExpectOneBitOf(result, host);
        }
    }
}

TEST(Binarized, ColourGoesThroughGrayAndStaysAsItIs) {
    std::mt19937 random(2);
    const HostImage host = HostImage::Random(41, 33, 24, random);
    const std::vector<std::uint8_t> before = host.Bytes();
    const HostImage gray(41, 33, 8);
    DibImage grayImage(gray.Handle());
    DibImage(host.Handle()).ConvertToGray(grayImage);
    for (const auto& [mode, methodId] : kThresholdModes) {
        DibRecord record = kUntouched;
        ASSERT_EQ(Binarized(host.Handle(), &record, mode), 1);
        EXPECT_EQ(LocksOf(record), 0u);
        const HostImage result(record);
        EXPECT_EQ(result.Rows(), RowsByMethod(gray, methodId));
        EXPECT_EQ(result.Header().biXPelsPerMeter, 101600);
    }
    EXPECT_EQ(host.Bytes(), before);
    EXPECT_EQ(LocksOf(host.Handle()), 1u);

    DibRecord record = kUntouched;
    EXPECT_EQ(Binarized_Separate_Block(host.Handle(), &record, 0), -1);
    EXPECT_EQ(record.header, nullptr);
}

TEST(Binarized, OneBitIsCopiedWhateverTheMode) {
    std::mt19937 random(3);
    const HostImage host = HostImage::Random(35, 9, 1, random);
    for (const Export binarize : kExports) {
        for (const std::int32_t mode : {0, 5, 7, -1}) {
            const Messages messages;
            DibRecord record = kUntouched;
            ASSERT_EQ(binarize(host.Handle(), &record, mode), 1);
            EXPECT_EQ(LocksOf(record), 1u);
            EXPECT_NE(record.header, host.Record().header);
            EXPECT_EQ(HostImage(record).Bytes(), host.Bytes());
            EXPECT_TRUE(messages.texts.empty());
        }
    }
    EXPECT_EQ(LocksOf(host.Handle()), 1u);
}

TEST(Binarized, UnknownModesShowAMessageAndPackThePixels) {
    const struct {
        Export binarize;
        std::int32_t mode;
    } cases[] = {{Binarized, 7},
                 {Binarized, 10},
                 {Binarized, -1},
                 {Binarized, 0x10000},
                 {Binarized_Separate_Block, 7},
                 {Binarized_Separate_Block, 9},
                 {Binarized_Separate_Block, -1}};
    for (const auto& [binarize, mode] : cases) {
        const HostImage host = GrayPicture(50, 20, Content::kExtremes);
        const std::vector<std::uint8_t> before = host.Bytes();
        const Messages messages;
        DibRecord record = kUntouched;
        EXPECT_EQ(binarize(host.Handle(), &record, mode), 1);
        EXPECT_EQ(messages.texts, std::vector<std::string>{kUnknownMode});
        EXPECT_EQ(HostImage(record).Rows(), ZerosOf(host));
        EXPECT_EQ(host.Bytes(), before);
    }
}

TEST(Binarized, TakesEverySmallSize) {
    for (const Export binarize : kExports) {
        for (const std::int32_t mode : {0, 1, 2, 3, 4, 5, 6, 8, 9}) {
            if (binarize == Binarized_Separate_Block && mode == 9) continue;
            for (const auto& [width, height] : {std::pair{0, 0}, {0, 5}, {5, 0}, {1, 1}, {9, 1}, {1, 33}}) {
                const HostImage host = GrayPicture(width, height, Content::kNoise);
                DibRecord record = kUntouched;
                ASSERT_EQ(binarize(host.Handle(), &record, mode), 1) << mode << ' ' << width << 'x' << height;
                const HostImage result(record);
                EXPECT_EQ(result.Width(), width);
                EXPECT_EQ(result.Height(), height);
                EXPECT_EQ(result.Header().biBitCount, 1);
            }
        }
    }
}

TEST(Binarized, RefusesWhatIsNoImageAndWritesNothing) {
    using Header = BITMAPINFOHEADER;
    void (*const faults[])(Header&) = {
        [](Header& header) { header.biSize = 124; },
        [](Header& header) { header.biBitCount = 4; },
        [](Header& header) { header.biBitCount = 32; },
        [](Header& header) { header.biCompression = 1; },
        [](Header& header) { header.biWidth = -8; },
        [](Header& header) { header.biHeight = -8; },
        [](Header& header) { header.biWidth = 32768; },
        [](Header& header) { header.biClrUsed = 0; },
        [](Header& header) { header.biClrUsed = 255; },
        [](Header& header) { header.biSizeImage = 0; },
        [](Header& header) { header.biSizeImage += 4; },
        // Consistent, but larger than its block.
        [](Header& header) { header.biSizeImage = 8 * static_cast<std::uint32_t>(header.biHeight = 9); },
        [](Header& header) { header.biWidth = 0x7FFFFFFF; },
    };
    for (const Export binarize : kExports) {
        DibRecord record = kUntouched;
        EXPECT_EQ(binarize(nullptr, &record, 1), -1);
        const HostImage image(8, 8, 8);
        EXPECT_EQ(binarize(image.Handle(), nullptr, 1), -1);
        const HGLOBAL tiny = GlobalAlloc(GHND, 39);
        EXPECT_EQ(binarize(tiny, &record, 1), -1);
        GlobalFree(tiny);
        for (std::size_t i = 0; i < std::size(faults); ++i) {
            const HostImage host = GrayPicture(8, 8, Content::kNoise);
            const Header sound = host.Header();
            faults[i](host.Header());
            const Header faulty = host.Header();
            EXPECT_EQ(binarize(host.Handle(), &record, 1), -1) << "fault " << i;
            EXPECT_EQ(std::memcmp(&host.Header(), &faulty, sizeof faulty), 0);
            EXPECT_EQ(LocksOf(host.Handle()), 1u);
            host.Header() = sound;
        }
        EXPECT_EQ(record.header, nullptr);
        EXPECT_EQ(record.bits, nullptr);
    }
}

}  // namespace
}  // namespace tavrix
