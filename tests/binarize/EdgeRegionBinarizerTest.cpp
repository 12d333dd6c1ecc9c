// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "binarize/EdgeRegionReference.h"
#include "binarize/RandomPages.h"
#include "image/ImageTool.h"
#include "regions/EdgeRegionBinarizer.h"

namespace tavrix {
namespace {

using test::EdgeRegionReference;
using test::HostImage;
using Result = std::optional<EdgeRegionReference::Bytes>;

enum class Entry { kPage, kBlock, kSharp };

bool RunMethod(Entry entry, DibImage& image) {
    ImageTool tool(&image);
    switch (entry) {
        case Entry::kPage: return tool.BinarizeByMethod(5);
        case Entry::kBlock: return tool.BinarizeByBlocks(5);
        default: return tool.BinarizeByMethod(9);
    }
}

Result RunReference(Entry entry, EdgeRegionReference& reference) {
    switch (entry) {
        case Entry::kPage: return reference.Binarize();
        case Entry::kBlock: return reference.BinarizeBlock();
        default: return reference.BinarizeSharp();
    }
}

// The first pixel in which image and reference differ, or an empty text.
std::string Difference(Entry entry, const HostImage& page) {
    EdgeRegionReference reference(page);
    const int width = reference.width, height = reference.height;
    const Result expected = RunReference(entry, reference);
    DibImage image(page.Handle());
    if (RunMethod(entry, image) != expected.has_value()) return "success";
    if (image.Is1Bit() != expected.has_value()) return "format";
    const auto& bytes = expected ? *expected : reference.src;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int value = bytes[static_cast<std::size_t>(y) * reference.rowBytes + x];
            const int wanted = expected ? value > 1 : value;
            if (image.GetPixel(x, y) != wanted) {
                return std::to_string(x) + "," + std::to_string(y) + " of " + std::to_string(width) + "x" +
                       std::to_string(height) + ": " + std::to_string(wanted) + " expected";
            }
        }
    }
    return "";
}

class EdgeRegionPages : public testing::TestWithParam<Entry> {};

TEST_P(EdgeRegionPages, AreThoseOfTheReference) {
    std::vector<std::uint32_t> seeds(std::begin(test::kVariedPages), std::end(test::kVariedPages));
    for (std::uint32_t seed = 1; seed < 400; seed += 2) seeds.push_back(seed);
    for (std::uint32_t seed = 0; seed < 60; seed += 2) seeds.push_back(seed);
    for (const std::uint32_t seed : seeds) {
        EXPECT_EQ(Difference(GetParam(), test::RandomPage(seed)), "") << "seed " << seed;
    }
}

// A column of marks in more row groups than are kept apart.
TEST_P(EdgeRegionPages, MayHaveManyRowGroups) {
    const HostImage page(60, 2000, 8);
    for (int y = 0; y < 2000; ++y) {
        for (int x = 0; x < 60; ++x) {
            const bool mark = y % 24 < 9 && (x - y / 24 % 7) % 20 > 10;
            page.Row(y)[x] = static_cast<std::uint8_t>(mark ? 40 : 230 - y % 5);
        }
    }
    EXPECT_EQ(Difference(GetParam(), page), "");
}

TEST_P(EdgeRegionPages, WithoutPixelsFail) {
    for (const auto& [width, height] : {std::pair(0, 0), std::pair(0, 9), std::pair(9, 0)}) {
        const HostImage page(width, height, 8);
        DibImage image(page.Handle());
        EXPECT_FALSE(RunMethod(GetParam(), image));
        EXPECT_FALSE(image.Is1Bit());
    }
}

INSTANTIATE_TEST_SUITE_P(Entries, EdgeRegionPages,
                         testing::Values(Entry::kPage, Entry::kBlock, Entry::kSharp));

}  // namespace
}  // namespace tavrix
