// SPDX-License-Identifier: MIT
// What all exports have in common: what they refuse, whose block is whose, and that any call ends well.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <functional>
#include <limits>
#include <random>

#include "api/ExportCalls.h"
#include "image/DibLayout.h"
#include "support/HostImage.h"
#include "support/Messages.h"
#include "tavrix/component_store.hpp"

namespace tavrix::test {
namespace {

constexpr int kDepths[] = {1, 8, 24};

struct BadHeader {
    const char* name;
    std::function<void(BITMAPINFOHEADER&)> spoil;
    bool onlyByHandle = false;  // can be seen only where the block's size is known
};

const BadHeader kBadHeaders[] = {
    {"biSize 0", [](auto& header) { header.biSize = 0; }},
    {"biSize 124", [](auto& header) { header.biSize = 124; }},
    {"0 bits", [](auto& header) { header.biBitCount = 0; }},
    {"4 bits", [](auto& header) { header.biBitCount = 4; }},
    {"32 bits", [](auto& header) { header.biBitCount = 32; }},
    {"compressed", [](auto& header) { header.biCompression = 1; }},
    {"negative width", [](auto& header) { header.biWidth = -header.biWidth; }},
    {"negative height", [](auto& header) { header.biHeight = -header.biHeight; }},
    {"negative size", [](auto& header) { header.biHeight = INT32_MIN, header.biSizeImage = 0; }},
    {"width 32768",
     [](auto& header) { header.biWidth = 32768, header.biHeight = 0, header.biSizeImage = 0; }},
    {"height 32768",
     [](auto& header) { header.biHeight = 32768, header.biWidth = 0, header.biSizeImage = 0; }},
    {"one colour more", [](auto& header) { ++header.biClrUsed; }},
    {"no colours, or 2^24", [](auto& header) { header.biClrUsed = header.biClrUsed == 0 ? 1u << 24 : 0; }},
    {"pixels not counted", [](auto& header) { header.biSizeImage = 0; }},
    {"a byte more", [](auto& header) { ++header.biSizeImage; }},
    {"a byte less", [](auto& header) { --header.biSizeImage; }},
    {"a row more than the block has",
     [](auto& header) {
         header.biSizeImage += header.biSizeImage / header.biHeight;
         ++header.biHeight;
     },
     true},
};

class Exports : public testing::TestWithParam<ExportCall> {
  protected:
    // The call refuses the image and leaves everything as it was.
    void ExpectRefused(const HostImage& image, HGLOBAL handle, const DibRecord& record) {
        const std::vector<std::uint8_t> before = image.Bytes();
        DibRecord marker{};
        marker.bits = reinterpret_cast<std::uint8_t*>(&marker);
        DibRecord result = marker;
        ComponentStore store{};
        EXPECT_FALSE(GetParam()({handle, record, &store}, &result));
        EXPECT_EQ(std::memcmp(&result, &marker, sizeof marker), 0) << "the record was written";
        EXPECT_EQ(GlobalFlags(image.Handle()), 1u) << "the lock count changed";
        EXPECT_EQ(image.Bytes(), before) << "the block was written";
        const ComponentStore empty{};
        EXPECT_EQ(std::memcmp(&store, &empty, sizeof store), 0) << "the store was written";
    }
};

TEST_P(Exports, RefuseHeadersThatBreakTheRulesAndOtherDepths) {
    for (const int bitCount : kDepths) {
        SCOPED_TRACE(bitCount);
        if (!GetParam().Takes(bitCount)) {
            const HostImage image = HostImage::Drawn(33, 31, bitCount);
            ExpectRefused(image, image.Handle(), image.Record());
            continue;
        }
        for (const BadHeader& bad : kBadHeaders) {
            if (bad.onlyByHandle && !GetParam().Is(kByHandle)) continue;
            SCOPED_TRACE(bad.name);
            const HostImage image = HostImage::Drawn(33, 31, bitCount);
            bad.spoil(image.Header());
            ExpectRefused(image, image.Handle(), image.Record());
        }
    }
}

TEST_P(Exports, RefuseWhatIsNoImage) {
    const HostImage image = HostImage::Drawn(33, 31, GetParam().Takes(1) ? 1 : 8);
    const auto& [header, palette, bits] = image.Record();
    if (!GetParam().Is(kByHandle)) {
        ExpectRefused(image, nullptr, {nullptr, palette, bits});
        ExpectRefused(image, nullptr, {header, nullptr, bits});
        ExpectRefused(image, nullptr, {header, palette, nullptr});
        return;
    }
    std::vector<std::uint8_t> foreign = image.Bytes();
    const HGLOBAL stale = GlobalAlloc(GHND, 2000);
    GlobalFree(stale);
    const HGLOBAL small = GlobalAlloc(GHND, 39), empty = GlobalAlloc(GHND, 0);
    for (const HGLOBAL handle : {HGLOBAL{}, stale, small, empty, HGLOBAL{foreign.data()}}) {
        // Without a handle Morphology takes the record, which here describes nothing.
        ExpectRefused(image, handle, {});
    }
    GlobalFree(small);
    GlobalFree(empty);
    EXPECT_FALSE(GetParam()({image.Handle(), image.Record(), nullptr}, nullptr));
    EXPECT_EQ(GlobalFlags(image.Handle()), 1u);
}

// Also images without pixels, which are images, and those of the longest rows and columns.
TEST_P(Exports, GiveBlocksThatAreTheHosts) {
    const Messages unheard;
    for (const int bitCount : kDepths) {
        if (!GetParam().Takes(bitCount)) continue;
        for (const auto& [width, height] :
             {std::pair{60, 34}, {0, 0}, {0, 9}, {9, 0}, {1, 1}, {kMaxSide, 1}, {1, kMaxSide}}) {
            if (width + height > kMaxSide && GetParam().mode == 30) continue;  // half a gigabyte
            SCOPED_TRACE(testing::Message() << bitCount << " bits " << width << 'x' << height);
            const HostImage image = HostImage::Drawn(width, height, bitCount);
            const std::vector<std::uint8_t> before = image.Bytes();
            host::Store store;
            if (GetParam().Is(kNeedsTree)) {
                Extract_Eight_Connected_Components(image.Record(), store.get(), 1, 0, 0);
            }
            DibRecord record{};
            GetParam()({image.Handle(), image.Record(), store.get()}, &record);
            const bool replaced = GlobalFlags(image.Handle()) == GMEM_INVALID_HANDLE;
            if (!replaced) {
                EXPECT_EQ(GlobalFlags(image.Handle()), 1u) << "only the test's own lock";
                const bool mayChange = bitCount != 24 && GetParam().Is(kInPlace);
                EXPECT_TRUE(mayChange || image.Bytes() == before);
            }
            if (record.header == nullptr) continue;
            EXPECT_NE(record.header, image.Record().header);
            const unsigned locks = GetParam().Is(kArrivesUnlocked) && bitCount != 1 ? 0 : 1;
            EXPECT_EQ(GlobalFlags(GlobalHandle(record.header)), locks);
            const HostImage result(record);
            const BITMAPINFOHEADER& header = result.Header();
            EXPECT_EQ(header.biSizeImage, RowBytesOf(header.biBitCount, header.biWidth) * header.biHeight);
            EXPECT_EQ(static_cast<void*>(record.palette), record.header + 1);
            EXPECT_EQ(static_cast<void*>(record.bits), record.palette + header.biClrUsed);
            EXPECT_EQ(result.Bytes().size(), kHeaderBytes + 4 * header.biClrUsed + header.biSizeImage);
        }
    }
}

void NoteTree(const ComponentNode* node, std::vector<std::int64_t>& seen) {
    for (; node != nullptr; node = node->next) {
        seen.insert(seen.end(), {node->left, node->top, node->right, node->bottom, node->pixelCount});
        NoteTree(node->firstChild, seen);
    }
    seen.push_back(-1);
}

// A random picture, now and then with a random number in its header, twice.
TEST_P(Exports, EndWellAndRepeat) {
    const Messages unheard;
    for (unsigned seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE(seed);
        const auto call = [&] {
            std::mt19937 random(seed);
            const unsigned longest = seed % 5 == 0 ? 320 : 70;
            const auto side = [&] { return static_cast<int>(random() % longest); };
            const HostImage image = HostImage::Drawn(side(), side(), kDepths[random() % 3], seed);
            if (seed % 8 == 0) {
                auto* fields = reinterpret_cast<std::uint16_t*>(image.Record().header);
                fields[random() % 20] = static_cast<std::uint16_t>(random());
            }
            host::Store store;
            if (GetParam().Is(kNeedsTree)) {
                Extract_Eight_Connected_Components(image.Record(), store.get(), 1, 0, 0);
            }
            DibRecord record{};
            std::vector<std::int64_t> seen{
                GetParam()({image.Handle(), image.Record(), store.get()}, &record)};
            if (record.header != nullptr) {
                const std::vector<std::uint8_t> bytes = HostImage(record).Bytes();
                seen.insert(seen.end(), bytes.begin(), bytes.end());
            }
            NoteTree(store.get()->firstBlock, seen);
            return seen;
        };
        ASSERT_EQ(call(), call());
    }
}

INSTANTIATE_TEST_SUITE_P(All, Exports, testing::ValuesIn(ExportCalls()), TestNameOf);

// By so little that all positions are rounded to whole pixels, those of the first row from above it.
TEST(RotateImageFree, LeavesAPictureAsItIsWhenTheAngleIsNextToNone) {
    const HostImage gray = HostImage::Drawn(2000, 600, 8);
    for (const int clockwise : {0, 1}) {
        DibRecord turned{};
        ASSERT_EQ(RotateImageFree(gray.Handle(), 1e-16, clockwise, &turned), 1);
        EXPECT_EQ(std::memcmp(turned.bits, gray.Record().bits, 2000 * 600), 0) << clockwise;
        GlobalFree(GlobalHandle(turned.header));
    }
}

TEST(Arguments, AreRefusedWhereNothingCanBeMadeOfThem) {
    const HostImage bits = HostImage::Drawn(50, 20, 1), gray = HostImage::Drawn(30, 20, 8);
    const HostImage huge(kMaxSide, 300, 8), wide(kMaxSide - 9, 1, 1);
    DibRecord record{};
    for (const double angle : {std::numeric_limits<double>::infinity(), std::nan("")}) {
        EXPECT_EQ(RotateImageFree(gray.Handle(), angle, 0, &record), -1);
        EXPECT_EQ(RotateImageFree(gray.Handle(), -angle, 0, &record), -1);
        EXPECT_EQ(RotateFree(gray.Handle(), angle, 0, &record), nullptr);
    }
    EXPECT_EQ(RotateImageFree(huge.Handle(), 0.5, 0, &record), -1) << "wider than an image can be";
    for (const int angle : {0, 180, -90, 91}) EXPECT_EQ(RotateGrayImage(gray.Handle(), angle, &record), -1);
    for (const BlockRect& block : {BlockRect{50, 10, 60, 5, 0},
                                   {-9, 10, -1, 5, 0},
                                   {5, 25, 9, 20, 0},
                                   {5, -1, 9, -3, 0},
                                   {9, 10, 8, 5, 0},
                                   {-32768, 32767, -32768, 0, 0}}) {
        EXPECT_EQ(RotateImageBlock(bits.Record(), block, 0, &record), -1) << block.left << ' ' << block.top;
    }
    EXPECT_EQ(record.header, nullptr);

    ComponentStore store{};
    for (const int mode : {0, 3, -1, 65537}) {
        EXPECT_EQ(Extract_Eight_Connected_Components(bits.Record(), &store, mode, 0, 0), 0);
    }
    EXPECT_EQ(Extract_Eight_Connected_Components(bits.Record(), nullptr, 1, 0, 0), 0);
    EXPECT_EQ(Noise_Filter1(bits.Record(), nullptr, 2, 2, 0), 0);
    EXPECT_EQ(Grouping(bits.Record(), nullptr, nullptr, 0, 0, 0), 0);
    EXPECT_EQ(Grouping(bits.Record(), &store, nullptr, 3, 0, 0), 0);
    const GroupingOptions options{};
    EXPECT_EQ(FindTrueLineRect(nullptr, &options).right, 0);
    EXPECT_EQ(FindTrueLineRect(&bits.Record(), nullptr).right, 0);
    // A store without memory gives no node.
    EXPECT_EQ(Extract_Eight_Connected_Components(bits.Record(), &store, 1, 0, 0), 1);
    EXPECT_EQ(store.liveCount, 0u);

    // What may not be replaced stays: a row too long, no block of global memory, no place for the steps.
    std::vector<std::uint8_t> foreign = bits.Bytes();
    auto* header = reinterpret_cast<BITMAPINFOHEADER*>(foreign.data());
    auto* palette = reinterpret_cast<RGBQUAD*>(header + 1);
    std::int32_t steps = -7;
    for (const DibRecord& given :
         {wide.Record(), DibRecord{header, palette, reinterpret_cast<std::uint8_t*>(palette + 2)}}) {
        DibRecord kept = given;
        EXPECT_EQ(CopyImgWithWhiteSurr(&kept, &steps), 0);
        EXPECT_EQ(kept.header, given.header);
        EXPECT_EQ(steps, -7);
    }
    DibRecord kept = bits.Record();
    EXPECT_EQ(CopyImgWithWhiteSurr(&kept, nullptr), 0);
    EXPECT_EQ(kept.header, bits.Record().header);
    EXPECT_EQ(CopyImgWithWhiteSurr(nullptr, &steps), 0);
}

// Sums over a large photograph pass 32 bits.
TEST(LargeImages, AreSplitByTheirLevels) {
    for (const int mode : {1, 3, 6}) {
        const HostImage image(6000, 5000, 8);
        std::uint8_t* pixels = image.Record().bits;
        const std::size_t count = image.Header().biSizeImage, part = count / 10;
        std::memset(pixels, 100, part);
        std::memset(pixels + part, 110, part);
        std::memset(pixels + 2 * part, 240, count - 2 * part);
        DibRecord record{};
        ASSERT_EQ(Binarized(image.Handle(), &record, mode), 1);
        const HostImage result(record);
        EXPECT_EQ(pixels[0], 0) << "mode " << mode;
        EXPECT_EQ(pixels[count - 1], 255) << "mode " << mode;
    }
}

TEST(DiagnosticFile, ThatCannotBeWrittenGivesAMessageAndNoHarm) {
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::path folder = testing::TempDir() + "tavrix-" + std::to_string(getpid());
    std::filesystem::create_directories(folder / "outputImg");
    std::filesystem::create_symlink("/dev/full", folder / "outputImg/test.bmp");
    std::filesystem::current_path(folder);
    const HostImage image = HostImage::Drawn(30, 20, 8);
    const Messages messages;
    DibRecord record{};
    EXPECT_EQ(RotateImageFree(image.Handle(), 25, 1, &record), 1);
    EXPECT_EQ(messages.texts.size(), 1u);
    HostImage result(record);
    std::filesystem::current_path(before);
    std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace tavrix::test
