// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>

#include "api/ExportCalls.h"
#include "support/HostImage.h"

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

class ExportFrame : public testing::TestWithParam<ExportCall> {
  protected:
    // The call refuses the image and leaves everything as it was.
    void ExpectRefused(const HostImage& image, const CallInput& input) {
        const std::size_t blockBytes = GlobalSize(image.Handle());
        const auto* block = reinterpret_cast<const std::uint8_t*>(image.Record().header);
        const std::vector<std::uint8_t> before(block, block + blockBytes);
        DibRecord marker{};
        marker.bits = reinterpret_cast<std::uint8_t*>(&marker);
        DibRecord result = marker;
        ComponentStore store{};
        CallInput call = input;
        call.store = &store;
        EXPECT_FALSE(GetParam().run(call, &result));
        EXPECT_EQ(std::memcmp(&result, &marker, sizeof marker), 0) << "the record was written";
        EXPECT_EQ(GlobalFlags(image.Handle()), 1u) << "the lock count changed";
        EXPECT_TRUE(std::equal(before.begin(), before.end(), block)) << "the block was written";
        const ComponentStore empty{};
        EXPECT_EQ(std::memcmp(&store, &empty, sizeof store), 0) << "the store was written";
    }
};

TEST_P(ExportFrame, RefusesHeadersThatBreakTheRules) {
    std::mt19937 random(5);
    for (const int bitCount : kDepths) {
        if (!GetParam().Takes(bitCount)) continue;
        for (const BadHeader& bad : kBadHeaders) {
            if (bad.onlyByHandle && !GetParam().byHandle) continue;
            SCOPED_TRACE(std::string(bad.name) + ", " + std::to_string(bitCount) + " bits");
            const HostImage image = HostImage::Random(33, 31, bitCount, random);
            bad.spoil(image.Header());
            ExpectRefused(image, {image.Handle(), image.Record(), nullptr});
        }
    }
}

TEST_P(ExportFrame, RefusesOtherDepths) {
    std::mt19937 random(6);
    for (const int bitCount : kDepths) {
        if (GetParam().Takes(bitCount)) continue;
        SCOPED_TRACE(bitCount);
        const HostImage image = HostImage::Random(33, 31, bitCount, random);
        ExpectRefused(image, {image.Handle(), image.Record(), nullptr});
    }
}

TEST_P(ExportFrame, RefusesWhatIsNoImage) {
    std::mt19937 random(7);
    const HostImage image = HostImage::Random(33, 31, GetParam().takes1Bit ? 1 : 8, random);
    if (GetParam().byHandle) {
        std::vector<std::uint8_t> foreign = image.Bytes();
        HGLOBAL stale = GlobalAlloc(GHND, 2000);
        GlobalFree(stale);
        const HGLOBAL small = GlobalAlloc(GHND, 39), empty = GlobalAlloc(GHND, 0);
        for (const HGLOBAL handle : {HGLOBAL{}, stale, small, empty, HGLOBAL{foreign.data()}}) {
            // Without a handle Morphology takes the record, which here describes nothing.
            ExpectRefused(image, {handle, {}, nullptr});
        }
        GlobalFree(small);
        GlobalFree(empty);
        const CallInput noResult{image.Handle(), image.Record(), nullptr};
        EXPECT_FALSE(GetParam().run(noResult, nullptr));
        EXPECT_EQ(GlobalFlags(image.Handle()), 1u);
    } else {
        const DibRecord& whole = image.Record();
        for (const DibRecord& record :
             {DibRecord{nullptr, whole.palette, whole.bits}, DibRecord{whole.header, nullptr, whole.bits},
              DibRecord{whole.header, whole.palette, nullptr}}) {
            ExpectRefused(image, {nullptr, record, nullptr});
        }
    }
}

// An empty image is an image.
TEST_P(ExportFrame, TakesImagesWithoutPixels) {
    for (const int bitCount : kDepths) {
        if (!GetParam().Takes(bitCount) || GetParam().needsTree) continue;
        for (const auto& [width, height] : {std::pair{0, 0}, {0, 9}, {9, 0}, {700, 0}, {0, 700}}) {
            SCOPED_TRACE(std::to_string(bitCount) + " bits " + std::to_string(width) + "x" +
                         std::to_string(height));
            const HostImage image(width, height, bitCount);
            ComponentStore store{};
            DibRecord result{};
            GetParam().run({image.Handle(), image.Record(), &store}, &result);
            if (result.header != nullptr) GlobalFree(GlobalHandle(result.header));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Exports, ExportFrame, testing::ValuesIn(ExportCalls()), TestNameOf);

TEST(ExportFrame, RefusesNullStoresAndOptions) {
    std::mt19937 random(8);
    const HostImage image = HostImage::Random(33, 31, 1, random);
    EXPECT_EQ(Extract_Eight_Connected_Components(image.Record(), nullptr, 1, 0, 0), 0);
    EXPECT_EQ(Noise_Filter1(image.Record(), nullptr, 2, 2, 0), 0);
    EXPECT_EQ(Grouping(image.Record(), nullptr, nullptr, 0, 0, 0), 0);
    ComponentStore store{};
    EXPECT_EQ(Grouping(image.Record(), &store, nullptr, 3, 0, 0), 0);
    // A store without memory gives no node.
    EXPECT_EQ(Extract_Eight_Connected_Components(image.Record(), &store, 1, 0, 0), 1);
    EXPECT_EQ(store.liveCount, 0u);
}

}  // namespace
}  // namespace tavrix::test
