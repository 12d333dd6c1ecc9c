// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "image/DibLayout.h"
#include "support/HostImage.h"

namespace tavrix {
namespace {

using test::HostImage;

TEST(CopyImgWithWhiteSurr, PutsTheImageInsideAWhiteMargin) {
    constexpr std::int32_t kUntouched = -77;
    struct Case {
        int width, height, margin;
        std::int32_t steps;
    };
    std::vector<Case> cases{{40, 40, 5, kUntouched}, {32, 300, 5, kUntouched},
                            {100, 20, 15, 3},        {31, 200, 5, 1},
                            {1, 1, 35, 7},           {0, 12, 35, 7}};
    for (int width = 40; width < 104; ++width) cases.push_back({width, 33, 5, kUntouched});
    std::mt19937 random(1);
    for (const auto& [width, height, margin, steps] : cases) {
        const HostImage picture = HostImage::Random(width, height, 1, random);
        // The old block is freed, so the library gets a copy.
        DibRecord record{};
        const auto bytes = picture.Bytes();
        const HGLOBAL block = GlobalAlloc(GHND, bytes.size());
        auto* start = static_cast<std::uint8_t*>(GlobalLock(block));
        std::copy(bytes.begin(), bytes.end(), start);
        record = {reinterpret_cast<BITMAPINFOHEADER*>(start), reinterpret_cast<RGBQUAD*>(start + 40),
                  start + 48};
        std::int32_t reported = kUntouched;
        EXPECT_EQ(CopyImgWithWhiteSurr(&record, &reported), 0);
        EXPECT_EQ(reported, steps) << width << 'x' << height;
        const HostImage result(record);
        ASSERT_NE(result.Handle(), block);
        EXPECT_EQ(GlobalSize(block), 0u) << "the old block is gone";
        ASSERT_EQ(result.Width(), width + 2 * margin);
        ASSERT_EQ(result.Height(), height + 2 * margin);
        EXPECT_EQ(result.Header().biXPelsPerMeter, picture.Header().biXPelsPerMeter);
        EXPECT_EQ(result.Header().biSizeImage, result.RowBytes() * result.Height());
        for (int y = 0; y < result.Height(); ++y) {
            for (int x = 0; x < static_cast<int>(result.RowBytes()) * 8; ++x) {
                const int px = x - margin, py = y - margin;
                const bool inside = px >= 0 && px < width && py >= 0 && py < height;
                ASSERT_EQ(result.Bit(x, y), inside ? picture.Bit(px, py) : 1) << x << ',' << y;
            }
        }
    }
}

TEST(CopyImgWithWhiteSurr, LeavesWhatItRefusesAlone) {
    const auto isLeftAlone = [](DibRecord record) {
        const BITMAPINFOHEADER* header = record.header;
        std::int32_t steps = -77;
        return CopyImgWithWhiteSurr(&record, &steps) == 0 && record.header == header && steps == -77;
    };
    const HostImage gray(20, 20, 8), wide(kMaxSide - 9, 1, 1), small(20, 20, 1);
    EXPECT_TRUE(isLeftAlone(gray.Record()));
    EXPECT_TRUE(isLeftAlone(wide.Record()));
    EXPECT_TRUE(isLeftAlone(DibRecord{}));
    std::vector<std::uint8_t> heap = small.Bytes();
    const auto* header = reinterpret_cast<BITMAPINFOHEADER*>(heap.data());
    EXPECT_TRUE(isLeftAlone({const_cast<BITMAPINFOHEADER*>(header),
                             reinterpret_cast<RGBQUAD*>(heap.data() + 40), heap.data() + 48}));
    DibRecord record = small.Record();
    EXPECT_EQ(CopyImgWithWhiteSurr(&record, nullptr), 0);
    EXPECT_EQ(record.header, small.Record().header);
    EXPECT_EQ(CopyImgWithWhiteSurr(nullptr, nullptr), 0);
}

TEST(RemoveImageBorder, HandsBackACopy) {
    std::mt19937 random(1);
    for (const int bitCount : {1, 8, 24}) {
        const HostImage source = HostImage::Random(37, 5, bitCount, random);
        DibRecord record{};
        ASSERT_EQ(RemoveImageBorder(source.Handle(), &record), 1);
        const HostImage result(record);
        EXPECT_EQ(result.Bytes(), source.Bytes());
        EXPECT_NE(result.Handle(), source.Handle());
        EXPECT_EQ(RemoveImageBorder(source.Handle(), nullptr), 0);
    }
    DibRecord record{};
    EXPECT_EQ(RemoveImageBorder(nullptr, &record), 0);
    EXPECT_EQ(record.header, nullptr);
}

}  // namespace
}  // namespace tavrix
